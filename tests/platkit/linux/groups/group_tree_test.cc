// Finding and listing groups, also while the host changes.
#include "platkit/linux/groups/group_tree.h"

#include <sys/resource.h>

#include <algorithm>
#include <filesystem>

#include "tests/linux/deep_folders.h"
#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

// Replaces a file with a new one, which has another inode number, as if another process had got the PID.
void Replace(SavedHost &host, const std::string &path) {
  host.Write(path + ".new", host.Read(path));
  std::filesystem::rename(host.Path(path + ".new"), host.Path(path));
}

TEST(GroupTree, AProcessWhosePidIsReusedIsNotFound) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  ask.Members(host.ControlGroup(kWeb));
  ASSERT_EQ(ask.Status(nodes::sched_memClients_kestrel_uw, {101}), HVC_OK);
  Replace(host, "proc/101/status");
  const std::string begun = "101 (a) b) S";
  for (const std::string &stat : {begun + " 1 1 1", begun + " 4", std::string(), std::string("101 (x")}) {
    host.Write("proc/101/stat", stat);
    EXPECT_EQ(ask.Status(nodes::sched_memClients_kestrel_uw, {101}), HVC_NOT_FOUND) << stat;
    EXPECT_EQ(ask.Status(nodes::sched_groups_stats_memoryStats, {101}), HVC_NOT_FOUND) << stat;
  }
  // A process that started before the listing is the listed one, even if its inode number has changed: the kernel may
  // have dropped the inode.
  std::string words = begun;
  for (int field = 4; field < 22; ++field)
    words += " 9999999999999";
  host.Write("proc/101/stat", words + " 1 0 0\n");
  EXPECT_EQ(ask.Status(nodes::sched_memClients_kestrel_uw, {101}), HVC_OK);
  EXPECT_EQ(ask.Status(nodes::sched_groups_stats_memoryStats, {101}), HVC_OK);
  host.Write("proc/101/stat", words + " 9999999999999 0 0\n");
  EXPECT_EQ(ask.Status(nodes::sched_groups_stats_memoryStats, {101}), HVC_NOT_FOUND);
}

TEST(GroupTree, AListingSeesWhatHasChanged) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const int64_t web = host.ControlGroup(kWeb);
  EXPECT_EQ(ask.Members(web), (std::vector<int64_t>{100, 101}));
  host.Write(kWeb + "/cgroup.procs", "101\n");
  host.MakeFolder(kWeb + "/new");
  const int64_t added = host.ControlGroup(kWeb + "/new");
  EXPECT_EQ(ask.Members(web), (std::vector<int64_t>{added, 101}));
  EXPECT_EQ(ask.Name(added), "new");
}

TEST(GroupTree, AVanishedProcessIsNotFound) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  ask.Members(host.ControlGroup(kWeb));
  ask.Members(300);
  host.Remove("proc/100");
  host.Remove("proc/300");
  EXPECT_EQ(ask.Status(nodes::sched_groups_stats_memoryStats, {100}), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Status(nodes::sched_groups_stats_memoryStats, {300}), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Members(host.ControlGroup(kWeb)), std::vector<int64_t>{101});
}

TEST(GroupTree, AProcessThatMovedIsInOneGroup) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const std::string cron = kTop + "system.slice/cron.service";
  const int64_t web = host.ControlGroup(kWeb), other = host.ControlGroup(cron);
  ask.Members(web);
  ask.Capacity(web);
  host.Write(kWeb + "/cgroup.procs", "101\n");
  host.Write(cron + "/cgroup.procs", "100\n");
  EXPECT_EQ(ask.Members(other), std::vector<int64_t>{100});
  EXPECT_EQ(ask.Parent(100), other);
  // The process ends, and the group that it left is listed again.
  host.Remove("proc/100");
  EXPECT_EQ(ask.Members(other), std::vector<int64_t>());
  ask.Capacity(web);
  EXPECT_EQ(ask.Members(web), std::vector<int64_t>{101});
}

TEST(GroupTree, AVanishedControlGroupIsNotFound) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const int64_t web = host.ControlGroup(kWeb);
  const int64_t system = host.ControlGroup(kTop + "system.slice");
  ask.Members(system);
  host.Remove(kWeb);
  std::vector<int64_t> members;
  EXPECT_EQ(ask.List(nodes::sched_groups_members_groups, {web}, members), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Status(nodes::sched_groups_memAllocationInKB, {web}), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Status(nodes::sched_groups_stats_capacity, {web}), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Status(nodes::sched_groups_stats_memoryStats, {web}), HVC_NOT_FOUND);
  EXPECT_CELL(ask.Capacity(system).consumedResv, 1024u) << "what is left of its siblings";
}

TEST(GroupTree, KernelThreadsAndZombiesAreNoMembers) {
  SavedHost host("v2.host");
  for (const char *status : {"", "Name:\tx\n", "Kthread:\t1\nVmSize: 1 kB\n", "State:\tZ (zombie)\nVmSize: 1 kB\n",
                             "Tgid:\t99\nVmSize: 1 kB\n"}) {
    host.Write("proc/100/status", status);
    EXPECT_EQ(host.ask().Members(host.ControlGroup(kWeb)), std::vector<int64_t>{101}) << status;
    EXPECT_EQ(host.ask().Status(nodes::sched_groups_groupName, {100}), HVC_NOT_FOUND) << status;
  }
}

TEST(GroupTree, AnUnreadableProcessIsListed) {
  SavedHost host("v2.host");
  host.Forbid("proc/100/status");
  host.Forbid("proc/101/ksm_merging_pages");
  OrdinaryUser user;
  Asker ask = host.ask();
  EXPECT_EQ(ask.Members(host.ControlGroup(kWeb)), (std::vector<int64_t>{100, 101}));
  EXPECT_EQ(ask.Name(100), "?");
  EXPECT_CELL(ask.Stats(100).memSize, kNoFigure);
  EXPECT_CELL(ask.Stats(100).consumed, kNoFigure);
  EXPECT_CELL(ask.Stats(101).sharedSaved, kNoFigure);
  EXPECT_CELL(ask.Stats(101).memSize, 40000u);
}

// An unreadable process may run a machine, so the number of machines is unknown, whether or not a listing found the
// process.
TEST(GroupTree, AnUnreadableProcessIsNeitherAMachineNorNone) {
  const auto machines = [](Asker ask) { return ask.Record(nodes::sched_globalStats_numVMs).numVMs; };
  SavedHost host("v2.host");
  EXPECT_NE(machines(host.ask()), kNoFigure32);
  host.Remove("proc/100/status");
  host.MakeLink("proc/100/status", "status");
  EXPECT_EQ(machines(host.ask()), kNoFigure32);
  Asker ask = host.ask();
  EXPECT_EQ(ask.Members(host.ControlGroup(kWeb)), (std::vector<int64_t>{100, 101}));
  EXPECT_EQ(machines(ask), kNoFigure32);
}

// A list must not silently omit members that cannot be read.
TEST(GroupTree, AListFailsIfMembersCannotBeRead) {
  const auto list = [](SavedHost &host, int64_t group) {
    std::vector<int64_t> members;
    return host.ask().List(nodes::sched_groups_members_groups, {group}, members);
  };
  for (const std::string &path : {kWeb + "/cgroup.procs", kWeb}) {
    SavedHost host("v2.host");
    const int64_t web = host.ControlGroup(kWeb);
    host.ask().Members(host.ControlGroup(kTop + "system.slice"));
    host.Forbid(path);
    OrdinaryUser user;
    EXPECT_EQ(list(host, web), HVC_NO_PERMISSION) << path;
  }
  SavedHost host("v2.host");
  host.Remove(kWeb + "/cgroup.procs");
  EXPECT_EQ(list(host, host.ControlGroup(kWeb)), HVC_OK);
  host.MakeFolder(kWeb + "/cgroup.procs");
  EXPECT_EQ(list(host, host.ControlGroup(kWeb)), HVC_IO_ERROR);
  host.Write(kWeb + "/cgroup.type", "threaded\n");
  EXPECT_EQ(list(host, host.ControlGroup(kWeb)), HVC_OK) << "a threaded group has no list, and reading it fails";
}

TEST(GroupTree, AnUnreadableTopFails) {
  SavedHost host("v2.host");
  host.Forbid("sys/fs/cgroup");
  OrdinaryUser user;
  std::vector<int64_t> members;
  EXPECT_EQ(host.ask().List(nodes::sched_groups_members_groups, {0}, members), HVC_NO_PERMISSION);
}

TEST(GroupTree, AGroupNestedDeeperThanAPathIsLong) {
  SavedHost host("v2.host");
  DeepFolders deep(host.Path(kTop + "system.slice"));
  Asker ask = host.ask();
  int64_t group = host.ControlGroup(kTop + "system.slice");
  std::vector<int64_t> members;
  HVC_ReturnStatus status = HVC_OK;
  for (int depth = 0; depth < DeepFolders::kDepth && status == HVC_OK; ++depth) {
    members.clear();
    status = ask.List(nodes::sched_groups_members_groups, {group}, members);
    if (status == HVC_OK) group = *std::ranges::find_if(members, [&](int64_t id) { return ask.Name(id)[0] == 'd'; });
  }
  EXPECT_EQ(status, HVC_NAME_TOO_LONG);
  EXPECT_EQ(ask.Name(group), std::string(63, 'd')) << "it is there all the same";
}

TEST(GroupTree, GarbageInListsOfProcesses) {
  SavedHost host("v2.host");
  host.Write(kWeb + "/cgroup.procs", "101\nx\n-5\n0\n100\n101\n99999999999999999999\n\n4999999\n7000000\n777");
  EXPECT_EQ(host.ask().Members(host.ControlGroup(kWeb)), (std::vector<int64_t>{100, 101}));
}

TEST(GroupTree, StartGroupsAreFoundWithoutAListing) {
  {
    SavedHost host("v2.host");
    EXPECT_EQ(host.ask().Parent(100), host.ControlGroup(kWeb));
    EXPECT_EQ(host.Opens("proc/101/status"), 0) << "a process is found without its neighbours";
  }
  SavedHost host("v2.host");
  EXPECT_EQ(host.ask().Members(host.ControlGroup(kWeb)), (std::vector<int64_t>{100, 101}));
  EXPECT_EQ(host.ask().Parent(kFirstVm + 300), 300);
}

// A listing must not keep descriptors open for the groups that it found.
TEST(GroupTree, ManyGroupsNeedNoMoreDescriptors) {
  SavedHost host;
  host.Write("proc/self/mountinfo", "1 1 0:1 / /cg rw - cgroup2 none rw\n");
  for (int i = 0; i < 300; ++i)
    host.MakeFolder("cg/" + std::to_string(i) + "/inner");
  rlimit limit = {};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit few = {.rlim_cur = 64, .rlim_max = limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  Asker ask = host.ask();
  const std::vector<int64_t> members = ask.Members(0);
  EXPECT_EQ(members.size(), 301u);
  for (const int64_t member : members)
    EXPECT_EQ(ask.Members(member).size(), member == 5'000'000 ? 0u : 1u);
  EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
}

}  // namespace
}  // namespace platkit
