#include "src/nodal/nodes.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "platkit/node_ref.h"

namespace kestrel {
namespace {

namespace catalogue = platkit::nodes;

// A node as the reports name it, and the same node of the catalogue.
struct Pair {
  template <typename Record, typename CatalogueRecord>
  constexpr Pair(NodeRef<Record> node, platkit::NodeRef<CatalogueRecord> entry) : id(node.id), entryId(entry.id()) {
    constexpr bool kIsList = std::is_same_v<Record, NoRecord>;
    static_assert(std::is_same_v<Record, CatalogueRecord> ||
                  (kIsList && std::is_same_v<CatalogueRecord, platkit::NoRecord>));
  }

  const uint16_t &id;
  uint32_t entryId;
};

constexpr Pair kPairs[] = {
    {nodes::kGroupName, catalogue::sched_groups_groupName},
    {nodes::kGroupTag, catalogue::sched_groups_groupTag},
    {nodes::kParentGroupID, catalogue::sched_groups_parentGroupID},
    {nodes::kGroupFlags, catalogue::sched_groups_groupFlags},
    {nodes::kGroupLeaderID, catalogue::sched_groups_groupLeaderID},
    {nodes::kGroupAlloc, catalogue::sched_groups_memAllocationInKB},
    {nodes::kGroupMemoryStats, catalogue::sched_groups_stats_memoryStats},
    {nodes::kGroupCapacity, catalogue::sched_groups_stats_capacity},
    {nodes::kMemberGroups, catalogue::sched_groups_members_groups},
    {nodes::kMemberClients, catalogue::sched_groups_members_memClients},
    {nodes::kVmmMemoryStats, catalogue::sched_memClients_kestrel_vmm},
    {nodes::kVmSwapInfo, catalogue::sched_memClients_swapInfo},
    {nodes::kUwMemoryStats, catalogue::sched_memClients_kestrel_uw},
    {nodes::kGuestStats, catalogue::sched_memClients_kestrel_guest},
    {nodes::kZipStats, catalogue::sched_memClients_memzipInfo},
    {nodes::kLPageStats, catalogue::memory_lpage_vmLPage},
    {nodes::kRemapTypes, catalogue::sched_memClients_remapTypes},
    {nodes::kTotalCommon, catalogue::sched_memClients_kestrel_totalCommon},
    {nodes::kVmmLeaderID, catalogue::worldGroups_vmmLeaderID},
    {nodes::kPShareStats, catalogue::memory_pshare_stats},
    {nodes::kBuddies, catalogue::system_buddy},
    {nodes::kMemNode, catalogue::memory_memNodes},
    {nodes::kBuddyComprehensive, catalogue::system_buddy_comprehensive},
    {nodes::kComprehensive, catalogue::memory_comprehensive},
    {nodes::kGlobalMemory, catalogue::sched_globalStats_memory_kestrel},
    {nodes::kStateTransitions, catalogue::sched_globalStats_memory_stateTransitions},
    {nodes::kMemInfo, catalogue::memory_memInfo},
    {nodes::kNumVMs, catalogue::sched_globalStats_numVMs},
    {nodes::kVmPools, catalogue::memory_lpage_nodeList_vmPools},
    {nodes::kPSharePool, catalogue::memory_lpage_nodeList_psharePool},
    {nodes::kHeaps, catalogue::system_heaps},
    {nodes::kHeapStats, catalogue::system_heaps_stats},
    {nodes::kPMemVolumes, catalogue::memory_pmem_volumes},
    {nodes::kPMemVolume, catalogue::memory_pmem_volumes_info},
    {nodes::kRegionStore, catalogue::memory_pmem_volumes_regionStore_info},
    {nodes::kRegionStoreClean, catalogue::memory_pmem_volumes_regionStore_isClean},
    {nodes::kRegions, catalogue::memory_pmem_volumes_regionStore_regions},
    {nodes::kRegion, catalogue::memory_pmem_volumes_regionStore_regions_info},
    {nodes::kRegionNuma, catalogue::memory_pmem_volumes_regionStore_regions_numaAllocInfo},
    {nodes::kExtents, catalogue::memory_pmem_volumes_extents},
    {nodes::kCpu, catalogue::hardware_cpu_cpuList},
    {nodes::kNvdDimms, catalogue::hardware_nvd_dimm},
    {nodes::kPciSegments, catalogue::hardware_pci_seg},
    {nodes::kPciBuses, catalogue::hardware_pci_seg_bus},
    {nodes::kPciSlots, catalogue::hardware_pci_seg_bus_slot},
    {nodes::kPciFunctions, catalogue::hardware_pci_seg_bus_slot_func},
    {nodes::kPciConfigHeader, catalogue::hardware_pci_seg_bus_slot_func_pciConfigHeader},
    {nodes::kPciConfigReg, catalogue::hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr},
};

TEST(Nodes, YieldTheRecordsOfTheCatalogue) {
  for (const Pair &pair : kPairs)
    EXPECT_EQ(pair.id, pair.entryId) << platkit::FindNode(pair.entryId)->name;
}

TEST(Nodes, AreAllOfTheCatalogue) { EXPECT_EQ(std::size(kPairs), platkit::Nodes().size()); }

}  // namespace
}  // namespace kestrel
