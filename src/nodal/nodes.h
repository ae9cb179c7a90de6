// The nodes that reports read, each with its record.
#ifndef KESTREL_NODAL_NODES_H
#define KESTREL_NODAL_NODES_H

#include <cstdint>

#include "platkit/nodes.h"
#include "platkit/records.h"

namespace kestrel {

// A node and the type of its record. Code that reads the node into another type does not compile. The identifier is
// read from the library's object at each call, since it may differ from one build of the library to the next.
template <typename Record>
struct NodeRef {
  const uint16_t &id;
};

// A node that is only a list.
struct NoRecord;
using ListRef = NodeRef<NoRecord>;

namespace nodes {

inline constexpr NodeRef<GroupNameRecord> kGroupName{NODAL_NODE_sched_groups_groupName};
inline constexpr NodeRef<GroupTagRecord> kGroupTag{NODAL_NODE_sched_groups_groupTag};
inline constexpr NodeRef<ParentGroupIDRecord> kParentGroupID{NODAL_NODE_sched_groups_parentGroupID};
inline constexpr NodeRef<GroupFlagsRecord> kGroupFlags{NODAL_NODE_sched_groups_groupFlags};
inline constexpr NodeRef<GroupLeaderIDRecord> kGroupLeaderID{NODAL_NODE_sched_groups_groupLeaderID};
inline constexpr NodeRef<GroupAllocRecord> kGroupAlloc{NODAL_NODE_sched_groups_memAllocationInKB};
inline constexpr NodeRef<GroupMemoryStatsRecord> kGroupMemoryStats{NODAL_NODE_sched_groups_stats_memoryStats};
inline constexpr NodeRef<GroupCapacityRecord> kGroupCapacity{NODAL_NODE_sched_groups_stats_capacity};
inline constexpr ListRef kMemberGroups{NODAL_NODE_sched_groups_members_groups};
inline constexpr ListRef kMemberClients{NODAL_NODE_sched_groups_members_memClients};
inline constexpr NodeRef<VmmMemoryStatsRecord> kVmmMemoryStats{NODAL_NODE_sched_memClients_kestrel_vmm};
inline constexpr NodeRef<VmSwapInfoRecord> kVmSwapInfo{NODAL_NODE_sched_memClients_swapInfo};
inline constexpr NodeRef<UwMemoryStatsRecord> kUwMemoryStats{NODAL_NODE_sched_memClients_kestrel_uw};
inline constexpr NodeRef<GuestStatsRecord> kGuestStats{NODAL_NODE_sched_memClients_kestrel_guest};
inline constexpr NodeRef<ZipStatsRecord> kZipStats{NODAL_NODE_sched_memClients_memzipInfo};
inline constexpr NodeRef<LPageStatsRecord> kLPageStats{NODAL_NODE_memory_lpage_vmLPage};
inline constexpr NodeRef<RemapStatsRecord> kRemapTypes{NODAL_NODE_sched_memClients_remapTypes};
inline constexpr NodeRef<TotalCommonRecord> kTotalCommon{NODAL_NODE_sched_memClients_kestrel_totalCommon};
inline constexpr NodeRef<VmmLeaderIDRecord> kVmmLeaderID{NODAL_NODE_worldGroups_vmmLeaderID};
inline constexpr NodeRef<PShareStatsRecord> kPShareStats{NODAL_NODE_memory_pshare_stats};
inline constexpr ListRef kBuddies{NODAL_NODE_system_buddy};
inline constexpr NodeRef<MemNodeRecord> kMemNode{NODAL_NODE_memory_memNodes};
inline constexpr NodeRef<BuddyComprehensiveRecord> kBuddyComprehensive{NODAL_NODE_system_buddy_comprehensive};
inline constexpr NodeRef<ComprehensiveRecord> kComprehensive{NODAL_NODE_memory_comprehensive};
inline constexpr NodeRef<GlobalMemoryRecord> kGlobalMemory{NODAL_NODE_sched_globalStats_memory_kestrel};
inline constexpr NodeRef<StateTransitionsRecord> kStateTransitions{
    NODAL_NODE_sched_globalStats_memory_stateTransitions};
inline constexpr NodeRef<MemInfoRecord> kMemInfo{NODAL_NODE_memory_memInfo};
inline constexpr NodeRef<NumVMsRecord> kNumVMs{NODAL_NODE_sched_globalStats_numVMs};
inline constexpr NodeRef<LPoolStatsRecord> kVmPools{NODAL_NODE_memory_lpage_nodeList_vmPools};
inline constexpr NodeRef<LPoolStatsRecord> kPSharePool{NODAL_NODE_memory_lpage_nodeList_psharePool};
inline constexpr ListRef kHeaps{NODAL_NODE_system_heaps};
inline constexpr NodeRef<HeapStatsRecord> kHeapStats{NODAL_NODE_system_heaps_stats};
inline constexpr ListRef kPMemVolumes{NODAL_NODE_memory_pmem_volumes};
inline constexpr NodeRef<PMemVolumeRecord> kPMemVolume{NODAL_NODE_memory_pmem_volumes_info};
inline constexpr NodeRef<RegionStoreRecord> kRegionStore{NODAL_NODE_memory_pmem_volumes_regionStore_info};
inline constexpr NodeRef<RegionStoreCleanRecord> kRegionStoreClean{NODAL_NODE_memory_pmem_volumes_regionStore_isClean};
inline constexpr ListRef kRegions{NODAL_NODE_memory_pmem_volumes_regionStore_regions};
inline constexpr NodeRef<RegionRecord> kRegion{NODAL_NODE_memory_pmem_volumes_regionStore_regions_info};
inline constexpr NodeRef<RegionNumaRecord> kRegionNuma{
    NODAL_NODE_memory_pmem_volumes_regionStore_regions_numaAllocInfo};
inline constexpr NodeRef<ExtentRecord> kExtents{NODAL_NODE_memory_pmem_volumes_extents};
inline constexpr NodeRef<CpuRecord> kCpu{NODAL_NODE_hardware_cpu_cpuList};
inline constexpr ListRef kNvdDimms{NODAL_NODE_hardware_nvd_dimm};
inline constexpr ListRef kPciSegments{NODAL_NODE_hardware_pci_seg};
inline constexpr ListRef kPciBuses{NODAL_NODE_hardware_pci_seg_bus};
inline constexpr ListRef kPciSlots{NODAL_NODE_hardware_pci_seg_bus_slot};
inline constexpr ListRef kPciFunctions{NODAL_NODE_hardware_pci_seg_bus_slot_func};
inline constexpr NodeRef<PciConfigHeaderRecord> kPciConfigHeader{
    NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigHeader};
inline constexpr NodeRef<PciConfigRegRecord> kPciConfigReg{
    NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr};

}  // namespace nodes
}  // namespace kestrel

#endif  // KESTREL_NODAL_NODES_H
