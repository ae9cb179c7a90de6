/*
 * The identifiers of the nodes of the system-information tree.
 *
 * The library exports one object per node, which holds the node's 16-bit identifier. Read the object at each call and
 * pass its value, widened to 32 bits, to the operations of nodal.h. Identifiers may change from one build of the
 * library to the next, so do not compile them into a program.
 *
 * The comment on a node gives its path, followed by the name of its record (a struct of records.h), or by "list of" and
 * the form of an entry. {group:int} in a path is an argument: the kind of object that it names, and its type, int or
 * text. An entry of a list has the same form. Pass arguments in the order of the path.
 */
#ifndef PLATKIT_NODES_H
#define PLATKIT_NODES_H

#include <stdint.h>

#include "platkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* /sched/groups/{group:int}/groupName: GroupNameRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_groupName;

/* /sched/groups/{group:int}/groupTag: GroupTagRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_groupTag;

/* /sched/groups/{group:int}/parentGroupID: ParentGroupIDRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_parentGroupID;

/* /sched/groups/{group:int}/groupFlags: GroupFlagsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_groupFlags;

/* /sched/groups/{group:int}/groupLeaderID: GroupLeaderIDRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_groupLeaderID;

/* /sched/groups/{group:int}/memAllocationInKB: GroupAllocRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_memAllocationInKB;

/* /sched/groups/{group:int}/stats/memoryStats: GroupMemoryStatsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_stats_memoryStats;

/* /sched/groups/{group:int}/stats/capacity: GroupCapacityRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_stats_capacity;

/* /sched/groups/{group:int}/members/groups: list of {group:int} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_members_groups;

/* /sched/groups/{group:int}/members/memClients: list of {client:int} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_groups_members_memClients;

/* /sched/memClients/{client:int}/kestrel/vmm: VmmMemoryStatsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_memClients_kestrel_vmm;

/* /sched/memClients/{client:int}/swapInfo: VmSwapInfoRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_memClients_swapInfo;

/* /sched/memClients/{client:int}/kestrel/uw: UwMemoryStatsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_memClients_kestrel_uw;

/* /sched/memClients/{client:int}/kestrel/guest: GuestStatsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_memClients_kestrel_guest;

/* /sched/memClients/{client:int}/memzipInfo: ZipStatsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_memClients_memzipInfo;

/* /memory/lpage/vmLPage/{client:int}: LPageStatsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_lpage_vmLPage;

/*
 * /sched/memClients/{client:int}/remapTypes: list of {remapType:text}
 * /sched/memClients/{client:int}/remapTypes/{remapType:text}: RemapStatsRecord
 */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_memClients_remapTypes;

/* /sched/memClients/{client:int}/kestrel/totalCommon: TotalCommonRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_memClients_kestrel_totalCommon;

/* /worldGroups/{client:int}/vmmLeaderID: VmmLeaderIDRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_worldGroups_vmmLeaderID;

/* /memory/pshare/stats: PShareStatsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_pshare_stats;

/* /system/buddy: list of {buddy:text} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_system_buddy;

/* /memory/memNodes/{memNode:int}: MemNodeRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_memNodes;

/* /system/buddy/{buddy:text}/comprehensive: BuddyComprehensiveRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_system_buddy_comprehensive;

/* /memory/comprehensive: ComprehensiveRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_comprehensive;

/* /sched/globalStats/memory/kestrel: GlobalMemoryRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_globalStats_memory_kestrel;

/* /sched/globalStats/memory/stateTransitions/{state:text}: StateTransitionsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_globalStats_memory_stateTransitions;

/* /memory/memInfo: MemInfoRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_memInfo;

/* /sched/globalStats/numVMs: NumVMsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_sched_globalStats_numVMs;

/*
 * /memory/lpage/nodeList/{numaNode:int}/vmPools: list of {pool:text}
 * /memory/lpage/nodeList/{numaNode:int}/vmPools/{pool:text}: LPoolStatsRecord
 */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_lpage_nodeList_vmPools;

/* /memory/lpage/nodeList/{numaNode:int}/psharePool: LPoolStatsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_lpage_nodeList_psharePool;

/* /system/heaps: list of {heap:text} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_system_heaps;

/* /system/heaps/{heap:text}/stats: HeapStatsRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_system_heaps_stats;

/* /memory/pmem/volumes: list of {volume:text} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_pmem_volumes;

/* /memory/pmem/volumes/{volume:text}/info: PMemVolumeRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_pmem_volumes_info;

/* /memory/pmem/volumes/{volume:text}/regionStore/info: RegionStoreRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_pmem_volumes_regionStore_info;

/* /memory/pmem/volumes/{volume:text}/regionStore/isClean: RegionStoreCleanRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_pmem_volumes_regionStore_isClean;

/* /memory/pmem/volumes/{volume:text}/regionStore/regions: list of {region:text} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_pmem_volumes_regionStore_regions;

/* /memory/pmem/volumes/{volume:text}/regionStore/regions/{region:text}/info: RegionRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_pmem_volumes_regionStore_regions_info;

/*
 * /memory/pmem/volumes/{volume:text}/regionStore/regions/{region:text}/numaAllocInfo: list of {numaNode:int}
 * /memory/pmem/volumes/{volume:text}/regionStore/regions/{region:text}/numaAllocInfo/{numaNode:int}: RegionNumaRecord
 */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_pmem_volumes_regionStore_regions_numaAllocInfo;

/*
 * /memory/pmem/volumes/{volume:text}/extents: list of {extent:int}
 * /memory/pmem/volumes/{volume:text}/extents/{extent:int}: ExtentRecord
 */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_memory_pmem_volumes_extents;

/* /hardware/cpu/cpuList/{cpu:int}: CpuRecord */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_hardware_cpu_cpuList;

/* /hardware/nvd/dimm: list of {dimm:int} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_hardware_nvd_dimm;

/* /hardware/pci/seg: list of {segment:int} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_hardware_pci_seg;

/* /hardware/pci/seg/{segment:int}/bus: list of {bus:int} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_hardware_pci_seg_bus;

/* /hardware/pci/seg/{segment:int}/bus/{bus:int}/slot: list of {slot:int} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_hardware_pci_seg_bus_slot;

/* /hardware/pci/seg/{segment:int}/bus/{bus:int}/slot/{slot:int}/func: list of {function:int} */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_hardware_pci_seg_bus_slot_func;

/*
 * /hardware/pci/seg/{segment:int}/bus/{bus:int}/slot/{slot:int}/func/{function:int}/pciConfigHeader:
 *   PciConfigHeaderRecord
 */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigHeader;

/*
 * /hardware/pci/seg/{segment:int}/bus/{bus:int}/slot/{slot:int}/func/{function:int}/pciConfigReg/size/{size:int}
 *   /addr/{address:int}: PciConfigRegRecord
 */
extern PLATKIT_EXPORT const uint16_t NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr;

#ifdef __cplusplus
}
#endif

#endif /* PLATKIT_NODES_H */
