#include "platkit/catalogue.h"

#include <gtest/gtest.h>

#include <set>

namespace platkit {
namespace {

TEST(Catalogue, HasEveryNodeOnce) {
  EXPECT_EQ(Nodes().size(), 48u);
  std::set<std::string_view> names, paths;
  for (const Node &node : Nodes()) {
    EXPECT_TRUE(names.insert(node.name).second) << node.name;
    EXPECT_TRUE(paths.insert(node.path).second) << node.path;
    EXPECT_TRUE(node.isList || node.isRecord()) << node.name;
    EXPECT_EQ(FindNode(node.id), &node);
  }
}

TEST(Catalogue, UnknownNodesAreNull) {
  EXPECT_EQ(FindNode(0u), nullptr);
  EXPECT_EQ(FindNode(49u), nullptr);
  EXPECT_EQ(FindNode(UINT32_MAX), nullptr);
}

// The sizes that callers of the C interface pass.
TEST(Catalogue, RecordSizes) {
  const std::pair<uint16_t, uint32_t> sizes[] = {
      {NODAL_NODE_sched_groups_groupName, 64},
      {NODAL_NODE_sched_groups_groupTag, 8},
      {NODAL_NODE_sched_groups_parentGroupID, 8},
      {NODAL_NODE_sched_groups_groupFlags, 4},
      {NODAL_NODE_sched_groups_groupLeaderID, 4},
      {NODAL_NODE_sched_groups_memAllocationInKB, 32},
      {NODAL_NODE_sched_groups_stats_memoryStats, 320},
      {NODAL_NODE_sched_groups_stats_capacity, 24},
      {NODAL_NODE_sched_memClients_kestrel_vmm, 336},
      {NODAL_NODE_sched_memClients_swapInfo, 220},
      {NODAL_NODE_sched_memClients_kestrel_uw, 360},
      {NODAL_NODE_sched_memClients_kestrel_guest, 20},
      {NODAL_NODE_sched_memClients_memzipInfo, 136},
      {NODAL_NODE_memory_lpage_vmLPage, 148},
      {NODAL_NODE_sched_memClients_remapTypes, 80},
      {NODAL_NODE_sched_memClients_kestrel_totalCommon, 264},
      {NODAL_NODE_worldGroups_vmmLeaderID, 4},
      {NODAL_NODE_memory_pshare_stats, 208},
      {NODAL_NODE_memory_memNodes, 28},
      {NODAL_NODE_system_buddy_comprehensive, 236},
      {NODAL_NODE_memory_comprehensive, 88},
      {NODAL_NODE_sched_globalStats_memory_kestrel, 352},
      {NODAL_NODE_sched_globalStats_memory_stateTransitions, 32},
      {NODAL_NODE_memory_memInfo, 24},
      {NODAL_NODE_sched_globalStats_numVMs, 4},
      {NODAL_NODE_memory_lpage_nodeList_vmPools, 96},
      {NODAL_NODE_memory_lpage_nodeList_psharePool, 96},
      {NODAL_NODE_system_heaps_stats, 148},
      {NODAL_NODE_memory_pmem_volumes_info, 40},
      {NODAL_NODE_memory_pmem_volumes_regionStore_info, 48},
      {NODAL_NODE_memory_pmem_volumes_regionStore_isClean, 1},
      {NODAL_NODE_memory_pmem_volumes_regionStore_regions_info, 80},
      {NODAL_NODE_memory_pmem_volumes_regionStore_regions_numaAllocInfo, 12},
      {NODAL_NODE_memory_pmem_volumes_extents, 40},
      {NODAL_NODE_hardware_cpu_cpuList, 200},
      {NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigHeader, 164},
      {NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr, 4},
  };
  size_t records = 0;
  for (const Node &node : Nodes())
    records += node.isRecord() ? 1 : 0;
  EXPECT_EQ(records, std::size(sizes));
  for (const auto &[id, size] : sizes) {
    ASSERT_NE(FindNode(id), nullptr);
    ASSERT_TRUE(FindNode(id)->isRecord()) << FindNode(id)->name;
    EXPECT_EQ(FindNode(id)->record->size, size) << FindNode(id)->name;
  }
}

TEST(Catalogue, ArgumentsOfANodeThatIsListAndRecord) {
  const Node &node = *FindNode(NODAL_NODE_memory_pmem_volumes_regionStore_regions_numaAllocInfo);
  EXPECT_EQ(node.listArguments(), 2u);
  EXPECT_EQ(node.recordArguments(), 3u);
  EXPECT_EQ(node.arguments[0].what, "volume");
  EXPECT_EQ(node.arguments[0].kind, ParamKind::kText);
  EXPECT_EQ(node.arguments[2].what, "numaNode");
  EXPECT_EQ(node.arguments[2].kind, ParamKind::kInt);
}

}  // namespace
}  // namespace platkit
