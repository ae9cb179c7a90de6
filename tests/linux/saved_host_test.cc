// The hierarchy and the figures of whole saved hosts.
#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

template <typename Record>
concept ReadsGroupFlags = requires(Asker ask, Record record) {
  ask.Get(nodes::sched_groups_groupFlags, {0}, record);
};
static_assert(ReadsGroupFlags<GroupFlagsRecord>);
static_assert(!ReadsGroupFlags<GroupLeaderIDRecord>, "a node reads into its own record only");

constexpr int64_t kKernel = 5'000'000;

uint64_t MB(uint64_t amount) { return amount * 1024; }

TEST(SavedHost, Hierarchy) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const int64_t machines = host.ControlGroup(kTop + "machine.slice");
  const int64_t system = host.ControlGroup(kTop + "system.slice");
  const int64_t web = host.ControlGroup(kTop + "system.slice/web.service");
  const int64_t cron = host.ControlGroup(kTop + "system.slice/cron.service");
  using IDs = std::vector<int64_t>;
  EXPECT_EQ(ask.Members(0), (IDs{kKernel, machines, system})) << "a kernel thread is no group";
  EXPECT_EQ(ask.Members(kKernel), IDs{});
  EXPECT_EQ(ask.Members(system), (IDs{cron, web}));
  EXPECT_EQ(ask.Members(web), (IDs{100, 101}));
  EXPECT_EQ(ask.Members(cron), IDs{}) << "nor is a zombie";
  EXPECT_EQ(ask.Members(machines), IDs{300});
  EXPECT_EQ(ask.Members(300), IDs{kFirstVm + 300});
  EXPECT_EQ(ask.Members(100), IDs{});
  EXPECT_EQ(ask.Members(kFirstVm + 300), IDs{});
}

TEST(SavedHost, Identities) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const int64_t web = host.ControlGroup(kTop + "system.slice/web.service");
  const struct {
    int64_t id;
    const char *name, *tag;
    uint32_t flags;
    int64_t parent;
  } groups[] = {
      {0, "host", "host", HVC_GROUP_PREDEFINED | HVC_GROUP_CONTAINER, -1},
      {kKernel, "kernel", "kernel", HVC_GROUP_PREDEFINED | HVC_GROUP_KERNEL | HVC_GROUP_LEAF, 0},
      {web, "web.service", "cgroup", HVC_GROUP_CONTAINER, host.ControlGroup(kTop + "system.slice")},
      {100, "web server", "process", HVC_GROUP_USER_WORLD | HVC_GROUP_LEAF, web},
      {300, "mail", "vm", HVC_GROUP_VM | HVC_GROUP_USER_WORLD, host.ControlGroup(kTop + "machine.slice")},
      {kFirstVm + 300, "vmm", "vmm", HVC_GROUP_VMM_SUB_CONTAINER | HVC_GROUP_SUB_CONTAINER | HVC_GROUP_LEAF, 300},
  };
  for (const auto &group : groups) {
    EXPECT_EQ(ask.Name(group.id), group.name);
    EXPECT_EQ(ask.Tag(group.id), group.tag);
    EXPECT_EQ(ask.Flags(group.id), group.flags) << group.name;
    EXPECT_EQ(ask.Parent(group.id), group.parent) << group.name;
  }
}

TEST(SavedHost, LeadersAndClients) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const int64_t web = host.ControlGroup(kTop + "system.slice/web.service");
  std::vector<int64_t> clients;
  for (const int64_t id : {int64_t{100}, int64_t{300}}) {
    EXPECT_CELL(ask.Record(nodes::sched_groups_groupLeaderID, {id}).leaderID, id);
    EXPECT_EQ(ask.List(nodes::sched_groups_members_memClients, {id}, clients), HVC_OK);
    EXPECT_EQ(clients, std::vector<int64_t>{id});
  }
  for (const int64_t id : {int64_t{0}, kKernel, web, kFirstVm + 300}) {
    EXPECT_EQ(ask.Status(nodes::sched_groups_groupLeaderID, {id}), HVC_NOT_FOUND);
    EXPECT_EQ(ask.List(nodes::sched_groups_members_memClients, {id}, clients), HVC_OK);
    EXPECT_EQ(clients, id == kFirstVm + 300 ? std::vector<int64_t>{id} : std::vector<int64_t>{});
  }
}

TEST(SavedHost, WhatIsNoGroupIsNotFound) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  for (const int64_t id : {int64_t{2}, int64_t{150}, int64_t{999}, int64_t{-1}, kKernel + 1, int64_t{19'999'999},
                           kFirstVm, kFirstVm + 100, kFirstVm + 999, int64_t{30'000'000}, INT64_MAX, INT64_MIN}) {
    std::vector<int64_t> members;
    EXPECT_EQ(ask.Status(nodes::sched_groups_groupName, {id}), HVC_NOT_FOUND) << id;
    EXPECT_EQ(ask.List(nodes::sched_groups_members_groups, {id}, members), HVC_NOT_FOUND) << id;
  }
}

TEST(SavedHost, HostAndKernelFigures) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const GroupMemoryStatsRecord stats = ask.Stats(0);
  EXPECT_CELL(stats.memSize, 16000000u);
  EXPECT_CELL(stats.consumed, 7000000u);
  EXPECT_CELL(stats.touched, kNoFigure);
  EXPECT_CELL(stats.throttlePct, 100u);
  EXPECT_CELL(stats.ovhd, 340000u);
  EXPECT_CELL(stats.sharedSaved, 1000u + 48) << "with the pages of zeros";
  EXPECT_CELL(stats.consumedPeak, kNoFigure);
  EXPECT_CELL(stats.bMax, kNoFigure);
  EXPECT_CELL(stats.allocTgt, kNoFigure);
  const GroupMemoryStatsRecord kernel = ask.Stats(kKernel);
  EXPECT_CELL(kernel.memSize, 340000u);
  EXPECT_CELL(kernel.consumed, 7000000u - MB(8) - MB(4096)) << "what no control group is charged for";
  EXPECT_CELL(kernel.ovhd, 0u);
  EXPECT_CELL(ask.Capacity(0).consumedResv, MB(4));
  EXPECT_CELL(ask.Capacity(0).availResv, 16000000u - MB(4));
  EXPECT_CELL(ask.Alloc(0).min, 0u);
  EXPECT_CELL(ask.Alloc(0).max, kNoFigure);
  EXPECT_CELL(ask.Alloc(kKernel).minLimit, kNoFigure);
}

TEST(SavedHost, ControlGroupFigures) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const int64_t system = host.ControlGroup(kTop + "system.slice");
  const GroupMemoryStatsRecord stats = ask.Stats(system);
  EXPECT_CELL(stats.memSize, MB(9));
  EXPECT_CELL(stats.memSizePeak, kNoFigure) << "no peak of swap";
  EXPECT_CELL(stats.consumed, MB(8));
  EXPECT_CELL(stats.consumedPeak, MB(16));
  EXPECT_CELL(stats.touched, kNoFigure);
  EXPECT_CELL(stats.ovhd, 512u + 4) << "kernel memory and socket buffers";
  EXPECT_CELL(stats.bMin, MB(4));
  EXPECT_CELL(stats.eMin, MB(4));
  EXPECT_CELL(stats.eMinPeak, MB(4)) << "at least the current one";
  EXPECT_CELL(stats.rMinPeak, MB(4));
  EXPECT_CELL(stats.rMinChildPeak, MB(3));
  EXPECT_CELL(stats.iMin, MB(1));
  EXPECT_CELL(stats.bMax, kNoFigure);
  EXPECT_CELL(stats.allocTgt, kNoFigure);
  EXPECT_CELL(ask.Capacity(system).consumedResv, MB(3));
  EXPECT_CELL(ask.Capacity(system).availResv, MB(1));

  const int64_t web = host.ControlGroup(kTop + "system.slice/web.service");
  EXPECT_CELL(ask.Alloc(web).min, MB(2));
  EXPECT_CELL(ask.Alloc(web).max, MB(8));
  EXPECT_CELL(ask.Alloc(web).shares, 0);
  EXPECT_CELL(ask.Alloc(web).minLimit, kNoFigure);
  EXPECT_CELL(ask.Stats(web).eMin, MB(2));
  EXPECT_CELL(ask.Stats(web).bMax, MB(8));
  EXPECT_CELL(ask.Stats(web).allocTgt, MB(6));
}

TEST(SavedHost, PeaksAreNotBelowCurrentValues) {
  SavedHost host("v2.host");
  const std::string folder = kTop + "system.slice";
  const auto stats = [&] { return host.ask().Stats(host.ControlGroup(folder)); };
  host.Write(folder + "/memory.swap.peak", "3145728\n");
  EXPECT_CELL(stats().memSizePeak, MB(16 + 3));
  host.Write(folder + "/memory.peak", "0\n");
  EXPECT_CELL(stats().consumedPeak, MB(8)) << "somebody reset it";
  host.Write(folder + "/memory.swap.peak", "0\n");
  EXPECT_CELL(stats().memSizePeak, MB(9));
  host.Remove(folder + "/memory.swap.current");
  EXPECT_CELL(stats().memSizePeak, MB(8)) << "without swap";
}

TEST(SavedHost, AGroupIsThrottledAtTheLowestLimitAboveIt) {
  SavedHost host("v2.host");
  const int64_t web = host.ControlGroup(kTop + "system.slice/web.service");
  host.Write(kTop + "system.slice/memory.max", "5242880\n");
  EXPECT_CELL(host.ask().Stats(web).allocTgt, MB(5));
  EXPECT_CELL(host.ask().Stats(web).bMax, MB(8)) << "its own";
}

TEST(SavedHost, AReservationIsBoundedByItsParents) {
  SavedHost host("v2.host");
  host.Write(kTop + "system.slice/memory.min", "1048576\n");
  Asker ask = host.ask();
  const int64_t web = host.ControlGroup(kTop + "system.slice/web.service");
  EXPECT_CELL(ask.Stats(web).bMin, MB(2));
  EXPECT_CELL(ask.Stats(web).eMin, MB(1));
  EXPECT_CELL(ask.Capacity(host.ControlGroup(kTop + "system.slice")).availResv, 0u) << "not below 0";
}

TEST(SavedHost, ProcessFigures) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const GroupMemoryStatsRecord stats = ask.Stats(101);
  EXPECT_CELL(stats.memSize, 40000u);
  EXPECT_CELL(stats.memSizePeak, kNoFigure);
  EXPECT_CELL(stats.consumed, 12048u) << "huge pages are outside the resident set";
  EXPECT_CELL(stats.consumedPeak, kNoFigure) << "VmHWM excludes huge pages";
  EXPECT_CELL(stats.touched, kNoFigure);
  EXPECT_CELL(stats.ovhd, 40u);
  EXPECT_CELL(stats.sharedSaved, 20u);
  EXPECT_CELL(stats.bMax, kNoFigure);
  EXPECT_CELL(ask.Capacity(101).availResv, 0u);
}

TEST(SavedHost, MachineFigures) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const GroupMemoryStatsRecord stats = ask.Stats(300);
  const uint64_t overhead = 4300000 - MB(4096) + 9000;
  EXPECT_CELL(stats.memSize, MB(4096));
  EXPECT_CELL(stats.memSizePeak, MB(4096));
  EXPECT_CELL(stats.consumed, 4300000u);
  EXPECT_CELL(stats.consumedPeak, 4400000u);
  EXPECT_CELL(stats.ovhd, overhead);
  EXPECT_CELL(stats.sharedSaved, 4000u);
  const GroupMemoryStatsRecord vmm = ask.Stats(kFirstVm + 300);
  EXPECT_CELL(vmm.memSize, overhead);
  EXPECT_CELL(vmm.consumed, overhead);
  EXPECT_CELL(vmm.touched, kNoFigure);
  EXPECT_CELL(ask.Alloc(kFirstVm + 300).max, kNoFigure);
}

TEST(SavedHost, PageSharing) {
  SavedHost host("v2.host");
  const PShareStatsRecord stats = host.ask().Record(nodes::memory_pshare_stats);
  EXPECT_CELL(stats.cow, 350u);
  EXPECT_CELL(stats.cow1, 0u);
  EXPECT_CELL(stats.zero, 12u);
  EXPECT_CELL(stats.used, 100u);
  EXPECT_CELL(stats.reclaimed, 250u);
  EXPECT_CELL(stats.totRemove, 7u);
  EXPECT_CELL(stats.totAdd, 357u);
  EXPECT_CELL(stats.hintsActive, 40u);
  EXPECT_CELL(stats.hintsAdded, 40u) << "at least";
}

TEST(SavedHost, AKernelWithoutPageSharingSharesNothing) {
  SavedHost host("v1.host");
  const PShareStatsRecord stats = host.ask().Record(nodes::memory_pshare_stats);
  EXPECT_CELL(stats.cow, 0u);
  EXPECT_CELL(stats.totAdd, 0u);
  EXPECT_EQ(host.Opens("proc/vmstat"), 0);
  EXPECT_CELL(host.ask().Stats(0).sharedSaved, 0u);
}

TEST(SavedHost, LargePagesAreCountedInSmallOnes) {
  SavedHost host("64k-pages.host");
  const PShareStatsRecord stats = host.ask().Record(nodes::memory_pshare_stats);
  EXPECT_CELL(stats.cow, 350u * 16);
  EXPECT_CELL(stats.totRemove, 7u * 16);
  EXPECT_CELL(host.ask().Stats(100).sharedSaved, 3u * 64);
  EXPECT_CELL(host.ask().Stats(0).sharedSaved, 250u * 64);
}

TEST(SavedHost, Version1) {
  SavedHost host("v1.host");
  Asker ask = host.ask();
  const int64_t limited = host.ControlGroup(kTop + "memory/limited");
  const int64_t unlimited = host.ControlGroup(kTop + "memory/unlimited");
  EXPECT_EQ(ask.Members(0), (std::vector<int64_t>{kKernel, limited, unlimited, 1}));
  EXPECT_EQ(ask.Members(limited), std::vector<int64_t>{100});
  const GroupMemoryStatsRecord stats = ask.Stats(limited);
  EXPECT_CELL(stats.consumed, MB(8));
  EXPECT_CELL(stats.consumedPeak, MB(9));
  EXPECT_CELL(stats.memSize, MB(9));
  EXPECT_CELL(stats.memSizePeak, MB(10));
  EXPECT_CELL(stats.touched, kNoFigure);
  EXPECT_CELL(stats.ovhd, 256u);
  EXPECT_CELL(stats.bMin, 0u);
  EXPECT_CELL(stats.iMin, 0u);
  EXPECT_CELL(stats.eMin, 0u);
  EXPECT_CELL(stats.bMax, MB(16));
  EXPECT_CELL(stats.allocTgt, MB(12));
  EXPECT_CELL(ask.Alloc(limited).min, 0u);
  EXPECT_CELL(ask.Alloc(limited).max, MB(16));
  EXPECT_CELL(ask.Capacity(limited).consumedResv, 0u);
  EXPECT_CELL(ask.Capacity(0).availResv, 16000000u);
  EXPECT_CELL(ask.Alloc(unlimited).max, kNoFigure) << "the unlimited value of 64 KB pages";
  EXPECT_CELL(ask.Stats(unlimited).allocTgt, kNoFigure);
  EXPECT_CELL(ask.Stats(unlimited).memSizePeak, MB(5)) << "without swap accounting, the peak of memory alone";
}

TEST(SavedHost, AProcessIsFoundInTheHierarchyThatAccountsMemory) {
  SavedHost host("v1.host");
  EXPECT_EQ(host.ask().Parent(100), host.ControlGroup(kTop + "memory/limited"));
  EXPECT_EQ(host.ask().Parent(1), 0);
}

TEST(SavedHost, MemoryMayBeOnVersion1BesideVersion2) {
  SavedHost host("hybrid.host");
  Asker ask = host.ask();
  const int64_t only = host.ControlGroup(kTop + "mem ory/only");
  EXPECT_EQ(ask.Members(0), (std::vector<int64_t>{kKernel, only}));
  EXPECT_CELL(ask.Stats(only).consumed, MB(1));
}

TEST(SavedHost, WithoutControlGroupsProcessesAreTheHosts) {
  SavedHost host("no-control-groups.host");
  Asker ask = host.ask();
  EXPECT_EQ(ask.Members(0), (std::vector<int64_t>{kKernel, 1, 3, 20})) << "by number, not by name";
  EXPECT_EQ(ask.Parent(20), 0);
  EXPECT_CELL(ask.Capacity(0).availResv, 16000000u);
}

TEST(SavedHost, GroupsWithoutAMemoryController) {
  SavedHost host("grouping-only.host");
  Asker ask = host.ask();
  const int64_t user = host.ControlGroup(kTop + "systemd/user");
  EXPECT_EQ(ask.Parent(100), user);
  EXPECT_EQ(ask.Members(0), (std::vector<int64_t>{kKernel, user}));
  const GroupMemoryStatsRecord stats = ask.Stats(user);
  EXPECT_CELL(stats.consumed, kNoFigure);
  EXPECT_CELL(stats.consumedPeak, kNoFigure);
  EXPECT_CELL(stats.memSize, kNoFigure);
  EXPECT_CELL(stats.touched, kNoFigure);
  EXPECT_CELL(stats.ovhd, kNoFigure);
  EXPECT_CELL(stats.bMin, 0u);
  EXPECT_CELL(stats.eMin, 0u);
  EXPECT_CELL(stats.bMax, kNoFigure);
  EXPECT_CELL(ask.Alloc(user).min, 0u);
  EXPECT_CELL(ask.Alloc(user).max, kNoFigure);
}

TEST(SavedHost, AnOldKernel) {
  SavedHost host("kernel-5.10.host");
  Asker ask = host.ask();
  const GroupMemoryStatsRecord stats = ask.Stats(host.ControlGroup(kTop + "old.slice"));
  EXPECT_CELL(stats.consumed, MB(8));
  EXPECT_CELL(stats.consumedPeak, kNoFigure);
  EXPECT_CELL(stats.memSize, MB(8)) << "no swap is accounted";
  EXPECT_CELL(stats.ovhd, 64u + 128 + 1 + 200 + 4) << "the parts of kernel memory that this kernel counts";
  EXPECT_CELL(ask.Stats(kKernel).consumed, 7000000u - MB(8));
  EXPECT_CELL(ask.Stats(kKernel).memSize, 330000u);
  EXPECT_CELL(ask.Stats(100).sharedSaved, kNoFigure);
}

TEST(SavedHost, TheRootMustBeAFolder) {
  SavedHost host;
  host.Write("file", "");
  std::unique_ptr<Source> source;
  EXPECT_EQ(OpenSavedRoot(host.Path("nowhere").c_str(), Writes::kRefused, source), HVC_NOT_FOUND);
  EXPECT_EQ(OpenSavedRoot(host.Path("file").c_str(), Writes::kRefused, source), HVC_NOT_FOUND);
  EXPECT_EQ(OpenSavedRoot(std::string(5000, 'x').c_str(), Writes::kRefused, source), HVC_NAME_TOO_LONG);
  EXPECT_EQ(source, nullptr);
  EXPECT_EQ(OpenSavedRoot(host.Path("").c_str(), Writes::kRefused, source), HVC_OK);
  host.MakeFolder("closed/inner");
  host.Forbid("closed");
  {
    OrdinaryUser user;
    EXPECT_EQ(OpenSavedRoot(host.Path("closed/inner").c_str(), Writes::kRefused, source), HVC_NO_PERMISSION);
  }
}

TEST(SavedHost, AnEmptyRootIsAHostOfUnknownMemory) {
  SavedHost host;
  Asker ask = host.ask();
  EXPECT_EQ(ask.Members(0), std::vector<int64_t>{kKernel});
  EXPECT_CELL(ask.Stats(0).memSize, kNoFigure);
  EXPECT_CELL(ask.Stats(kKernel).consumed, kNoFigure);
  EXPECT_CELL(ask.Capacity(0).availResv, kNoFigure);
}

}  // namespace
}  // namespace platkit
