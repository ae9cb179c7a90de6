// Fails each allocation of a few reports. every_allocation_test does the same for all reports and hosts.
#include <gtest/gtest.h>

#include <memory>

#include "platkit/nodal.h"
#include "platkit/source.h"
#include "tests/stress/short_run.h"

namespace stress {
namespace {

class Allocation : public testing::TestWithParam<const char *> {};

TEST_P(Allocation, FailsOnASavedHost) {
  SavedRoot host("clients.host", platkit::Reach::kHost);
  FailEachAllocation(host, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Of, Allocation, testing::Values("group-stats", "vm-stats", "comp-stats"));

using List = std::unique_ptr<NODAL_ParamList, decltype(&NODAL_ParamListDestroy)>;

List ListOf(int64_t argument) {
  List list(NODAL_ParamListCreate(NODAL_LIST_INSTANCES, 1), NODAL_ParamListDestroy);
  EXPECT_EQ(NODAL_ParamListAddInt(list.get(), argument), HVC_OK);
  return list;
}

HVC_ReturnStatus ReadName(int64_t group) {
  GroupNameRecord name;
  return NODAL_Get(NODAL_NODE_sched_groups_groupName, ListOf(group).get(), &name, sizeof name);
}

HVC_ReturnStatus ListMembers(int64_t group) {
  const List members = ListOf(0);
  return NODAL_GetInstanceList(NODAL_NODE_sched_groups_members_groups, ListOf(group).get(), members.get());
}

// Searches for a process that no listing has returned, with a shortage at each allocation in turn. After the process
// and its control group are removed, the process must be unknown, wherever the shortage occurred.
TEST(AllocationOfAProcess, LeavesItInItsGroup) {
  constexpr int64_t kProcess = 4321;
  SavedRoot host("clients.host", platkit::Reach::kHost);
  platkit::SavedHost &files = host.files();
  const List argument = ListOf(kProcess);
  bool hasFailed = true;
  for (uint64_t k = 1; hasFailed; ++k) {
    files.MakeFolder("sys/fs/cgroup/passing");
    host.Open();
    ASSERT_EQ(ListMembers(0), HVC_OK);
    files.Write("proc/4321/status", "Name:\tpassing\nTgid:\t4321\nVmSize:\t10 kB\nVmRSS:\t5 kB\n");
    files.Write("proc/4321/cgroup", "0::/passing\n");
    GroupNameRecord name;
    BeginShortage({.from = k});
    const HVC_ReturnStatus status = NODAL_Get(NODAL_NODE_sched_groups_groupName, argument.get(), &name, sizeof name);
    EndShortage();
    hasFailed = FailedAllocations() > 0;
    EXPECT_EQ(status, hasFailed ? HVC_NO_MEMORY : HVC_OK) << "allocation " << k;
    EXPECT_TRUE(hasFailed || k > 3);
    EXPECT_EQ(ReadName(kProcess), HVC_OK) << "allocation " << k;
    files.Remove("proc/4321");
    files.Remove("sys/fs/cgroup/passing");
    host.Age();
    ASSERT_EQ(ListMembers(0), HVC_OK);
    EXPECT_EQ(ReadName(kProcess), HVC_NOT_FOUND) << "allocation " << k;
  }
  platkit::UseSource(nullptr);
}

}  // namespace
}  // namespace stress
