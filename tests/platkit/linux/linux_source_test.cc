// What is read when, what is kept, and what becomes of figures and groups that cannot be read or vanish.
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

constexpr uint64_t kNone = HVC_KB_NONE;
constexpr int64_t kVmm = 20'000'000;
const std::string kTop = "sys/fs/cgroup/";
const std::string kWeb = kTop + "system.slice/web.service";

// Asks for all of a group, and of what is below it, as a report on groups does.
void Walk(Asker &ask, int64_t group) {
  const std::vector<int64_t> members = ask.Members(group);
  ask.Flags(group);
  ask.Name(group);
  ask.Tag(group);
  ask.Parent(group);
  ask.Alloc(group);
  ask.Capacity(group);
  ask.Stats(group);
  for (const int64_t member : members)
    Walk(ask, member);
}

TEST(Upkeep, NothingIsReadBeforeANodeAsks) {
  SavedHost host("v2.host");
  EXPECT_EQ(host.source().definitions().signature, OwnDefinitions().signature);
  EXPECT_TRUE(host.opened().empty());
}

TEST(Upkeep, AWalkReadsEachFileOnce) {
  for (const char *archive : {"v2.host", "v1.host", "kernel-5.10.host", "kvm-descriptors.host"}) {
    SavedHost host(archive);
    Asker ask = host.ask();
    Walk(ask, 0);
    std::vector<std::string> opened = host.opened();
    std::sort(opened.begin(), opened.end());
    const auto twice = std::adjacent_find(opened.begin(), opened.end());
    EXPECT_EQ(twice, opened.end()) << archive << ": " << (twice == opened.end() ? "" : *twice);
    EXPECT_GT(opened.size(), 5u);
  }
}

TEST(Upkeep, CostlyFilesAreNeverRead) {
  SavedHost host("kvm-descriptors.host");
  Asker ask = host.ask();
  Walk(ask, 0);
  EXPECT_EQ(host.Opens("proc/400/fd"), 1);
  EXPECT_EQ(host.Opens("proc/401/fd"), 0) << "a process of one thread runs no machine";
  SavedHost other("v2.host");
  Asker askOther = other.ask();
  Walk(askOther, 0);
  EXPECT_EQ(other.Opens("proc/100/fd"), 0) << "KVM is not in use";
}

TEST(Upkeep, OnlyWhatIsAskedForIsRead) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  ask.Members(0);
  EXPECT_EQ(host.Opens("proc/meminfo"), 0);
  EXPECT_EQ(host.Opens(kTop + "system.slice"), 0);
  EXPECT_EQ(host.Opens(kTop + "system.slice/memory.min"), 0);
}

// A file that takes the place of another has another inode, as the files of the next process with a PID have.
void Replace(SavedHost &host, const std::string &path) {
  host.Write(path + ".new", host.Read(path));
  std::filesystem::rename(host.Path(path + ".new"), host.Path(path));
}

TEST(Upkeep, AProcessIsGoneWhenItsPidIsAnothers) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  ask.Members(host.ControlGroup(kWeb));
  UwMemoryStatsRecord record = {};
  GroupMemoryStatsRecord stats = {};
  ASSERT_EQ(ask.Get("sched_memClients_kestrel_uw", {101}, record), HVC_OK);
  Replace(host, "proc/101/status");
  const std::string begun = "101 (a) b) S";
  for (const std::string &stat : {begun + " 1 1 1", begun + " 4", std::string(), std::string("101 (x")}) {
    host.Write("proc/101/stat", stat);
    EXPECT_EQ(ask.Get("sched_memClients_kestrel_uw", {101}, record), HVC_NOT_FOUND) << stat;
    EXPECT_EQ(ask.Get("sched_groups_stats_memoryStats", {101}, stats), HVC_NOT_FOUND) << stat;
  }
  // One that began before the listing is the one that was listed, whatever the kernel has forgotten since.
  std::string words = begun;
  for (int field = 4; field < 22; ++field)
    words += " 9999999999999";
  host.Write("proc/101/stat", words + " 1 0 0\n");
  EXPECT_EQ(ask.Get("sched_memClients_kestrel_uw", {101}, record), HVC_OK);
  EXPECT_EQ(ask.Get("sched_groups_stats_memoryStats", {101}, stats), HVC_OK);
  host.Write("proc/101/stat", words + " 9999999999999 0 0\n");
  EXPECT_EQ(ask.Get("sched_groups_stats_memoryStats", {101}, stats), HVC_NOT_FOUND);
}

TEST(Upkeep, ARecordAskedForAgainIsReadAnew) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  ask.Members(0);
  const int64_t web = host.ControlGroup(kWeb);
  EXPECT_CELL(ask.Stats(web).consumed, 4096u);
  host.Write(kWeb + "/memory.current", "2048\n");
  EXPECT_CELL(ask.Stats(web).consumed, 2u);

  EXPECT_CELL(ask.Stats(101).ovhd, 40u);
  host.Write("proc/101/status", "Name: x\nVmPTE: 41 kB\n");
  EXPECT_CELL(ask.Stats(101).ovhd, 41u);

  const int64_t system = host.ControlGroup(kTop + "system.slice");
  EXPECT_CELL(ask.Capacity(system).consumedResv, 3u * 1024);
  host.Write(kWeb + "/memory.min", "0\n");
  EXPECT_CELL(ask.Capacity(system).consumedResv, 1024u);

  EXPECT_CELL(ask.Stats(0).memSize, 16000000u);
  host.Write("proc/meminfo", "MemTotal: 5 kB\n");
  EXPECT_CELL(ask.Stats(0).memSize, 5u);
}

TEST(Upkeep, AListingSeesWhatHasChanged) {
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

TEST(Upkeep, AVanishedProcessIsNotFound) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  ask.Members(host.ControlGroup(kWeb));
  ask.Members(300);
  host.Remove("proc/100");
  host.Remove("proc/300");
  GroupMemoryStatsRecord record;
  EXPECT_EQ(ask.Get("sched_groups_stats_memoryStats", {100}, record), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Get("sched_groups_stats_memoryStats", {300}, record), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Members(host.ControlGroup(kWeb)), std::vector<int64_t>{101});
}

TEST(Upkeep, AProcessThatMovedIsInOneGroup) {
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
  // It ends, and the group that it came from is asked again.
  host.Remove("proc/100");
  EXPECT_EQ(ask.Members(other), std::vector<int64_t>());
  ask.Capacity(web);
  EXPECT_EQ(ask.Members(web), std::vector<int64_t>{101});
}

TEST(Upkeep, AVanishedControlGroupIsNotFound) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const int64_t web = host.ControlGroup(kWeb);
  const int64_t system = host.ControlGroup(kTop + "system.slice");
  ask.Members(system);
  host.Remove(kWeb);
  std::vector<int64_t> members;
  GroupAllocRecord alloc;
  GroupCapacityRecord capacity;
  GroupMemoryStatsRecord stats;
  EXPECT_EQ(ask.List("sched_groups_members_groups", {web}, members), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Get("sched_groups_memAllocationInKB", {web}, alloc), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Get("sched_groups_stats_capacity", {web}, capacity), HVC_NOT_FOUND);
  EXPECT_EQ(ask.Get("sched_groups_stats_memoryStats", {web}, stats), HVC_NOT_FOUND);
  EXPECT_CELL(ask.Capacity(system).consumedResv, 1024u) << "what is left of its siblings";
}

// One bad file costs its cells; the rest of the record stands.
TEST(Upkeep, EachFileOfAControlGroup) {
  const struct {
    const char *file;
    uint64_t (*cell)(const GroupMemoryStatsRecord &);
    uint64_t ifMissing;
  } files[] = {
      {"memory.current", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.consumed; }, kNone},
      {"memory.peak", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.consumedPeak; }, kNone},
      {"memory.min", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.bMin; }, 0},
      {"memory.low", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.iMin; }, 0},
      {"memory.high", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.allocTgt; }, kNone},
      {"memory.max", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.bMax; }, kNone},
  };
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const int64_t web = host.ControlGroup(kWeb);
  ask.Members(0);
  for (const auto &file : files) {
    const std::string path = kWeb + "/" + file.file;
    const auto cell = [&] { return file.cell(ask.Stats(web)); };
    host.Write(path, "123904\n");
    EXPECT_EQ(cell(), 121u) << path;
    host.Write(path, "123904");
    EXPECT_EQ(cell(), 121u) << path;
    for (const std::string &bad : {std::string("max\n"), std::string("12x\n"), std::string("-1\n"), std::string(),
                                   std::string("\n"), std::string("18446744073709551616\n"), std::string("1 2\n"),
                                   std::string(10000, '1'), std::string("1\0002", 3)}) {
      host.Write(path, bad);
      EXPECT_EQ(cell(), kNone) << path << ": " << bad;
      EXPECT_CELL(ask.Stats(web).touched, 1536u) << path;
    }
    host.Write(path, "123904\n");
    host.Forbid(path);
    {
      OrdinaryUser user;
      EXPECT_EQ(cell(), kNone) << path;
    }
    host.Remove(path);
    EXPECT_EQ(cell(), file.ifMissing) << path;
    host.MakeFolder(path);
    EXPECT_EQ(cell(), kNone) << path << " is no file at all";
    host.Remove(path);
    host.Write(path, "0\n");
  }
}

TEST(Upkeep, EachLineOfMemoryStat) {
  SavedHost host("v2.host");
  const int64_t web = host.ControlGroup(kWeb);
  const auto touched = [&](std::string_view text) -> uint64_t {
    host.Write(kWeb + "/memory.stat", text);
    return host.ask().Stats(web).touched;
  };
  host.ask().Members(0);
  EXPECT_EQ(touched("active_anon 1024\nactive_file 2048\n"), 3u);
  EXPECT_EQ(touched("active_file 2048\nnew_key 7\n\nactive_anon 1024"), 3u) << "in any order, ended or not";
  EXPECT_EQ(touched("active_anon 1024\nactive_file 2048\nactive_anon 4096\n"), 3u) << "the first line counts";
  EXPECT_EQ(touched("active_anon 1024\n"), 1u);
  EXPECT_EQ(touched("active_anon x\nactive_file 2048\n"), kNone);
  EXPECT_EQ(touched("active_anon\nactive_file 2048\n"), 2u) << "a key alone is no figure";
  EXPECT_EQ(touched("active_anon 99999999999999999999\nactive_file 2048\n"), kNone);
  EXPECT_EQ(touched("active_anon 18446744073709551615\nactive_file 2048\n"), kNone) << "the sum does not fit";
  EXPECT_EQ(touched(std::string(9000, 'x') + "\nactive_anon 1024\n"), 1u) << "an overlong line is passed over";
  EXPECT_EQ(touched(""), kNone);
  EXPECT_EQ(touched(std::string("\0\xff\n:\n ", 6)), kNone);
  host.Forbid(kWeb + "/memory.stat");
  {
    OrdinaryUser user;
    EXPECT_CELL(host.ask().Stats(web).touched, kNone);
  }
  host.Remove(kWeb + "/memory.stat");
  EXPECT_CELL(host.ask().Stats(web).touched, kNone);
  EXPECT_CELL(host.ask().Stats(web).consumed, 4096u);
}

TEST(Upkeep, EachLineOfStatus) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const auto stats = [&](std::string_view text) -> const GroupMemoryStatsRecord & {
    host.Write("proc/100/status", text);
    ask.Members(host.ControlGroup(kWeb));
    return ask.Stats(100);
  };
  EXPECT_CELL(stats("VmRSS:\t  10 kB\nName:\tx\nHugetlbPages: 5 kB\n").consumed, 15u);
  EXPECT_EQ(host.ask().Name(100), "x");
  EXPECT_CELL(stats("VmRSS: 10 kB\n").consumed, 10u) << "a kernel without huge pages";
  EXPECT_CELL(stats("VmRSS: 10 kB\n").memSize, kNone);
  EXPECT_CELL(stats("VmRSS: 10 kB\nVmRSS: 11 kB\n").consumed, 10u);
  EXPECT_CELL(stats("VmRSS: ten kB\nVmSize: 7 kB\n").consumed, kNone);
  EXPECT_CELL(stats("VmRSS: ten kB\nVmSize: 7 kB\n").memSize, 7u);
  EXPECT_CELL(stats("Groups: " + std::string(100000, '7') + "\nVmSize: 7 kB\n").memSize, 7u);
  EXPECT_CELL(stats("Name:\ta\tb\x01\x7f\nVmSize: 1 kB\n").memSize, 1u);
  EXPECT_EQ(host.ask().Name(100), "a?b??");
  EXPECT_CELL(stats("Name:\t" + std::string(200, 'n') + "\nVmSize: 1 kB\n").memSize, 1u);
  EXPECT_EQ(host.ask().Name(100), std::string(63, 'n'));
}

TEST(Upkeep, WhatHasNoMemoryIsNoProcess) {
  SavedHost host("v2.host");
  for (const char *status : {"", "Name:\tx\n", "Kthread:\t1\nVmSize: 1 kB\n", "State:\tZ (zombie)\nVmSize: 1 kB\n",
                             "Tgid:\t99\nVmSize: 1 kB\n"}) {
    host.Write("proc/100/status", status);
    EXPECT_EQ(host.ask().Members(host.ControlGroup(kWeb)), std::vector<int64_t>{101}) << status;
    GroupNameRecord record;
    EXPECT_EQ(host.ask().Get("sched_groups_groupName", {100}, record), HVC_NOT_FOUND) << status;
  }
}

TEST(Upkeep, AProcessThatMayNotBeReadIsThereAllTheSame) {
  SavedHost host("v2.host");
  host.Forbid("proc/100/status");
  host.Forbid("proc/101/ksm_merging_pages");
  OrdinaryUser user;
  Asker ask = host.ask();
  EXPECT_EQ(ask.Members(host.ControlGroup(kWeb)), (std::vector<int64_t>{100, 101}));
  EXPECT_EQ(ask.Name(100), "?");
  EXPECT_CELL(ask.Stats(100).memSize, kNone);
  EXPECT_CELL(ask.Stats(100).consumed, kNone);
  EXPECT_CELL(ask.Stats(101).sharedSaved, kNone);
  EXPECT_CELL(ask.Stats(101).memSize, 40000u);
}

TEST(Upkeep, UnreadableMembersAreNone) {
  SavedHost host("v2.host");
  const int64_t web = host.ControlGroup(kWeb);
  host.MakeFolder(kWeb + "/inner");
  const int64_t inner = host.ControlGroup(kWeb + "/inner");
  host.Forbid(kWeb + "/cgroup.procs");
  OrdinaryUser user;
  EXPECT_EQ(host.ask().Members(web), std::vector<int64_t>{inner});
}

TEST(Upkeep, GarbageInListsOfProcesses) {
  SavedHost host("v2.host");
  host.Write(kWeb + "/cgroup.procs", "101\nx\n-5\n0\n100\n101\n99999999999999999999\n\n4999999\n7000000\n777");
  EXPECT_EQ(host.ask().Members(host.ControlGroup(kWeb)), (std::vector<int64_t>{100, 101}));
}

TEST(Upkeep, MeminfoLines) {
  SavedHost host("v2.host");
  host.Write("proc/meminfo", "MemFree: 1 kB\nMemTotal: 10 kB\nMemTotal: 11 kB\nActive: x kB\n");
  const GroupMemoryStatsRecord stats = host.ask().Stats(0);
  EXPECT_CELL(stats.memSize, 10u);
  EXPECT_CELL(stats.consumed, 9u);
  EXPECT_CELL(stats.touched, kNone);
  EXPECT_CELL(stats.ovhd, kNone);
  host.Forbid("proc/meminfo");
  OrdinaryUser user;
  EXPECT_CELL(host.ask().Stats(0).memSize, kNone);
}

TEST(Upkeep, PageSharingFiles) {
  SavedHost host("v2.host");
  const std::string ksm = "sys/kernel/mm/ksm/";
  host.Write(ksm + "ksm_zero_pages", "many\n");
  host.Write("proc/vmstat", "cow_ksm\n");
  host.Remove(ksm + "pages_unshared");
  host.Forbid(ksm + "pages_sharing");
  OrdinaryUser user;
  PShareStatsRecord stats;
  ASSERT_EQ(host.ask().Get("memory_pshare_stats", {}, stats), HVC_OK);
  EXPECT_CELL(stats.zero, kNone);
  EXPECT_CELL(stats.reclaimed, kNone);
  EXPECT_CELL(stats.cow, kNone);
  EXPECT_CELL(stats.used, 100u);
  EXPECT_CELL(stats.totRemove, 0u);
  EXPECT_CELL(stats.hintsActive, 0u);
}

TEST(Upkeep, StartGroupsAreFoundWithoutAListing) {
  {
    SavedHost host("v2.host");
    EXPECT_EQ(host.ask().Parent(100), host.ControlGroup(kWeb));
    EXPECT_EQ(host.Opens("proc/101/status"), 0) << "a process is found without its neighbours";
  }
  SavedHost host("v2.host");
  EXPECT_EQ(host.ask().Members(host.ControlGroup(kWeb)), (std::vector<int64_t>{100, 101}));
  EXPECT_EQ(host.ask().Parent(kVmm + 300), 300);
}

// A listing must not hold descriptors for what it found.
TEST(Upkeep, ManyGroupsNeedNoMoreDescriptors) {
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
