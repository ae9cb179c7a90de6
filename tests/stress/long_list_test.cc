// Lists of millions of entries, and too little memory for them.
#include "tests/stress/large_host.h"
#include "tests/support/process.h"
#include "tests/support/text.h"

namespace stress {
namespace {

using testing_support::Outcome;

constexpr size_t kMany = 500'000;

// Runs a program with this limit of address space in MB; 0 means unlimited.
Outcome RunWithin(size_t mostMB, const std::string &program, const std::vector<std::string> &arguments) {
  std::vector<std::string> words = {"-c", "[ $0 = 0 ] || ulimit -v $0; exec \"$@\"", std::to_string(mostMB << 10),
                                    program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return testing_support::Run({.program = "/bin/sh", .arguments = words});
}

Outcome Report(const std::string &report, const std::string &path, size_t mostMB = 0) {
  return RunWithin(mostMB, KESTREL_PROGRAM, {"-c", path, "-r", report, "-q"});
}

// Sanitizers reserve a large address space.
class ShortMemory : public testing::Test {
 protected:
  void SetUp() override {
#ifdef KESTREL_SANITIZE
    GTEST_SKIP() << "the sanitizers need more address space than these tests leave them";
#endif
  }
};

TEST(LongList, OfHeapsThatAreGone) {
  LargeHost host;
  host.AddList("/system/heaps", std::vector<std::string>(kMany, "heap"));
  const Outcome run = Report("heap-stats", host.Write());
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(testing_support::Lines(run.output).size(), 2u) << "the header and the totals";
}

TEST(LongList, OfOneHeap) {
  LargeHost host;
  host.AddList("/system/heaps", std::vector<std::string>(kMany / 10, "heap"));
  host.AddHeap("heap");
  const Outcome run = Report("heap-stats", host.Write());
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(testing_support::Lines(run.output).size(), kMany / 10 + 2);
}

TEST(LongList, OfBuddiesDoesNotFit) {
  LargeHost host;
  host.AddList("/system/buddy", std::vector<std::string>(kMany, "memmap-0-lo"));
  const Outcome run = Report("buddy-stats", host.Write());
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(testing_support::Lines(run.output).size(), 2u) << "the header and the total";
}

// A capture reads each volume and region only once, even if the snapshot lists them many times.
TEST(LongList, IsCapturedOnce) {
  LargeHost host;
  const std::vector<std::string> names(kMany / 100, "pmem");
  host.AddList("/memory/pmem/volumes", names);
  host.AddList("/memory/pmem/volumes/pmem/regionStore/regions", names);
  host.AddList("/memory/pmem/volumes/pmem/regionStore/regions/pmem/numaAllocInfo",
               std::vector<int64_t>(names.size(), 0));
  const std::string path = host.Write();
  const Outcome run = RunWithin(0, NODAL_PROGRAM, {"--cache", path, "capture", "-o", path + ".again"});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_NE(run.errors.find(": 3 nodes, 0 records, 3 lists, "), std::string::npos) << run.errors;
}

// Makes each list that a report reads long. The instances in the lists do not exist, so the report reads only lists.
std::string WriteLongLists(LargeHost &host) {
  const std::vector<int64_t> numbers(kMany, 1);
  const std::vector<std::string> names(kMany, "memmap-0-lo");
  host.AddGroup(0, {2});
  host.Add("/sched/groups/2/groupName", GroupNameRecord{.name = "world"});
  host.Add("/sched/groups/2/groupFlags", GroupFlagsRecord{.flags = HVC_GROUP_USER_WORLD});
  host.AddList("/sched/groups/2/members/groups", numbers);
  host.AddList("/sched/groups/2/members/memClients", numbers);
  host.AddList("/sched/memClients/1/remapTypes", names);
  host.AddList("/system/heaps", names);
  MemInfoRecord memory = {};
  memory.numNodes = 1;
  host.Add("/memory/memInfo", memory);
  host.Add("/sched/globalStats/numVMs", NumVMsRecord{.numVMs = UINT32_MAX});
  host.AddList("/memory/lpage/nodeList/0/vmPools", names);
  host.AddList("/memory/pmem/volumes", names);
  host.Add("/memory/pmem/volumes/memmap-0-lo/info", PMemVolumeRecord{});
  host.AddList("/memory/pmem/volumes/memmap-0-lo/regionStore/regions", names);
  host.AddList("/memory/pmem/volumes/memmap-0-lo/extents", numbers);
  return host.Write();
}

// With too little memory, a report either prints a message or is complete.
TEST_F(ShortMemory, IsAMessage) {
  LargeHost host;
  const std::string path = WriteLongLists(host);
  const size_t fileMB = testing_support::ReadFile(path).size() >> 20;
  for (const char *report : {"group-stats", "asyncremap-stats", "lpool-stats", "heap-stats", "pmem-regionstore-stats",
                             "pmem-region-stats", "pmem-extent-stats", "pmem-region-numa-stats"}) {
    const Outcome whole = Report(report, path);
    for (const size_t roomMB : {12u, 20u}) {
      const Outcome run = Report(report, path, fileMB + roomMB);
      const bool ended = run.signal == 0 && (run.exitStatus == 0 || run.exitStatus == 1);
      EXPECT_TRUE(ended) << report << " with " << roomMB << " MB: " << run;
      EXPECT_TRUE(run.errors != whole.errors || run.output == whole.output) << report << " with " << roomMB << " MB";
    }
  }
}

TEST_F(ShortMemory, HasTheMessagesOfTheReports) {
  LargeHost host;
  const std::string path = WriteLongLists(host);
  const size_t mostMB = (testing_support::ReadFile(path).size() >> 20) + 14;

  const Outcome heaps = Report("heap-stats", path, mostMB);
  EXPECT_EQ(heaps.exitStatus, 0);
  EXPECT_EQ(heaps.errors, "KestrelHeapGetMemMapStats: NODAL_GetInstanceListAlloc() for heapList failure\n");

  const Outcome pools = Report("lpool-stats", path, mostMB);
  EXPECT_EQ(pools.exitStatus, 1);
  EXPECT_TRUE(pools.errors.ends_with("KestrelTraverseLPools: NODAL_GetInstanceListAllocHint() failure\n")) << pools;

  // Failures below the start group do not affect the exit status.
  const Outcome groups = Report("group-stats", path, mostMB);
  EXPECT_EQ(groups.exitStatus, 0);
  EXPECT_EQ(groups.errors, "KestrelTraverseGroups: NODAL_GetInstanceListAlloc failure: Out of memory\n");
  const Outcome start = RunWithin(mostMB, KESTREL_PROGRAM, {"-c", path, "-r", "group-stats", "-q", "-g", "2"});
  EXPECT_EQ(start.exitStatus, 1);
  EXPECT_EQ(start.errors, "KestrelTraverseGroups: NODAL_GetInstanceListAlloc failure: Out of memory\n");
}

TEST_F(ShortMemory, ThereIsNoRoomForAsManyHeaps) {
  LargeHost host;
  host.AddList("/system/heaps", std::vector<std::string>(kMany, "heap"));
  const Outcome run = Report("heap-stats", host.Write(), 60);  // 148 bytes per heap
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.errors, "KestrelHeapGetMemMapStats: malloc() for stats failure\n");
}

TEST_F(ShortMemory, IsAMessageOfTheCompanion) {
  LargeHost host;
  const std::string path = WriteLongLists(host);
  const size_t fileMB = testing_support::ReadFile(path).size() >> 20;
  const std::pair<std::vector<std::string>, size_t> commands[] = {
      {{"verify", path}, 2 * fileMB + 40},
      {{"dump", path}, fileMB + 40},
      {{"--cache", path, "capture", "-o", path + ".again"}, 2 * fileMB + 40},
  };
  for (const auto &[words, mostMB] : commands) {
    const Outcome run = RunWithin(mostMB, NODAL_PROGRAM, words);
    EXPECT_EQ(run.exitStatus, 1) << words[0];
    EXPECT_EQ(run.errors, "nodal: out of memory\n") << words[0];
  }
}

}  // namespace
}  // namespace stress
