// The records of the host as a whole: its memory and its state, buddies, pools of huge pages, and heaps.
#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

constexpr uint64_t kNone = HVC_KB_NONE;
constexpr uint32_t kNone32 = UINT32_MAX;

ComprehensiveRecord Memory(SavedHost &host) { return host.ask().Record<ComprehensiveRecord>("memory_comprehensive"); }

GlobalMemoryRecord Global(SavedHost &host) {
  return host.ask().Record<GlobalMemoryRecord>("sched_globalStats_memory_kestrel");
}

StateTransitionsRecord Transitions(SavedHost &host, const char *state) {
  return host.ask().Record<StateTransitionsRecord>("sched_globalStats_memory_stateTransitions", {state});
}

BuddyComprehensiveRecord Buddy(SavedHost &host, const char *name) {
  return host.ask().Record<BuddyComprehensiveRecord>("system_buddy_comprehensive", {name});
}

LPoolStatsRecord Pool(SavedHost &host, int64_t node, const char *name) {
  return host.ask().Record<LPoolStatsRecord>("memory_lpage_nodeList_vmPools", {node, name});
}

HeapStatsRecord Heap(SavedHost &host, const char *name) {
  return host.ask().Record<HeapStatsRecord>("system_heaps_stats", {name});
}

using Names = std::vector<std::string>;

TEST(HostMemory, WhoHoldsIt) {
  SavedHost host("two-nodes.host");
  const ComprehensiveRecord memory = Memory(host);
  EXPECT_CELL(memory.total, 4u * (3998 + 780000 + 3200000 + 4000000));
  EXPECT_CELL(memory.managedByMemMap, 31000000u);
  EXPECT_CELL(memory.reliableMem, 0u);
  EXPECT_CELL(memory.discarded, 8u);
  EXPECT_CELL(memory.buddyOvhd, 4u * 125000);
  EXPECT_CELL(memory.kernelCode, 16384u);
  EXPECT_CELL(memory.dataAndHeap, 300000u + 4096 + 1024 + 1024);
  EXPECT_CELL(memory.hvcClientConsumed, 30000u);
  EXPECT_CELL(memory.otherConsumed, 31000000u - 8800000 - 330000);
  EXPECT_CELL(memory.rsvdLow, 4u * (3840 + 2000)) << "no more than a zone has";
  EXPECT_CELL(memory.free, 8800000u);
  EXPECT_CELL(Global(host).managedByMemSched, 31000000u - 330000);
  EXPECT_CELL(Global(host).minFree, 4u * 5000) << "a zone without memory keeps none free";
  EXPECT_CELL(Global(host).memState, 0u);
}

TEST(HostMemory, AnOlderKernel) {
  SavedHost host("two-nodes.host");
  host.Write("proc/vmstat", "nr_free_pages 1\n");
  host.Write("proc/meminfo", "MemTotal: 1000 kB\nMemFree: 10 kB\nSlab: 100 kB\n");
  host.Write("proc/iomem", "  00001000-00001fff : Kernel code\n  00002000-00003fff : Kernel data\n");
  const ComprehensiveRecord memory = Memory(host);
  EXPECT_CELL(memory.buddyOvhd, 7983998u * 64 / 1024) << "what the pages' descriptors take";
  EXPECT_CELL(memory.discarded, 0u);
  EXPECT_CELL(memory.kernelCode, 4u);
  EXPECT_CELL(memory.dataAndHeap, 108u);
}

TEST(HostMemory, AnOrdinaryUserDoesNotLearnWhereTheKernelIs) {
  SavedHost host("two-nodes.host");
  host.Write("proc/iomem",
             "00000000-00000000 : System RAM\n  00000000-00000000 : Kernel code\n"
             "  00000000-00000000 : Kernel data\n");
  EXPECT_CELL(Memory(host).kernelCode, kNone);
  EXPECT_CELL(Memory(host).dataAndHeap, kNone);
  EXPECT_CELL(Memory(host).otherConsumed, 21870000u);
}

TEST(HostMemory, EachFileCostsItsCells) {
  const struct {
    const char *file;
    uint64_t (*cell)(const ComprehensiveRecord &);
    const char *garbage;
  } files[] = {
      {"proc/meminfo", [](const ComprehensiveRecord &r) -> uint64_t { return r.free; }, "MemFree: x kB\n"},
      {"proc/meminfo", [](const ComprehensiveRecord &r) -> uint64_t { return r.otherConsumed; }, "MemTotal\n"},
      {"proc/zoneinfo", [](const ComprehensiveRecord &r) -> uint64_t { return r.total; },
       "Node 0, zone Normal\n  pages free 1\n present many\n"},
      {"proc/zoneinfo", [](const ComprehensiveRecord &r) -> uint64_t { return r.rsvdLow; },
       "Node 0, zone DMA\n  pages free 1\n managed 1\n protection: (0, x)\n"},
      {"proc/iomem", [](const ComprehensiveRecord &r) -> uint64_t { return r.kernelCode; }, "g-h : Kernel code\n"},
      {"proc/iomem", [](const ComprehensiveRecord &r) -> uint64_t { return r.dataAndHeap; },
       "2-1 : Kernel data\n5 : Kernel bss\n"},
  };
  SavedHost host;
  for (const auto &file : files) {
    host.Write("proc/meminfo", "MemTotal: 9 kB\nMemFree: 5 kB\nSlab: 3 kB\n");
    host.Write("proc/zoneinfo", "Node 0, zone DMA\n  pages free 1\n present 2\n managed 2\n protection: (0)\n");
    host.Write("proc/iomem", "  0-fff : Kernel code\n  1000-1fff : Kernel data\n");
    EXPECT_NE(file.cell(Memory(host)), kNone) << file.file;
    host.Write(file.file, file.garbage);
    EXPECT_EQ(file.cell(Memory(host)), kNone) << file.file;
    EXPECT_CELL(Memory(host).discarded, 0u);
    host.Forbid(file.file);
    {
      OrdinaryUser user;
      EXPECT_EQ(file.cell(Memory(host)), kNone) << file.file;
    }
    host.Remove(file.file);
    EXPECT_EQ(file.cell(Memory(host)), kNone) << file.file;
  }
}

// Free memory in pages, with the watermarks 10, 20, 30, and 40 where the kernel tells it.
std::string ZoneOf(const std::string &free, bool tellsPromo) {
  return "Node 0, zone   Normal\n  pages free     " + free + "\n        min      10\n        low      20\n" +
         "        high     30\n" + (tellsPromo ? "        promo    40\n" : "") +
         "        present  100\n        managed  90\n        protection: (0, 0)\n" +
         "  pagesets\n    cpu: 0\n              high:     1\n";
}

TEST(HostMemory, StateByTheWatermarks) {
  const struct {
    const char *free;
    uint32_t state;
  } states[] = {{"90", 0}, {"40", 0}, {"39", 1}, {"30", 1}, {"29", 2},     {"20", 2},
                {"19", 3}, {"10", 3}, {"9", 4},  {"0", 4},  {"x", kNone32}};
  SavedHost host;
  for (const bool tellsPromo : {true, false}) {
    for (const auto &state : states) {
      host.Write("proc/zoneinfo", ZoneOf(state.free, tellsPromo));
      EXPECT_CELL(Global(host).memState, state.state) << state.free;
    }
  }
  host.Remove("proc/zoneinfo");
  EXPECT_CELL(Global(host).memState, kNone32);
  EXPECT_CELL(Global(host).minFree, kNone);
}

TEST(HostMemory, Transitions) {
  SavedHost host("two-nodes.host");
  const struct {
    const char *state;
    uint32_t higher, lower;
  } states[] = {{"high", 0, 50}, {"clear", 50, 50}, {"soft", 50, 30}, {"hard", 30, 7}, {"low", 7, 0}};
  for (const auto &state : states) {
    EXPECT_CELL(Transitions(host, state.state).toHigherCount, state.higher) << state.state;
    EXPECT_CELL(Transitions(host, state.state).toLowerCount, state.lower) << state.state;
  }
  StateTransitionsRecord record;
  for (const char *other : {"unknown", "", "High"}) {
    EXPECT_EQ(host.ask().Get("sched_globalStats_memory_stateTransitions", {other}, record), HVC_NOT_FOUND) << other;
  }
}

TEST(HostMemory, WhatIsBelowHasNotComeBack) {
  SavedHost host("two-nodes.host");
  host.Write("proc/zoneinfo", ZoneOf("25", true));
  EXPECT_CELL(Transitions(host, "high").toLowerCount, 50u);
  EXPECT_CELL(Transitions(host, "clear").toHigherCount, 49u);
  EXPECT_CELL(Transitions(host, "soft").toHigherCount, 49u);
  EXPECT_CELL(Transitions(host, "hard").toHigherCount, 30u);
  host.Write("proc/vmstat", "pageoutrun 0\n");
  EXPECT_CELL(Transitions(host, "high").toLowerCount, 1u) << "the kernel need not have noticed";
  EXPECT_CELL(Transitions(host, "clear").toHigherCount, 0u);
  EXPECT_CELL(Transitions(host, "soft").toLowerCount, 0u);
  host.Remove("proc/vmstat");
  EXPECT_CELL(Transitions(host, "clear").toLowerCount, 1u);
  host.Write("proc/vmstat", "pageoutrun 99999999999\nallocstall_dma x\n");
  EXPECT_CELL(Transitions(host, "clear").toLowerCount, kNone32) << "more than the cell takes";
  EXPECT_CELL(Transitions(host, "hard").toLowerCount, kNone32);
}

TEST(HostMemory, Machines) {
  SavedHost host("two-nodes.host");
  EXPECT_CELL(host.ask().Record<NumVMsRecord>("sched_globalStats_numVMs").numVMs, 1u);
  host.Remove("proc/200");
  EXPECT_CELL(host.ask().Record<NumVMsRecord>("sched_globalStats_numVMs").numVMs, 0u);
  SavedHost listed("two-nodes.host");
  listed.ask().Members(0);
  EXPECT_CELL(listed.ask().Record<NumVMsRecord>("sched_globalStats_numVMs").numVMs, 1u);
  EXPECT_EQ(listed.Opens("proc/200/status"), 1) << "the listing knows it";
}

TEST(Buddies, OnePerMemoryNodeAndKindOfZone) {
  SavedHost host("two-nodes.host");
  EXPECT_EQ(host.ask().Names("system_buddy"), (Names{"memmap-00-lo", "memmap-00-hi", "memmap-01-hi"}));
  EXPECT_CELL(host.ask().Record<MemNodeRecord>("memory_memNodes", {0}).numaNode, 0u);
  EXPECT_CELL(host.ask().Record<MemNodeRecord>("memory_memNodes", {1}).numaNode, 2u);
  EXPECT_CELL(host.ask().Record<MemInfoRecord>("memory_memInfo").numNodes, 2u);
  MemNodeRecord record;
  for (const int64_t node : {int64_t{2}, int64_t{-1}, INT64_MAX}) {
    EXPECT_EQ(host.ask().Get("memory_memNodes", {node}, record), HVC_NOT_FOUND);
  }
}

TEST(Buddies, FreeBuffers) {
  SavedHost host("two-nodes.host");
  const BuddyComprehensiveRecord low = Buddy(host, "memmap-00-lo");
  const uint32_t expected[] = {5, 4, 3, 2, 1, 0, 0, 0, 1, 3, 703};
  for (size_t k = 0; k < 19; ++k) {
    EXPECT_CELL(low.sizes[k].free, k < std::size(expected) ? expected[k] : 0) << k;
    EXPECT_CELL(low.sizes[k].used, 0u);
  }
  EXPECT_CELL(Buddy(host, "memmap-01-hi").sizes[0].free, 11u);
  BuddyComprehensiveRecord record;
  for (const char *other : {"memmap-01-lo", "memmap-0-lo", "memmap-02-hi", ""}) {
    EXPECT_EQ(host.ask().Get("system_buddy_comprehensive", {other}, record), HVC_NOT_FOUND) << other;
  }
}

TEST(Buddies, LargePagesStartAtALargerSize) {
  SavedHost host("64k-pages.host");
  host.Write("proc/buddyinfo", "Node 0, zone Normal 1 2 3 0 0 0 0 0 0 0 0 0 0 4 5 6 7\n");
  const BuddyComprehensiveRecord buddy = Buddy(host, "memmap-00-hi");
  EXPECT_CELL(buddy.sizes[3].free, 0u);
  EXPECT_CELL(buddy.sizes[4].free, 1u);
  EXPECT_CELL(buddy.sizes[17].free, 4u);
  EXPECT_CELL(buddy.sizes[18].free, 5u + 2 * 6 + 4 * 7) << "what is larger counts as several";
}

TEST(Buddies, LinesOfAllKinds) {
  SavedHost host("two-nodes.host");
  const auto names = [&](std::string_view text) {
    host.Write("proc/buddyinfo", text);
    return host.ask().Names("system_buddy");
  };
  EXPECT_EQ(names(""), Names{});
  EXPECT_EQ(names("Node 0, zone\nNode x, zone Normal 1\nNode 5 zone Normal 1\nzone\n\nNode -1, zone DMA 1\n"), Names{});
  EXPECT_EQ(names("Node 99999999999, zone Normal 1\n"), Names{});
  EXPECT_EQ(names("Node 7, zone Normal 1\nNode 3, zone Movable 1\nNode 7, zone DMA 2\n"),
            (Names{"memmap-00-hi", "memmap-01-lo", "memmap-01-hi"}));
  names("Node 0, zone Normal 1 x 3\nNode 0, zone Normal 10 20 30\nNode 0, zone Movable 4 5 4294967295\n");
  const BuddyComprehensiveRecord buddy = Buddy(host, "memmap-00-hi");
  EXPECT_CELL(buddy.sizes[0].free, 5u) << "the first line of a zone counts";
  EXPECT_CELL(buddy.sizes[1].free, kNone32);
  EXPECT_CELL(buddy.sizes[2].free, kNone32) << "the sum does not fit";
  std::string many;
  for (int node = 0; node < 300; ++node)
    many += "Node " + std::to_string(node) + ", zone Normal 1\n";
  EXPECT_EQ(names(many).size(), 99u);
  EXPECT_EQ(names(many).back(), "memmap-98-hi");
  EXPECT_CELL(host.ask().Record<MemNodeRecord>("memory_memNodes", {299}).numaNode, 255u);
}

TEST(Buddies, AFileThatCannotBeRead) {
  SavedHost host("two-nodes.host");
  Names names;
  MemInfoRecord record;
  host.Forbid("proc/buddyinfo");
  {
    OrdinaryUser user;
    EXPECT_EQ(host.ask().List("system_buddy", {}, names), HVC_NO_PERMISSION);
  }
  host.Remove("proc/buddyinfo");
  EXPECT_EQ(host.ask().List("system_buddy", {}, names), HVC_NOT_FOUND);
  EXPECT_EQ(host.ask().Get("memory_memInfo", {}, record), HVC_NOT_FOUND);
}

TEST(LargePagePools, OnePerNodeAndSize) {
  SavedHost host("two-nodes.host");
  EXPECT_EQ(host.ask().Names("memory_lpage_nodeList_vmPools", {0}), (Names{"hugepages-2MB", "hugepages-1GB"}));
  EXPECT_EQ(host.ask().Names("memory_lpage_nodeList_vmPools", {1}), Names{"hugepages-2MB"});
  EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrLPages, 10u);
  EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrFreeSPages, 4u * 512);
  EXPECT_CELL(Pool(host, 0, "hugepages-1GB").nrLPages, 2u * 512);
  EXPECT_CELL(Pool(host, 0, "hugepages-1GB").nrFreeSPages, 512u * 512);
  EXPECT_CELL(Pool(host, 1, "hugepages-2MB").nrLPages, 5u) << "of the second memory node, which is NUMA node 2";
  LPoolStatsRecord record;
  for (const char *other : {"hugepages-1GB", "hugepages-2048KB", "hugepages-2048kB", "hugepages-", "hugepages-MB",
                            "hugepages-02MB", "hugepages- 2MB", "hugepages-99999999999999999999GB",
                            "hugepages-17592186044416GB", "hugepages-0KB", "2MB", ""}) {
    EXPECT_EQ(host.ask().Get("memory_lpage_nodeList_vmPools", {1, other}, record), HVC_NOT_FOUND) << other;
  }
  Names names;
  EXPECT_EQ(host.ask().List("memory_lpage_nodeList_vmPools", {2}, names), HVC_NOT_FOUND);
  EXPECT_EQ(host.ask().Get("memory_lpage_nodeList_vmPools", {2, "hugepages-2MB"}, record), HVC_NOT_FOUND);
}

TEST(LargePagePools, SizesAndNames) {
  SavedHost host("two-nodes.host");
  const std::string folder = "sys/devices/system/node/node2/hugepages/hugepages-";
  for (const char *size : {"64kB", "32768kB", "16777216kB", "1536kB", "0kB", "xkB", "kB", "5"}) {
    host.Write(folder + size + "/nr_hugepages", "3\n");
    host.Write(folder + size + "/free_hugepages", "1\n");
  }
  EXPECT_EQ(host.ask().Names("memory_lpage_nodeList_vmPools", {1}),
            (Names{"hugepages-64KB", "hugepages-1536KB", "hugepages-2MB", "hugepages-32MB", "hugepages-16GB"}));
  EXPECT_CELL(Pool(host, 1, "hugepages-64KB").nrLPages, 0u) << "three are less than a large page";
  EXPECT_CELL(Pool(host, 1, "hugepages-64KB").nrFreeSPages, 16u);
  EXPECT_CELL(Pool(host, 1, "hugepages-16GB").nrLPages, 3u * 8192);
}

TEST(LargePagePools, EachFile) {
  SavedHost host("two-nodes.host");
  const std::string folder = "sys/devices/system/node/node0/hugepages/hugepages-2048kB/";
  for (const char *bad : {"x\n", "", "-1\n", "99999999999\n"}) {
    host.Write(folder + "nr_hugepages", bad);
    EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrLPages, kNone32) << bad;
    EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrFreeSPages, 2048u);
  }
  host.Forbid(folder + "free_hugepages");
  {
    OrdinaryUser user;
    EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrFreeSPages, kNone32);
  }
  host.Remove(folder + "free_hugepages");
  EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrFreeSPages, kNone32);
  host.Remove("sys/devices/system/node/node0/hugepages");
  EXPECT_EQ(host.ask().Names("memory_lpage_nodeList_vmPools", {0}), Names{}) << "a kernel without huge pages";
}

TEST(LargePagePools, AKernelWithoutNuma) {
  SavedHost host("two-nodes.host");
  host.Remove("sys/devices/system/node");
  host.Write("sys/kernel/mm/hugepages/hugepages-2048kB/nr_hugepages", "7\n");
  EXPECT_EQ(host.ask().Names("memory_lpage_nodeList_vmPools", {0}), Names{"hugepages-2MB"});
  EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrLPages, 7u);
}

TEST(LargePagePools, ThatOfPageSharingIsEmpty) {
  SavedHost host("two-nodes.host");
  EXPECT_CELL(host.ask().Record<LPoolStatsRecord>("memory_lpage_nodeList_psharePool", {1}).nrLPages, 0u);
  LPoolStatsRecord record;
  EXPECT_EQ(host.ask().Get("memory_lpage_nodeList_psharePool", {2}, record), HVC_NOT_FOUND);
}

TEST(Heaps, OnePerCache) {
  SavedHost host("two-nodes.host");
  EXPECT_EQ(host.ask().Names("system_heaps"), (Names{"ext4_inode_cache", "p9_fcall", "an odd name", "empty",
                                                     "a_cache_of_a_name_that_is_longer_th", "dentry", "kmalloc-8"}));
  const HeapStatsRecord heap = Heap(host, "ext4_inode_cache");
  EXPECT_STREQ(heap.name, "ext4_inode_cache");
  EXPECT_CELL(heap.dynGrow, 1u);
  EXPECT_CELL(heap.numRanges, 2u);
  EXPECT_CELL(heap.size, 2u * 4 * 4096);
  EXPECT_CELL(heap.dlMallocOvhd, 2u * 4 * 4096 - 30 * 1088);
  EXPECT_CELL(heap.avail, 2u * 1088);
  EXPECT_CELL(heap.pctFreeOfCur, 6u);
  EXPECT_CELL(heap.avgAllocSize, 1088u);
  EXPECT_CELL(heap.max, 0u);
  EXPECT_CELL(heap.numSuccAllocs, 0u);
  EXPECT_CELL(Heap(host, "an odd name").avail, 1000u);
  EXPECT_CELL(Heap(host, "empty").pctFreeOfCur, 0u);
  EXPECT_CELL(Heap(host, "kmalloc-8").size, 4096u);
  HeapStatsRecord record;
  EXPECT_EQ(host.ask().Get("system_heaps_stats", {"nothing"}, record), HVC_NOT_FOUND);
}

TEST(Heaps, CachesOfOneNameAreOne) {
  SavedHost host("two-nodes.host");
  const HeapStatsRecord heap = Heap(host, "p9_fcall");
  EXPECT_CELL(heap.size, 8192u);
  EXPECT_CELL(heap.avail, 2000u);
  EXPECT_CELL(heap.numRanges, 2u);
}

TEST(Heaps, WhatDoesNotFitKeepsItsProportions) {
  SavedHost host("two-nodes.host");
  const HeapStatsRecord heap = Heap(host, "dentry");
  const uint32_t most = 4294963200;
  EXPECT_CELL(heap.size, most);
  EXPECT_CELL(heap.pctFreeOfCur, 49u);
  EXPECT_NEAR(heap.avail, most * (21e6 * 192) / (2e6 * 4096), 1);
  EXPECT_NEAR(heap.dlMallocOvhd, most * (2e6 * 4096 - 42e6 * 192) / (2e6 * 4096), 1);
  EXPECT_CELL(heap.numRanges, 2000000u);
}

TEST(Heaps, LinesOfAllKinds) {
  SavedHost host("two-nodes.host");
  host.Write("proc/slabinfo",
             "slabinfo - version: 9\nno numbers\n : tunables\n1 2 3 4 5 : tunables 0 0 0 : slabdata 1 1 0\n"
             "bad x 10 100 1 1 : tunables 0 0 0 : slabdata 1 1 0\nshort 1 2 100 2 1 : tunables 0 0 0\n"
             "ctrl\x01 1 2 100 2 1 : tunables 0 0 0 : slabdata 1 1 0\n"
             "huge 1 99999999999999999 99999999999 2 1 : tunables 0 0 0 : slabdata 1 1 0\n");
  EXPECT_EQ(host.ask().Names("system_heaps"), (Names{"bad", "short", "ctrl?", "huge"}));
  for (const char *name : {"bad", "short", "huge"}) {
    EXPECT_CELL(Heap(host, name).size, kNone32) << name;
    EXPECT_CELL(Heap(host, name).avail, kNone32) << name;
    EXPECT_CELL(Heap(host, name).pctFreeOfCur, kNone32) << name;
  }
  EXPECT_CELL(Heap(host, "bad").numRanges, 1u);
  EXPECT_CELL(Heap(host, "short").avgAllocSize, 100u);
  EXPECT_CELL(Heap(host, "ctrl?").avail, 100u);
}

TEST(Heaps, AreForRoot) {
  SavedHost host("two-nodes.host");
  Names names;
  HeapStatsRecord record;
  host.Forbid("proc/slabinfo");
  {
    OrdinaryUser user;
    EXPECT_EQ(host.ask().List("system_heaps", {}, names), HVC_NO_PERMISSION);
    EXPECT_EQ(host.ask().Get("system_heaps_stats", {"dentry"}, record), HVC_NO_PERMISSION);
  }
  host.Remove("proc/slabinfo");
  EXPECT_EQ(host.ask().List("system_heaps", {}, names), HVC_NOT_FOUND);
}

// What several records share is read once, and anew for a record that is asked for again.
TEST(HostWide, EachFileIsReadOnceForAllItsRecords) {
  SavedHost host("two-nodes.host");
  for (int round = 1; round <= 2; ++round) {
    Memory(host);
    Global(host);
    for (const char *state : {"high", "clear", "soft", "hard", "low"})
      Transitions(host, state);
    for (const std::string &name : host.ask().Names("system_buddy")) {
      host.ask().Record<MemNodeRecord>("memory_memNodes", {0});
      Buddy(host, name.c_str());
    }
    for (const std::string &name : host.ask().Names("system_heaps"))
      Heap(host, name.c_str());
    for (const char *file : {"meminfo", "zoneinfo", "vmstat", "iomem", "buddyinfo", "slabinfo"}) {
      EXPECT_EQ(host.Opens(std::string("proc/") + file), round) << file;
    }
  }
}

TEST(HostWide, ARecordAskedForAgainIsReadAnew) {
  SavedHost host("two-nodes.host");
  EXPECT_CELL(Memory(host).free, 8800000u);
  host.Write("proc/meminfo", "MemFree: 5 kB\n");
  EXPECT_CELL(Memory(host).free, 5u);
  EXPECT_CELL(Buddy(host, "memmap-01-hi").sizes[0].free, 11u);
  EXPECT_CELL(host.ask().Record<MemInfoRecord>("memory_memInfo").numNodes, 2u);
  host.Write("proc/buddyinfo", "Node 0, zone Normal 1\nNode 2, zone Normal 12\nNode 3, zone Normal 1\n");
  EXPECT_CELL(Buddy(host, "memmap-01-hi").sizes[0].free, 12u);
  EXPECT_CELL(host.ask().Record<MemInfoRecord>("memory_memInfo").numNodes, 3u);
  EXPECT_CELL(Heap(host, "kmalloc-8").numRanges, 1u);
  host.Write("proc/slabinfo", "kmalloc-8 1 1 8 512 1 : tunables 0 0 0 : slabdata 7 7 0\n");
  EXPECT_CELL(Heap(host, "kmalloc-8").numRanges, 7u);
}

}  // namespace
}  // namespace platkit
