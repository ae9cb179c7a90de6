// The failures of the host-wide reports.
#include "tests/faults/failure_rows.h"
#include "tests/faults/hosts.h"
#include "tests/faults/machine_hosts.h"

namespace faults {
namespace {

using enum Effect;

constexpr HVC_ReturnStatus kNotFound = 0x0bad0003;

constexpr char kCreate[] = "NODAL_ParamListCreate";
constexpr char kAddInt[] = "NODAL_ParamListAddInt";
constexpr char kAddString[] = "NODAL_ParamListAddString";
constexpr char kGet[] = "NODAL_Get";
constexpr char kList[] = "NODAL_GetInstanceListAlloc";
constexpr char kGetString[] = "NODAL_ParamListGetString";
constexpr char kGetInt32[] = "NODAL_ParamListGetInt32";

// Both reports of page sharing.

FailureTable PShare(const std::string &step) {
  return {{kCreate, "memory_pshare_stats", 1, {{step + ": NODAL_ParamListCreate() failure\n"}}, kEndsRun, 1},
          {kGet, "memory_pshare_stats", 1, {}, kEndsRun, 1}};
}

// Buddies. Messages about a memory node or its list have no newline.

constexpr char kMemNodes[] = "memory_memNodes";
constexpr char kBuddy[] = "system_buddy_comprehensive";

FailureTable Buddies() {
  const std::string names = ListOf("system_buddy");
  return {
      {"NODAL_ParamListCreateAndAllocateParams", names, 1, {}, kEndsTable},
      {"NODAL_GetInstanceList", names, 1, {}, kEndsTable},
      {kGetString, names, 0, {}, kEndsScan},
      {kCreate, kMemNodes, 0, {{"KestrelMemNode2NUMANode: NODAL_ParamListCreate() failure\n"}}, kLosesBuddy},
      {kAddInt, kMemNodes, 0, {{"The param list for memNode <1> could not be created: <hex>"}}, kLosesBuddy},
      {kGet, kMemNodes, 0, {{"Error <hex> while reading /memory/memNodes/<1>"}}, kLosesBuddy},
      {kCreate, kBuddy, 0, {{"KestrelBuddyGetStats: NODAL_ParamListCreate() failure\n"}}, kEndsRun, 1},
      {kAddString, kBuddy, 0, {{"The param list for buddy <1> could not be created: <hex>"}}, kEndsRun, 1},
      {kGet, kBuddy, 0, {{"Error <hex> while reading <1>/comprehensive"}}, kEndsRun, 1},
  };
}

FailureTable Comprehensive() {
  constexpr char kMemory[] = "memory_comprehensive";
  constexpr char kGlobal[] = "sched_globalStats_memory_kestrel";
  constexpr char kTransitions[] = "sched_globalStats_memory_stateTransitions";
  const Messages noGlobalList = {{"KestrelCompGetGlobalKestrel: NODAL_ParamListCreate() failure\n"}};
  return {{kCreate, kMemory, 1, {{"KestrelCompGetMemMapStats: NODAL_ParamListCreate() failure\n"}}, kEndsRun, 1},
          {kGet, kMemory, 1, {}, kEndsRun, 1},
          {kCreate, kGlobal, 1, noGlobalList, kEndsRun, 1},
          {kGet, kGlobal, 1, {}, kEndsRun, 1},
          {kCreate, kTransitions, 0, noGlobalList, kEndsRun, 1},
          {kAddString, kTransitions, 0, {}, kEndsRun, 1},
          {kGet, kTransitions, 0, {}, kEndsRun, 1}};
}

// Large-page pools. The message for a page-sharing pool names the function for VM pools.

constexpr char kShared[] = "memory_lpage_nodeList_psharePool";
constexpr char kPool[] = "memory_lpage_nodeList_vmPools";

FailureTable LargePages() {
  const std::string pools = ListOf(kPool);
  const Messages unread = {{"KestrelGetVmPoolStats() failure, error code: <number>\n"}};
  const auto walk = [](const std::string &what) { return Messages{{"KestrelTraverseLPools: " + what + "\n"}}; };
  const auto shared = [](const std::string &what) { return Messages{{"KestrelGetPSharePoolStats: " + what + "\n"}}; };
  const auto pool = [](const std::string &what) { return Messages{{"KestrelGetVmPoolStats: " + what + "\n"}}; };
  const std::string notAdded = "NODAL_ParamListAddInt() failure, error code: <number>";
  return {
      {kGet, "memory_memInfo", 1, {{"KestrelTraversLPools: NODAL_Get hardwareInfo failure\n"}}, kEndsRun, 1},
      {kGet, "sched_globalStats_numVMs", 1, {{"KestrelTraversLPools: NODAL_Get numVMs failure\n"}}, kEndsRun, 1},
      {kCreate, kShared, 0, shared("NODAL_ParamListCreate() failure"), kLosesRow},
      {kAddInt, kShared, 0, shared(notAdded), kLosesRow},
      {kGet, kShared, 0, unread, kLosesRow},
      {kCreate, pools, 0, walk("NODAL_ParamListCreate() failure"), kEndsRun, 1},
      {kAddInt, pools, 0, walk(notAdded), kEndsRun, 1},
      {"NODAL_GetInstanceListAllocHint", pools, 0, walk("NODAL_GetInstanceListAllocHint() failure"), kEndsRun, 1},
      {kGetString, pools, 0, walk("NODAL_ParamListGetString() failure"), kEndsRun, 1},
      {kCreate, kPool, 0, pool("NODAL_ParamListCreate() failure"), kLosesRow},
      {kAddInt, kPool, 0, pool(notAdded), kLosesRow},
      {kAddString, kPool, 0, pool("NODAL_ParamListAddString() failure, error code: <number>"), kLosesRow},
      {kGet, kPool, 0, unread, kLosesRow},
  };
}

// Heaps. The run succeeds after any failure.

constexpr char kHeap[] = "system_heaps_stats";

FailureTable Heaps() {
  const std::string heaps = ListOf("system_heaps");
  const auto says = [](const std::string &what) { return Messages{{"KestrelHeapGetMemMapStats: " + what + "\n"}}; };
  return {
      {kList, heaps, 1, says("NODAL_GetInstanceListAlloc() for heapList failure"), kEndsRun},
      {kCreate, kHeap, 1, says("NODAL_ParamListCreate() for heapParam failure"), kEndsRun},
      {kGetString, heaps, 0, says("NODAL_ParamListGetString() failure"), kEndsRun},
      {kAddString, kHeap, 0, says("NODAL_ParamListAddString() failure"), kEndsRun},
      {.operation = kGet, .place = kHeap, .effect = kLosesRow, .only = {kNotFound}},
      {kGet, kHeap, 0, says("NODAL_Get() failure"), kEndsRun},
      // The name stays in the argument list, so each later read has one argument too many.
      {.operation = "NODAL_ParamListRemoveLastParam", .place = kHeap, .effect = kEndsTable, .readsOn = true},
  };
}

// Persistent memory. A failure ends the table, and the run succeeds.

constexpr char kStoreInfo[] = "memory_pmem_volumes_regionStore_info";
constexpr char kIsClean[] = "memory_pmem_volumes_regionStore_isClean";
constexpr char kRegionInfo[] = "memory_pmem_volumes_regionStore_regions_info";
constexpr char kExtents[] = "memory_pmem_volumes_extents";
constexpr char kNuma[] = "memory_pmem_volumes_regionStore_regions_numaAllocInfo";

const std::string kVolumes = ListOf("memory_pmem_volumes");
const std::string kRegions = ListOf("memory_pmem_volumes_regionStore_regions");

// The messages of a failed operation and of the surrounding steps.
Messages Failing(const std::vector<std::string> &parts) {
  Messages messages;
  for (const std::string &part : parts)
    messages.push_back({part + " failure\n"});
  return messages;
}

FailureRow Ends(const std::string &operation, const std::string &place, const std::vector<std::string> &parts = {}) {
  return {operation, place, 0, Failing(parts), kEndsTable};
}

// The report ignores a failure to read the name. Without a name, the next call refuses its null argument.
FailureRow IgnoredName(const std::string &place, const std::string &step) {
  FailureRow row = Ends(kGetString, place, {step + ": NODAL_ParamListAddString"});
  row.isIgnored = true;
  return row;
}

FailureTable RegionStores() {
  constexpr char kInfo[] = "memory_pmem_volumes_info";
  const std::string info = "PMemRegionStoreReport: PMemGetVolumeInfo";
  const std::string store = "PMemRegionStoreReport: PMemGetRegionStoreInfo";
  return {Ends(kList, kVolumes),
          {kGetString, kVolumes, 0, {{"PMemRegionStoreReport: NODAL_ParamListGetString Failure\n"}}, kEndsTable},
          Ends(kCreate, kInfo, {"PMemGetVolumeInfo: NODAL_ParamListCreate", info}),
          Ends(kAddString, kInfo, {"PMemGetVolumeInfo: NODAL_ParamListAddString", info}),
          Ends(kGet, kInfo, {info}),
          Ends(kCreate, kStoreInfo, {"PMemGetRegionStoreInfo: NODAL_ParamListCreate", store}),
          Ends(kAddString, kStoreInfo, {"PMemGetRegionStoreInfo: NODAL_ParamListAddString", store}),
          Ends(kGet, kStoreInfo, {"PMemGetRegionStoreInfo: NODAL_Get", store}),
          Ends(kGet, kIsClean, {store})};
}

FailureTable Regions() {
  const std::string region = "PMemRegionsReport: GetRegionsInfo";
  return {Ends(kList, kVolumes),
          Ends(kGetString, kVolumes, {"PMemRegionsReport: NODAL_ParamListGetString"}),
          Ends(kCreate, kRegions, {"PMemRegionsReport: NODAL_ParamListCreate"}),
          Ends(kAddString, kRegions, {"PMemRegionsReport: NODAL_ParamListAddString"}),
          Ends(kList, kRegions),
          Ends(kGetString, kRegions, {"PMemRegionsReport: NODAL_ParamListGetString"}),
          Ends(kCreate, kRegionInfo, {"GetRegionsInfo: NODAL_ParamListCreate", region}),
          Ends(kAddString, kRegionInfo, {"GetRegionsInfo: NODAL_ParamListAddString", region}),
          Ends(kGet, kRegionInfo, {"GetRegionsInfo: NODAL_Get", region})};
}

FailureTable Extents() {
  const std::string extents = ListOf(kExtents);
  const std::string extent = "PMemExtentsReport: GetExtentsInfo";
  return {Ends(kList, kVolumes),
          IgnoredName(kVolumes, "PMemExtentsReport"),
          Ends(kCreate, extents, {"PMemExtentsReport: NODAL_ParamListCreate"}),
          Ends(kAddString, extents, {"PMemExtentsReport: NODAL_ParamListAddString"}),
          Ends(kList, extents),
          Ends(kGetInt32, extents, {"PMemExtentsReport: NODAL_ParamListGetInt32"}),
          Ends(kCreate, kExtents, {"GetExtentsInfo: NODAL_ParamListCreate", extent}),
          Ends(kAddString, kExtents, {"GetExtentsInfo: NODAL_ParamListAddString", extent}),
          Ends(kAddInt, kExtents, {"GetExtentsInfo: NODAL_ParamListAddInt", extent}),
          Ends(kGet, kExtents, {"GetExtentsInfo: NODAL_Get", extent})};
}

FailureTable RegionsOnNodes() {
  const std::string nodes = ListOf(kNuma);
  const std::string node = "PMemRegionsNumaReport: GetRegionsNumaInfo";
  return {Ends(kList, kVolumes),
          IgnoredName(kVolumes, "PMemRegionNumaReport"),
          Ends(kCreate, kRegions, {"PMemRegionNumaReport: NODAL_ParamListCreate"}),
          Ends(kAddString, kRegions, {"PMemRegionNumaReport: NODAL_ParamListAddString"}),
          Ends(kList, kRegions),
          IgnoredName(kRegions, "PMemRegionNumaReport"),
          Ends(kCreate, nodes, {"PMemRegionNumaReport: NODAL_ParamListCreate"}),
          Ends(kAddString, nodes, {"PMemRegionNumaReport: NODAL_ParamListAddString"}),
          Ends(kList, nodes),
          Ends(kGetInt32, nodes, {"PMemRegionsNumaReport: NODAL_ParamListGetInt32"}),
          Ends(kCreate, kNuma, {"GetRegionsNumaInfo: NODAL_ParamListCreate", node}),
          Ends(kAddString, kNuma, {"GetRegionsNumaInfo: NODAL_ParamListAddString", node}),
          Ends(kAddInt, kNuma, {"GetRegionsNumaInfo: NODAL_ParamListAddInt", node}),
          Ends(kGet, kNuma, {"GetRegionsNumaInfo: NODAL_Get", node})};
}

}  // namespace

std::vector<Report> HostReports() {
  return {{.name = "PShareStats",
           .host = SharingHost,
           .arguments = {"-r", "pshare-stats"},
           .table = PShare("KestrelPShareGetStats"),
           .header = Header::kAfterReading,
           .hasOwners = false},
          {.name = "PShareHintStats",
           .host = HintsHost,
           .arguments = {"-r", "pshareHint-stats"},
           .table = PShare("KestrelPShareHintGetStats"),
           .header = Header::kAfterReading,
           .hasOwners = false},
          {.name = "BuddyStats",
           .host = BuddyOwnersHost,
           .arguments = {"-r", "buddy-stats"},
           .table = Buddies(),
           .rowReads = {kBuddy},
           .lookedUp = {"memmap-01-hi", "memmap-00-hi", "memmap-01-lo", "memmap-00-lo"},
           .total = Total::kAdded,
           .sharedColumns = {"name", "memNode", "numaNode"}},
          {.name = "CompStats",
           .host = ComprehensiveHost,
           .arguments = {"-r", "comp-stats"},
           .table = Comprehensive(),
           .hasOwners = false},
          {.name = "LPoolStats",
           .host = LargePageOwnersHost,
           .arguments = {"-r", "lpool-stats"},
           .table = LargePages(),
           .rowReads = {kShared, kPool},
           .total = Total::kAdded,
           .sharedColumns = {"nodeID"}},
          {.name = "HeapStats",
           .host = HeapOwnersHost,
           .arguments = {"-r", "heap-stats"},
           .table = Heaps(),
           .rowReads = {kHeap},
           .total = Total::kOfHeaps,
           .header = Header::kAfterReading},
          {.name = "PMemRegionStoreStats",
           .host = PMemOwnersHost,
           .arguments = {"-r", "pmem-regionstore-stats"},
           .table = RegionStores(),
           .rowReads = {kIsClean}},
          {.name = "PMemRegionStats",
           .host = PMemOwnersHost,
           .arguments = {"-r", "pmem-region-stats"},
           .table = Regions(),
           .rowReads = {kRegionInfo}},
          {.name = "PMemExtentStats",
           .host = PMemOwnersHost,
           .arguments = {"-r", "pmem-extent-stats"},
           .table = Extents(),
           .rowReads = {kExtents}},
          {.name = "PMemRegionNumaStats",
           .host = PMemOwnersHost,
           .arguments = {"-r", "pmem-region-numa-stats"},
           .table = RegionsOnNodes(),
           .rowReads = {kNuma},
           .sharedColumns = {"numaNode"}}};
}

}  // namespace faults
