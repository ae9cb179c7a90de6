// Consumers and states of the host's memory.
#include "platkit/linux/records/host_memory_records.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

ComprehensiveRecord Memory(SavedHost &host) { return host.ask().Record(nodes::memory_comprehensive); }

GlobalMemoryRecord Global(SavedHost &host) { return host.ask().Record(nodes::sched_globalStats_memory_kestrel); }

StateTransitionsRecord Transitions(SavedHost &host, const char *state) {
  return host.ask().Record(nodes::sched_globalStats_memory_stateTransitions, {state});
}

TEST(HostMemoryRecords, Comprehensive) {
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

TEST(HostMemoryRecords, AnOlderKernel) {
  SavedHost host("two-nodes.host");
  host.Write("proc/vmstat", "nr_free_pages 1\n");
  host.Write("proc/meminfo", "MemTotal: 1000 kB\nMemFree: 10 kB\nMemAvailable: 50 kB\nSlab: 100 kB\n");
  host.Write("proc/iomem", "  00001000-00001fff : Kernel code\n  00002000-00003fff : Kernel data\n");
  const ComprehensiveRecord memory = Memory(host);
  EXPECT_CELL(memory.buddyOvhd, 7983998u * 64 / 1024) << "what the pages' descriptors take";
  EXPECT_CELL(memory.discarded, 0u);
  EXPECT_CELL(memory.kernelCode, 4u);
  EXPECT_CELL(memory.dataAndHeap, 108u);
}

TEST(HostMemoryRecords, AnOrdinaryUserDoesNotLearnWhereTheKernelIs) {
  SavedHost host("two-nodes.host");
  host.Write("proc/iomem",
             "00000000-00000000 : System RAM\n  00000000-00000000 : Kernel code\n"
             "  00000000-00000000 : Kernel data\n");
  EXPECT_CELL(Memory(host).kernelCode, kNoFigure);
  EXPECT_CELL(Memory(host).dataAndHeap, kNoFigure);
  EXPECT_CELL(Memory(host).otherConsumed, 21870000u);
}

TEST(HostMemoryRecords, EachFileCostsItsCells) {
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
    EXPECT_NE(file.cell(Memory(host)), kNoFigure) << file.file;
    host.Write(file.file, file.garbage);
    EXPECT_EQ(file.cell(Memory(host)), kNoFigure) << file.file;
    EXPECT_CELL(Memory(host).discarded, 0u);
    host.Forbid(file.file);
    {
      OrdinaryUser user;
      EXPECT_EQ(file.cell(Memory(host)), kNoFigure) << file.file;
    }
    host.Remove(file.file);
    EXPECT_EQ(file.cell(Memory(host)), kNoFigure) << file.file;
  }
}

// A zone with the watermarks 40, 80 and 120 KB, and a promo watermark of 160 KB if the kernel shows one.
std::string Zone(bool tellsPromo) {
  return std::string("Node 0, zone   Normal\n  pages free     5\n        min      10\n        low      20\n") +
         "        high     30\n" + (tellsPromo ? "        promo    40\n" : "") +
         "        present  100\n        managed  90\n        protection: (0, 0)\n" +
         "  pagesets\n    cpu: 0\n              high:     1\n";
}

std::string Available(const std::string &amount) { return "MemTotal: 400 kB\nMemAvailable: " + amount + " kB\n"; }

TEST(HostMemoryRecords, StateByAvailableMemory) {
  const struct {
    const char *available;
    uint32_t state;
  } states[] = {{"360", 0}, {"160", 0}, {"159", 1}, {"120", 1}, {"119", 2},        {"80", 2},
                {"79", 3},  {"40", 3},  {"39", 4},  {"0", 4},   {"x", kNoFigure32}};
  SavedHost host;
  for (const bool tellsPromo : {true, false}) {
    for (const auto &state : states) {
      host.Write("proc/zoneinfo", Zone(tellsPromo));
      host.Write("proc/meminfo", Available(state.available));
      EXPECT_CELL(Global(host).memState, state.state) << state.available;
    }
  }
  host.Remove("proc/zoneinfo");
  EXPECT_CELL(Global(host).memState, kNoFigure32);
  EXPECT_CELL(Global(host).minFree, kNoFigure);
}

TEST(HostMemoryRecords, StateByPressure) {
  const struct {
    int some, full;
    uint32_t state;
  } states[] = {{0, 0, 0}, {9, 9, 0}, {10, 0, 2}, {90, 9, 2}, {90, 10, 3}, {90, 59, 3}, {90, 60, 4}};
  SavedHost host;
  host.Write("proc/zoneinfo", Zone(true));
  host.Write("proc/meminfo", Available("360"));
  EXPECT_CELL(Global(host).memState, 0u) << "a kernel that does not measure pressure";
  for (const auto &state : states) {
    host.Write("proc/pressure/memory", "some avg10=" + std::to_string(state.some) + ".99 avg60=0.00\nfull avg10=" +
                                           std::to_string(state.full) + ".99 avg60=0.00\n");
    EXPECT_CELL(Global(host).memState, state.state) << state.some << " " << state.full;
  }
  host.Write("proc/pressure/memory", "some x\nfull x\n");
  EXPECT_CELL(Global(host).memState, 0u);
  host.Write("proc/meminfo", Available("90"));
  EXPECT_CELL(Global(host).memState, 2u);
}

TEST(HostMemoryRecords, Transitions) {
  SavedHost host("two-nodes.host");
  const struct {
    const char *state;
    uint32_t higher, lower;
  } states[] = {{"high", 0, 7}, {"clear", 7, 7}, {"soft", 7, 7}, {"hard", 7, 2}, {"low", 2, 0}};
  for (const auto &state : states) {
    EXPECT_CELL(Transitions(host, state.state).toHigherCount, state.higher) << state.state;
    EXPECT_CELL(Transitions(host, state.state).toLowerCount, state.lower) << state.state;
  }
  for (const char *other : {"unknown", "", "High"}) {
    EXPECT_EQ(host.ask().Status(nodes::sched_globalStats_memory_stateTransitions, {other}), HVC_NOT_FOUND) << other;
  }
}

// Background reclaim of cached files delays no process.
TEST(HostMemoryRecords, ReadingALargeFileChangesNothing) {
  SavedHost host;
  host.Write("proc/zoneinfo", Zone(true));
  host.Write("proc/meminfo", "MemTotal: 400 kB\nMemFree: 20 kB\nMemAvailable: 300 kB\n");
  host.Write("proc/vmstat", "pageoutrun 109\nkswapd_high_wmark_hit_quickly 76\nallocstall_normal 0\noom_kill 0\n");
  EXPECT_CELL(Global(host).memState, 0u);
  for (const char *state : {"high", "clear", "soft", "hard", "low"}) {
    EXPECT_CELL(Transitions(host, state).toHigherCount, 0u) << state;
    EXPECT_CELL(Transitions(host, state).toLowerCount, 0u) << state;
  }
}

TEST(HostMemoryRecords, ALowerStateThatTheHostIsIn) {
  SavedHost host("two-nodes.host");
  host.Write("proc/zoneinfo", Zone(true));
  host.Write("proc/meminfo", Available("100"));
  EXPECT_CELL(Transitions(host, "high").toLowerCount, 7u);
  EXPECT_CELL(Transitions(host, "clear").toHigherCount, 6u);
  EXPECT_CELL(Transitions(host, "soft").toHigherCount, 6u);
  EXPECT_CELL(Transitions(host, "hard").toHigherCount, 7u);
  host.Write("proc/vmstat", "allocstall_normal 0\n");
  EXPECT_CELL(Transitions(host, "high").toLowerCount, 1u) << "nobody had to wait yet";
  EXPECT_CELL(Transitions(host, "clear").toHigherCount, 0u);
  EXPECT_CELL(Transitions(host, "soft").toLowerCount, 0u);
  host.Remove("proc/vmstat");
  EXPECT_CELL(Transitions(host, "clear").toLowerCount, 1u);
  host.Write("proc/vmstat", "oom_kill 99999999999\nallocstall_dma x\n");
  EXPECT_CELL(Transitions(host, "hard").toLowerCount, kNoFigure32) << "more than the cell takes";
  EXPECT_CELL(Transitions(host, "soft").toLowerCount, kNoFigure32);
}

TEST(HostMemoryRecords, NumberOfVms) {
  SavedHost host("two-nodes.host");
  EXPECT_CELL(host.ask().Record(nodes::sched_globalStats_numVMs).numVMs, 1u);
  host.Remove("proc/200");
  EXPECT_CELL(host.ask().Record(nodes::sched_globalStats_numVMs).numVMs, 0u);
  SavedHost listed("two-nodes.host");
  listed.ask().Members(0);
  EXPECT_CELL(listed.ask().Record(nodes::sched_globalStats_numVMs).numVMs, 1u);
  EXPECT_EQ(listed.Opens("proc/200/status"), 1) << "the listing knows it";
}

}  // namespace
}  // namespace platkit
