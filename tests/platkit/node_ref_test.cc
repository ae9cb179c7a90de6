#include "platkit/node_ref.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "platkit/nodal.h"

namespace platkit {
namespace {

template <typename Record>
constexpr void Read(NodeRef<Record>, Record &) {}

template <typename Ref, typename Record>
concept CanRead = requires(Ref node, Record record) {
  Read(node, record);
};

using GroupFlags = decltype(nodes::sched_groups_groupFlags);
static_assert(CanRead<GroupFlags, GroupFlagsRecord>);
static_assert(!CanRead<GroupFlags, GroupLeaderIDRecord>, "a node reads into its own record only");
static_assert(!CanRead<GroupFlags, uint32_t>);
static_assert(std::is_same_v<decltype(nodes::system_heaps)::Record, NoRecord>, "a node that is only a list");
static_assert(std::is_same_v<decltype(nodes::memory_pmem_volumes_extents)::Record, ExtentRecord>, "list and record");

TEST(NodeRef, IsTheNodeOfItsName) {
  const Node &node = nodes::sched_groups_groupFlags;
  EXPECT_EQ(node.name, "sched_groups_groupFlags");
  EXPECT_EQ(&node, FindNode(NODAL_NODE_sched_groups_groupFlags));
  EXPECT_EQ(nodes::sched_groups_groupFlags->path, "/sched/groups/{group:int}/groupFlags");
}

TEST(NodeRef, IdAndIndexAreKnownAtCompileTime) {
  static_assert(nodes::sched_groups_groupName.id() == 1);
  static_assert(nodes::sched_groups_groupName.index() == 0);
  EXPECT_EQ(nodes::hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr.index() + 1, Nodes().size());
}

// Expects the node's record to have the size of the reference's type; 0 for a node that is only a list.
template <typename Record>
void ExpectRecordOf(NodeRef<Record> ref) {
  constexpr uint32_t kSize = std::is_same_v<Record, NoRecord> ? 0 : sizeof(Record);
  EXPECT_EQ(ref->isRecord() ? ref->record->size : 0, kSize) << ref->name;
}

TEST(NodeRef, EveryRecordHasTheSizeInTheCatalogue) {
#define PLATKIT_NODE(name, path, entry, record) ExpectRecordOf(nodes::name);
#include "platkit/catalogue/nodes.def"
}

}  // namespace
}  // namespace platkit
