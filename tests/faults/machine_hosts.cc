#include "tests/faults/machine_hosts.h"

#include <cstring>

namespace faults {

using testing_support::Instance;
using testing_support::SetText;
using testing_support::StandinHost;

namespace {

// A record with all bits set, so that a test notices if a report reads a field that it should not.
template <typename Record>
Record AllOnes() {
  Record record;
  std::memset(&record, 0xff, sizeof record);
  return record;
}

StateTransitionsRecord Transitions(uint32_t toHigher, uint32_t toLower) {
  auto record = AllOnes<StateTransitionsRecord>();
  record.toHigherCount = toHigher;
  record.toLowerCount = toLower;
  return record;
}

MemNodeRecord OnNumaNode(uint8_t node) {
  auto record = AllOnes<MemNodeRecord>();
  record.numaNode = node;
  return record;
}

RegionStoreRecord RegionStore(const Figures &figures) {
  auto record = AllOnes<RegionStoreRecord>();
  record.allocatedBlocks = figures.Narrow(1);
  record.reservedBlocks = figures.Narrow(2);
  record.availableBlocks = figures.Narrow(3);
  record.totalRegions = figures.Narrow(4);
  record.freeRegions = figures.Narrow(5);
  record.totalBlocks = figures.Narrow(6);
  return record;
}

RegionRecord Region(const Figures &figures, uint32_t flags) {
  auto record = AllOnes<RegionRecord>();
  record.size = figures.Wide(0) * 1024;
  record.reservedBlocks = figures.Narrow(1);
  record.flags = flags;
  record.openCount = figures.Narrow(2);
  record.allocatedBlocks = figures.Narrow(3);
  record.managementTag = static_cast<uint16_t>(figures.Narrow(4));
  record.numaAffinityMask = figures.Wide(0);
  return record;
}

ExtentRecord Extent(const Figures &figures) {
  return {.startBlock = figures.Narrow(1),
          .endBlock = figures.Narrow(2),
          .startMPN = figures.Narrow(3),
          .endMPN = figures.Narrow(4),
          .numaNode = figures.Narrow(5)};
}

RegionNumaRecord OnNode(uint32_t node, uint64_t blocks) { return {.numaNode = node, .allocatedBlocks = blocks}; }

}  // namespace

PShareStatsRecord HintFigures() {
  auto record = AllOnes<PShareStatsRecord>();
  record.hintsActive = 39995;
  record.hintsAdded = 70001;
  record.hintsRemoved = 30003;
  record.lpageHintsAdded = 20005;
  record.lpageHintsRemoved = 5007;
  return record;
}

StandinHost HintsHost() { return StandinHost().AddRecord("memory_pshare_stats", {}, HintFigures()); }

BuddyComprehensiveRecord BuddyFigures(const Figures &figures) {
  auto record = AllOnes<BuddyComprehensiveRecord>();
  for (uint32_t k = 0; k < 19; ++k) {
    record.sizes[k].free = figures.Narrow(k);
    record.sizes[k].used = figures.Narrow(500 + k);
  }
  return record;
}

StandinHost BuddyHost() {
  return StandinHost()
      .AddList("system_buddy", {},
               {"memmap-01-hi", "heap-00-lo", "memmap-00-hi", "memmap-01-lo", "kseg-00", "memmap-00-lo"})
      .AddRecord("memory_memNodes", {0}, OnNumaNode(7))
      .AddRecord("memory_memNodes", {1}, OnNumaNode(200))
      .AddRecord("system_buddy_comprehensive", {"memmap-00-lo"}, BuddyFigures(1000))
      .AddRecord("system_buddy_comprehensive", {"memmap-00-hi"}, BuddyFigures(2000))
      .AddRecord("system_buddy_comprehensive", {"memmap-01-lo"}, BuddyFigures(3000))
      .AddRecord("system_buddy_comprehensive", {"memmap-01-hi"}, BuddyFigures(4000));
}

ComprehensiveRecord ComprehensiveFigures() {
  return {.total = 16777217,
          .managedByMemMap = 16000001,
          .reliableMem = 20480,
          .discarded = 1,
          .buddyOvhd = 1025,
          .kernelCode = 2050,
          .dataAndHeap = 30004,
          .hvcClientConsumed = 40005,
          .otherConsumed = 50006,
          .rsvdLow = 4,
          .free = 6000007};
}

GlobalMemoryRecord GlobalMemoryFigures() {
  auto record = AllOnes<GlobalMemoryRecord>();
  record.managedByMemSched = 15000008;
  record.minFree = 70009;
  record.memState = 2;
  return record;
}

StandinHost ComprehensiveHost() {
  constexpr char kTransitions[] = "sched_globalStats_memory_stateTransitions";
  return StandinHost()
      .AddRecord("memory_comprehensive", {}, ComprehensiveFigures())
      .AddRecord("sched_globalStats_memory_kestrel", {}, GlobalMemoryFigures())
      .AddRecord(kTransitions, {"high"}, Transitions(1001, 10))
      .AddRecord(kTransitions, {"clear"}, Transitions(20, 300))
      .AddRecord(kTransitions, {"soft"}, Transitions(4000, 50000))
      .AddRecord(kTransitions, {"hard"}, Transitions(600000, 7000000))
      .AddRecord(kTransitions, {"low"}, Transitions(80000000, 900));
}

LPoolStatsRecord LargePagesFigures(const Figures &figures) {
  auto record = AllOnes<LPoolStatsRecord>();
  record.nrLPages = figures.Narrow(1);
  record.nrFreeSPages = figures.Narrow(2);
  record.nrSPageAllocs = figures.Narrow(3);
  record.nrSPageFrees = figures.Narrow(4);
  record.nrReapAttempts = figures.Narrow(5);
  record.nrSPagesReaped = figures.Narrow(6);
  record.nrDefragAttempts = figures.Narrow(7);
  record.nrDefragCancelled = figures.Narrow(8);
  record.nrDefragReaped = figures.Narrow(9);
  record.nrLPagesDefragged = figures.Narrow(10);
  record.peakDefragAttempts = figures.Narrow(11);
  record.nrCachehit = figures.Narrow(12);
  return record;
}

StandinHost LargePagesHost() {
  constexpr char kShared[] = "memory_lpage_nodeList_psharePool";
  constexpr char kPools[] = "memory_lpage_nodeList_vmPools";
  auto memInfo = AllOnes<MemInfoRecord>();
  memInfo.numNodes = 2;
  return StandinHost()
      .AddRecord("memory_memInfo", {}, memInfo)
      .AddRecord("sched_globalStats_numVMs", {}, NumVMsRecord{3})
      .AddRecord(kShared, {0}, LargePagesFigures(1000))
      .AddList(kPools, {0}, {"web", "a-pool-with-a-long-name", "db"})
      .AddRecord(kPools, {0, "web"}, LargePagesFigures(2000))
      .AddRecord(kPools, {0, "a-pool-with-a-long-name"}, LargePagesFigures(3000))
      .AddRecord(kPools, {0, "db"}, LargePagesFigures(4000))
      .AddRecord(kShared, {1}, LargePagesFigures(5000))
      .AddList(kPools, {1}, {"web", "mail"})
      .AddRecord(kPools, {1, "web"}, LargePagesFigures(6000))
      .AddRecord(kPools, {1, "mail"}, LargePagesFigures(7000));
}

HeapStatsRecord HeapFigures(const std::string &name, const Figures &figures) {
  auto record = AllOnes<HeapStatsRecord>();
  SetText(record.name, name);
  record.dynGrow = figures.Byte(0);
  record.lowerLimit = figures.Narrow(1);
  record.upperLimit = figures.Narrow(2);
  record.reserved = figures.Byte(200);
  record.numRanges = figures.Narrow(3);
  record.dlMallocOvhd = figures.Narrow(4);
  record.size = figures.Times(10).Narrow(5);
  record.initial = figures.Narrow(6);
  record.avail = figures.Times(3).Narrow(7);
  record.pctFreeOfCur = figures.Narrow(8);
  record.max = figures.Times(20).Narrow(9);
  record.maxAvail = figures.Narrow(10);
  record.pctFreeOfMax = figures.Narrow(11);
  record.lowPctFreeOfMax = figures.Narrow(12);
  record.numSuccAllocs = figures.Narrow(13);
  record.numFailAllocs = figures.Narrow(14);
  record.avgAllocSize = figures.Narrow(15);
  record.numReqsPerGrowth = figures.Narrow(16);
  record.numGrowthOps = figures.Narrow(17);
  record.numShrinkOps = figures.Narrow(18);
  return record;
}

StandinHost HeapsHost() {
  return StandinHost()
      .AddList("system_heaps", {}, {"heap-1", "heap-2", "heap-3"})
      .AddRecord("system_heaps_stats", {"heap-1"}, HeapFigures("main", 1000))
      .AddRecord("system_heaps_stats", {"heap-2"}, HeapFigures("slab", 2000))
      .AddRecord("system_heaps_stats", {"heap-3"}, HeapFigures("net", 3000));
}

StandinHost PMemHost() {
  constexpr char kInfo[] = "memory_pmem_volumes_info";
  constexpr char kStore[] = "memory_pmem_volumes_regionStore_info";
  constexpr char kClean[] = "memory_pmem_volumes_regionStore_isClean";
  constexpr char kRegions[] = "memory_pmem_volumes_regionStore_regions";
  constexpr char kRegion[] = "memory_pmem_volumes_regionStore_regions_info";
  constexpr char kNuma[] = "memory_pmem_volumes_regionStore_regions_numaAllocInfo";
  constexpr char kExtents[] = "memory_pmem_volumes_extents";
  StandinHost host;
  host.AddList("memory_pmem_volumes", {}, {"vol-1", "vol-2", "vol-3"});
  for (const char *volume : {"vol-1", "vol-2", "vol-3"})
    host.AddRecord(kInfo, {volume}, PMemVolumeRecord{});

  host.AddRecord(kStore, {"vol-1"}, RegionStore(1000)).AddRecord(kClean, {"vol-1"}, RegionStoreCleanRecord{1});
  host.AddRecord(kStore, {"vol-2"}, RegionStore(2000)).AddRecord(kClean, {"vol-2"}, RegionStoreCleanRecord{0});
  host.AddRecord(kStore, {"vol-3"}, RegionStore(3000)).AddRecord(kClean, {"vol-3"}, RegionStoreCleanRecord{0x80});

  host.AddList(kRegions, {"vol-1"}, {"reg-a", "reg-b"});
  host.AddList(kRegions, {"vol-2"}, {"reg-c"});
  host.AddList(kRegions, {"vol-3"}, {"reg-d", "reg-e"});
  host.AddRecord(kRegion, {"vol-1", "reg-a"}, Region(1100, 0x1));
  host.AddRecord(kRegion, {"vol-1", "reg-b"}, Region(1200, 0x9));
  host.AddRecord(kRegion, {"vol-2", "reg-c"}, Region(2100, 0));
  host.AddRecord(kRegion, {"vol-3", "reg-d"}, Region(3100, 0x80));
  host.AddRecord(kRegion, {"vol-3", "reg-e"}, Region(3200, 0x46));

  host.AddList(kNuma, {"vol-1", "reg-a"}, {0, 1}).AddList(kNuma, {"vol-1", "reg-b"}, {1});
  host.AddList(kNuma, {"vol-2", "reg-c"}, {0});
  host.AddList(kNuma, {"vol-3", "reg-d"}, {1}).AddList(kNuma, {"vol-3", "reg-e"}, {0, 1});
  // The node in a record differs from the node in the arguments of its read.
  host.AddRecord(kNuma, {"vol-1", "reg-a", 0}, OnNode(10, 1001));
  host.AddRecord(kNuma, {"vol-1", "reg-a", 1}, OnNode(11, 1002));
  host.AddRecord(kNuma, {"vol-1", "reg-b", 1}, OnNode(12, 1003));
  host.AddRecord(kNuma, {"vol-2", "reg-c", 0}, OnNode(20, 2001));
  host.AddRecord(kNuma, {"vol-3", "reg-d", 1}, OnNode(30, 3001));
  host.AddRecord(kNuma, {"vol-3", "reg-e", 0}, OnNode(31, 3002));
  host.AddRecord(kNuma, {"vol-3", "reg-e", 1}, OnNode(32, 3003));

  host.AddList(kExtents, {"vol-1"}, {0, 1});
  host.AddList(kExtents, {"vol-2"}, {-1});
  host.AddList(kExtents, {"vol-3"}, {5, 6});
  host.AddRecord(kExtents, {"vol-1", 0}, Extent(1000));
  host.AddRecord(kExtents, {"vol-1", 1}, Extent(1100));
  host.AddRecord(kExtents, {"vol-2", -1}, Extent(2000));
  host.AddRecord(kExtents, {"vol-3", 5}, Extent(3000));
  host.AddRecord(kExtents, {"vol-3", 6}, Extent(3100));
  return host;
}

StandinHost BuddyOwnersHost() {
  return StandinHost()
      .AddList("system_buddy", {}, {"memmap-01-hi", "heap-00-lo", "memmap-00-hi", "memmap-01-lo", "memmap-00-lo"})
      .AddRecord("memory_memNodes", {0}, OnNumaNode(7))
      .AddRecord("memory_memNodes", {1}, OnNumaNode(200))
      .AddRecord("system_buddy_comprehensive", {"memmap-00-lo"}, BuddyFigures(Figures::MultiplesOf(127)))
      .AddRecord("system_buddy_comprehensive", {"memmap-00-hi"}, BuddyFigures(Figures::MultiplesOf(131)))
      .AddRecord("system_buddy_comprehensive", {"memmap-01-lo"}, BuddyFigures(Figures::MultiplesOf(137)))
      .AddRecord("system_buddy_comprehensive", {"memmap-01-hi"}, BuddyFigures(Figures::MultiplesOf(139)));
}

StandinHost LargePageOwnersHost() {
  constexpr char kShared[] = "memory_lpage_nodeList_psharePool";
  constexpr char kPools[] = "memory_lpage_nodeList_vmPools";
  auto memInfo = AllOnes<MemInfoRecord>();
  memInfo.numNodes = 2;
  // The report generates the names of the page-sharing pools.
  return StandinHost()
      .AddRecord("memory_memInfo", {}, memInfo)
      .AddRecord("sched_globalStats_numVMs", {}, NumVMsRecord{2})
      .AddRecord(kShared, {0}, LargePagesFigures(Figures::MultiplesOf(127)))
      .AddList(kPools, {0}, {"pool-131", "pool-137"})
      .AddRecord(kPools, {0, "pool-131"}, LargePagesFigures(Figures::MultiplesOf(131)))
      .AddRecord(kPools, {0, "pool-137"}, LargePagesFigures(Figures::MultiplesOf(137)))
      .AddRecord(kShared, {1}, LargePagesFigures(Figures::MultiplesOf(139)))
      .AddList(kPools, {1}, {"pool-149"})
      .AddRecord(kPools, {1, "pool-149"}, LargePagesFigures(Figures::MultiplesOf(149)));
}

StandinHost HeapOwnersHost() {
  StandinHost host;
  host.AddList("system_heaps", {}, {"heap-127", "heap-131", "heap-137"});
  for (const uint64_t owner : {127u, 131u, 137u}) {
    const std::string name = "heap-" + std::to_string(owner);
    host.AddRecord("system_heaps_stats", {name.c_str()}, HeapFigures(name, Figures::MultiplesOf(owner)));
  }
  return host;
}

namespace {

void AddVolume(StandinHost &host, const std::vector<uint64_t> &owners) {
  uint64_t product = 1;
  for (const uint64_t owner : owners)
    product *= owner;
  const Instance volumeName = ("vol-" + std::to_string(product)).c_str();
  const std::string store = "memory_pmem_volumes_regionStore_";
  host.AddRecord("memory_pmem_volumes_info", {volumeName}, PMemVolumeRecord{});
  host.AddRecord(store + "info", {volumeName}, RegionStore(Figures::MultiplesOf(product)));
  host.AddRecord(store + "isClean", {volumeName}, RegionStoreCleanRecord{1});
  std::vector<Instance> regions, extents;
  for (const uint64_t owner : owners) {
    const Instance regionName = ("reg-" + std::to_string(owner)).c_str();
    const Figures figures = Figures::MultiplesOf(owner);
    const auto extent = static_cast<int64_t>(owner) * 2;
    regions.push_back(regionName);
    extents.emplace_back(extent);
    RegionRecord record = Region(figures, 1);
    record.size = owner * 1024;
    record.numaAffinityMask = owner * 3;
    host.AddRecord(store + "regions_info", {volumeName, regionName}, record);
    host.AddRecord("memory_pmem_volumes_extents", {volumeName, extent}, Extent(figures));
    const std::string numa = store + "regions_numaAllocInfo";
    host.AddList(numa, {volumeName, regionName}, {0, 1});
    host.AddRecord(numa, {volumeName, regionName, 0}, OnNode(0, figures.Wide(1)));
    host.AddRecord(numa, {volumeName, regionName, 1}, OnNode(1, figures.Wide(2)));
  }
  host.AddList(store + "regions", {volumeName}, regions);
  host.AddList("memory_pmem_volumes_extents", {volumeName}, extents);
}

}  // namespace

StandinHost PMemOwnersHost() {
  StandinHost host;
  host.AddList("memory_pmem_volumes", {}, {"vol-16637", "vol-19043", "vol-149"});
  AddVolume(host, {127, 131});
  AddVolume(host, {137, 139});
  AddVolume(host, {149});
  return host;
}

}  // namespace faults
