// lpool-stats: the kernel's pools of large pages, node by node: the node's page-sharing pool, then those of the virtual
// machines.
#include <cstdio>

#include "platkit/nodes.h"
#include "platkit/records.h"
#include "platkit/warning.h"
#include "src/nodal/failure.h"
#include "src/reports/host_report.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/report_row.h"

namespace kestrel {
namespace {

struct LPoolRow {
  const char *name;
  uint32_t nodeID;
  LPoolStatsRecord pool;
};

using enum Conversion;
using enum FigureSum;
using Row = LPoolRow;

// The descriptions are known by their slips, which stay.
constinit ColumnDesc columns[] = {
    {"name", "Large page pool name", 15, kS, kInTotal | kMandatory, PLAIN(name)},
    {"nodeID", "Home memory node the pool", 7, kU, kPlain, PLAIN(nodeID)},
    {"nrLPages", "# of large pages in the pool", 16, kU, kInTotal, PLAIN(pool.nrLPages).Sum(kAdd)},
    {"nrFreeSPages", "# of small pages free", 16, kU, kInTotal, PLAIN(pool.nrFreeSPages).Sum(kAdd)},
    {"nrSPageAllocs", "Total small page alloc count", 16, kLu, kInTotal, PLAIN(pool.nrSPageAllocs).Sum(kAdd)},
    {"nrSPageFrees", "Total small page free count", 16, kLu, kInTotal, PLAIN(pool.nrSPageFrees).Sum(kAdd)},
    {"nrReapAttempts", "Total reap attemts", 16, kLu, kInTotal, PLAIN(pool.nrReapAttempts).Sum(kAdd)},
    {"nrSPagesReaped", "Total number of small pages reaped", 16, kLu, kInTotal, PLAIN(pool.nrSPagesReaped).Sum(kAdd)},
    {"nrDefragAttempts", "Total large page defrag attempts", 16, kLu, kInTotal, PLAIN(pool.nrDefragAttempts).Sum(kAdd)},
    {"nrDefragCancelled", "Total defrag attempts cancelled", 16, kLu, kInTotal,
     PLAIN(pool.nrDefragCancelled).Sum(kAdd)},
    {"nrDefragReaped", "Total defrag attempts reaped", 16, kLu, kInTotal, PLAIN(pool.nrDefragReaped).Sum(kAdd)},
    {"nrLPagesDefragged", "Total number of large pages defragged", 16, kLu, kInTotal,
     PLAIN(pool.nrLPagesDefragged).Sum(kAdd)},
    // A peak of single pages, yet its total is the sum over the pools.
    {"peakDefragAttempts", "Peak defrag attempts for any large page", 16, kLu, kInTotal,
     PLAIN(pool.peakDefragAttempts).Sum(kAdd)},
    {"nrCachehit", "Hit count in lpage victim cache", 16, kLu, kInTotal, PLAIN(pool.nrCachehit).Sum(kAdd)},
};

constinit Row totals = {.name = "Total", .nodeID = 255, .pool = {}};

void LPoolPrintRow(const Row &row, bool total, bool csv) { PrintFigures(columns, csv, total, &row, ReportUnit::kKB); }

void PutPool(const Row &row, bool csv) {
  LPoolPrintRow(row, false, csv);
  SumFigures(columns, &row, &totals);
}

// Reads the record of a pool. Both kinds of pool fail with the message of a VM's.
HVC_ReturnStatus ReadPool(uint32_t node, const NODAL_ParamList *arguments, LPoolStatsRecord &pool) {
  const HVC_ReturnStatus status = ReadRecord(node, arguments, pool);
  WarnOfFailure("KestrelGetVmPoolStats", status, {});
  return status;
}

// Starts the arguments of the step of that name with the node; null, reported, on failure.
ParamList MakeNodeArguments(const char *step, uint32_t capacity, uint32_t node) {
  ParamList arguments = MakeArgumentsFor(step, capacity);
  if (arguments == nullptr) return nullptr;
  const HVC_ReturnStatus status = NODAL_ParamListAddInt(arguments.get(), node);
  if (status == HVC_OK) return arguments;
  Warning("%s: NODAL_ParamListAddInt() failure, error code: %u\n", step, status);
  return nullptr;
}

// A pool that cannot be read is reported and left out. The next one may be fine.
void PutPSharePool(uint32_t node, bool csv) {
  const ParamList arguments = MakeNodeArguments("KestrelGetPSharePoolStats", 1, node);
  if (arguments == nullptr) return;
  char name[128];
  std::snprintf(name, sizeof name, "%s%u", "pshare-", node);
  Row row = {.name = name, .nodeID = node, .pool = {}};
  if (ReadPool(NODAL_NODE_memory_lpage_nodeList_psharePool, arguments.get(), row.pool) == HVC_OK) PutPool(row, csv);
}

void PutVmPool(uint32_t node, const char *name, bool csv) {
  const ParamList arguments = MakeNodeArguments("KestrelGetVmPoolStats", 2, node);
  if (arguments == nullptr) return;
  const HVC_ReturnStatus status = NODAL_ParamListAddString(arguments.get(), name);
  if (status != HVC_OK) {
    Warning("KestrelGetVmPoolStats: NODAL_ParamListAddString() failure, error code: %u\n", status);
    return;
  }
  Row row = {.name = name, .nodeID = node, .pool = {}};
  if (ReadPool(NODAL_NODE_memory_lpage_nodeList_vmPools, arguments.get(), row.pool) == HVC_OK) PutPool(row, csv);
}

// The walk's own failures end it, whatever their status was.
HVC_ReturnStatus EndWalk(const char *message) {
  Warning("%s\n", message);
  return HVC_FAILURE;
}

HVC_ReturnStatus PutVmPools(uint32_t node, uint32_t vmCount, bool csv) {
  ParamList arguments = MakeNodeArguments("KestrelTraverseLPools", 2, node);
  if (arguments == nullptr) return HVC_FAILURE;
  NODAL_ParamList *listed = nullptr;
  const HVC_ReturnStatus status =
      NODAL_GetInstanceListAllocHint(NODAL_NODE_memory_lpage_nodeList_vmPools, arguments.get(), vmCount, &listed);
  arguments.reset();
  if (status != HVC_OK) return EndWalk("KestrelTraverseLPools: NODAL_GetInstanceListAllocHint() failure");

  const ParamList names(listed);
  for (uint32_t i = 0; i < NODAL_ParamListUsedCount(names.get()); ++i) {
    const char *name = nullptr;
    if (NODAL_ParamListGetString(names.get(), i, &name) != HVC_OK) {
      return EndWalk("KestrelTraverseLPools: NODAL_ParamListGetString() failure");
    }
    PutVmPool(node, name, csv);
  }
  return HVC_OK;
}

// The walk's name has two spellings in its messages: without its second e while it finds out what there is.
HVC_ReturnStatus KestrelTraverseLPools(bool csv) {
  MemInfoRecord memInfo = {};
  if (ReadRecord(NODAL_NODE_memory_memInfo, nullptr, memInfo) != HVC_OK) {
    return EndWalk("KestrelTraversLPools: NODAL_Get hardwareInfo failure");
  }
  NumVMsRecord vms = {};
  if (ReadRecord(NODAL_NODE_sched_globalStats_numVMs, nullptr, vms) != HVC_OK) {
    return EndWalk("KestrelTraversLPools: NODAL_Get numVMs failure");
  }
  for (uint32_t node = 0; node < memInfo.numNodes; ++node) {
    PutPSharePool(node, csv);
    const HVC_ReturnStatus status = PutVmPools(node, vms.numVMs, csv);
    if (status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus KestrelLPoolStatsReport(const Report &report, int argc, char **argv) {
  HostRun run;
  HVC_ReturnStatus status = StartHostReport(report, argc, argv, run);
  if (status != HVC_OK) return status;

  const ReportOptions &options = run.options;
  if (!options.csv) Banner("LPAGE POOL STATS", 43).SelectedColumns(columns);
  TablePrintHead(columns, options.csv);
  status = KestrelTraverseLPools(options.csv);
  if (status != HVC_OK) return status;
  TablePrintSeparator(columns, options.csv);
  LPoolPrintRow(totals, true, options.csv);
  EndHostReport(columns, options);
  if (options.verbose) {
    std::puts("Displayed stats are either in small 4K page (SPage) or large 2M page (LPage) units");
  }
  return HVC_OK;
}

}  // namespace

constinit const Report kLPoolStats = {
    .name = "lpool-stats",
    .summary = "the pools of large pages of each NUMA node",
    .options = {"s:vq"},
    .columns = columns,
    .sums = Sums::kTotalRow,
    .run = KestrelLPoolStatsReport,
};

}  // namespace kestrel
