// Heaps, which are caches of kernel objects.
#include "platkit/linux/records/heap_records.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

HeapStatsRecord Heap(SavedHost &host, const char *name) { return host.ask().Record(nodes::system_heaps_stats, {name}); }

using Names = std::vector<std::string>;

TEST(HeapRecords, OnePerCache) {
  SavedHost host("two-nodes.host");
  EXPECT_EQ(host.ask().Names(nodes::system_heaps),
            (Names{"ext4_inode_cache", "p9_fcall", "an odd name", "empty", "a_cache_of_a_name_that_is_longer_th",
                   "dentry", "kmalloc-8"}));
  const HeapStatsRecord heap = Heap(host, "ext4_inode_cache");
  EXPECT_STREQ(heap.name, "ext4_inode_cache");
  EXPECT_CELL(heap.dynGrow, 1u);
  EXPECT_CELL(heap.numRanges, 2u);
  EXPECT_CELL(heap.size, 2u * 4 * 4096);
  EXPECT_CELL(heap.dlMallocOvhd, 2u * 4 * 4096 - 30 * 1088);
  EXPECT_CELL(heap.avail, 2u * 1088);
  EXPECT_CELL(heap.pctFreeOfCur, 6u);
  EXPECT_CELL(heap.avgAllocSize, 1088u);
  EXPECT_CELL(heap.numReqsPerGrowth, 15u) << "objects of a slab";
  EXPECT_CELL(heap.max, 0u);
  EXPECT_CELL(heap.numSuccAllocs, 0u);
  EXPECT_CELL(Heap(host, "an odd name").avail, 1000u);
  EXPECT_CELL(Heap(host, "empty").pctFreeOfCur, 0u);
  EXPECT_CELL(Heap(host, "kmalloc-8").size, 4096u);
  EXPECT_EQ(host.ask().Status(nodes::system_heaps_stats, {"nothing"}), HVC_NOT_FOUND);
}

TEST(HeapRecords, CachesOfOneNameAreMerged) {
  SavedHost host("two-nodes.host");
  const HeapStatsRecord heap = Heap(host, "p9_fcall");
  EXPECT_CELL(heap.size, 8192u);
  EXPECT_CELL(heap.avail, 2000u);
  EXPECT_CELL(heap.numRanges, 2u);
}

TEST(HeapRecords, NamesFromTheListFindTheirHeaps) {
  SavedHost host("two-nodes.host");
  const std::string figures = " 1 2 100 2 1 : tunables 0 0 0 : slabdata 1 1 0\n";
  host.Write("proc/slabinfo",
             "a,b" + figures + "a\"b" + figures + "c\xff" + figures + std::string(34, 'x') + "\xc3\xa9" + figures);
  const Names names = host.ask().Names(nodes::system_heaps);
  EXPECT_EQ(names, (Names{"a?b", "c?", std::string(34, 'x')}));
  for (const std::string &name : names)
    EXPECT_EQ(Heap(host, name.c_str()).name, name);
  EXPECT_CELL(Heap(host, "a?b").size, 8192u) << "two caches whose printable names are equal";
  EXPECT_EQ(host.ask().Status(nodes::system_heaps_stats, {"a,b"}), HVC_NOT_FOUND);
}

TEST(HeapRecords, ALargeHeapIsScaledDown) {
  SavedHost host("two-nodes.host");
  const HeapStatsRecord heap = Heap(host, "dentry");
  const uint32_t most = 4294963200;
  EXPECT_CELL(heap.size, most);
  EXPECT_CELL(heap.pctFreeOfCur, 49u);
  EXPECT_NEAR(heap.avail, most * (21e6 * 192) / (2e6 * 4096), 1);
  EXPECT_NEAR(heap.dlMallocOvhd, most * (2e6 * 4096 - 42e6 * 192) / (2e6 * 4096), 1);
  EXPECT_CELL(heap.numRanges, 2000000u);
}

TEST(HeapRecords, LinesOfAllKinds) {
  SavedHost host("two-nodes.host");
  host.Write("proc/slabinfo",
             "slabinfo - version: 9\nno numbers\n : tunables\n1 2 3 4 5 : tunables 0 0 0 : slabdata 1 1 0\n"
             "bad x 10 100 1 1 : tunables 0 0 0 : slabdata 1 1 0\nshort 1 2 100 2 1 : tunables 0 0 0\n"
             "ctrl\x01 1 2 100 2 1 : tunables 0 0 0 : slabdata 1 1 0\n"
             "huge 1 99999999999999999 99999999999 2 1 : tunables 0 0 0 : slabdata 1 1 0\n");
  EXPECT_EQ(host.ask().Names(nodes::system_heaps), (Names{"bad", "short", "ctrl?", "huge"}));
  for (const char *name : {"bad", "short", "huge"}) {
    EXPECT_CELL(Heap(host, name).size, kNoFigure32) << name;
    EXPECT_CELL(Heap(host, name).avail, kNoFigure32) << name;
    EXPECT_CELL(Heap(host, name).pctFreeOfCur, kNoFigure32) << name;
  }
  EXPECT_CELL(Heap(host, "bad").numRanges, 1u);
  EXPECT_CELL(Heap(host, "short").avgAllocSize, 100u);
  EXPECT_CELL(Heap(host, "ctrl?").avail, 100u);
}

TEST(HeapRecords, OnlyRootReadsThem) {
  SavedHost host("two-nodes.host");
  Names names;
  host.Forbid("proc/slabinfo");
  {
    OrdinaryUser user;
    EXPECT_EQ(host.ask().List(nodes::system_heaps, {}, names), HVC_NO_PERMISSION);
    EXPECT_EQ(host.ask().Status(nodes::system_heaps_stats, {"dentry"}), HVC_NO_PERMISSION);
  }
  host.Remove("proc/slabinfo");
  EXPECT_EQ(host.ask().List(nodes::system_heaps, {}, names), HVC_NOT_FOUND);
}

TEST(HeapRecords, ASamplerReadsThemOnceAMinute) {
  SavedHost host("two-nodes.host");
  HostFiles files(host.Path(""), Reach::kHost);
  Clock::Time now = std::chrono::steady_clock::now();
  files.UseClock(Clock([&now] { return now; }));
  files.KeepOpen(10);
  PageSize pageSize(files);
  HeapRecords heaps(files, pageSize);
  const auto statusAfter = [&](std::chrono::seconds pause) {
    HeapStatsRecord record = {};
    now += pause;
    return heaps.Stats("added", record);
  };
  EXPECT_EQ(statusAfter(std::chrono::seconds(0)), HVC_NOT_FOUND);
  host.Write("proc/slabinfo", "added 1 2 64 8 1 : tunables 0 0 0 : slabdata 1 1 0\n");
  EXPECT_EQ(statusAfter(std::chrono::seconds(59)), HVC_NOT_FOUND);
  EXPECT_EQ(statusAfter(std::chrono::seconds(1)), HVC_OK);
}

}  // namespace
}  // namespace platkit
