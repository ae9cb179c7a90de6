// lpool-stats: the kernel's pools of large pages. Each NUMA node has one pool for page sharing and one for each virtual
// machine.
#include <cstdio>

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
using enum FigureUnit;
using enum FigureSum;

// The spelling "attemts" and the missing "of" must not change.
constinit auto columns = ColumnsOf<LPoolRow>({
    {"name", "Large page pool name", 15, kS, [](auto &row) { return Text(row.name); }, kInTotal | kMandatory},
    {"nodeID", "Home memory node the pool", 7, kU, [](auto &row) { return row.nodeID; }},
    {"nrLPages", "# of large pages in the pool", 16, kU, [](auto &row) { return row.pool.nrLPages; }, kAdd},
    {"nrFreeSPages", "# of small pages free", 16, kU, [](auto &row) { return row.pool.nrFreeSPages; }, kAdd},
    {"nrSPageAllocs", "Total small page alloc count", 16, kLu, [](auto &row) { return row.pool.nrSPageAllocs; }, kAdd},
    {"nrSPageFrees", "Total small page free count", 16, kLu, [](auto &row) { return row.pool.nrSPageFrees; }, kAdd},
    {"nrReapAttempts", "Total reap attemts", 16, kLu, [](auto &row) { return row.pool.nrReapAttempts; }, kAdd},
    {"nrSPagesReaped", "Total number of small pages reaped", 16, kLu, [](auto &row) { return row.pool.nrSPagesReaped; },
     kAdd},
    {"nrDefragAttempts", "Total large page defrag attempts", 16, kLu,
     [](auto &row) { return row.pool.nrDefragAttempts; }, kAdd},
    {"nrDefragCancelled", "Total defrag attempts cancelled", 16, kLu,
     [](auto &row) { return row.pool.nrDefragCancelled; }, kAdd},
    {"nrDefragReaped", "Total defrag attempts reaped", 16, kLu, [](auto &row) { return row.pool.nrDefragReaped; },
     kAdd},
    {"nrLPagesDefragged", "Total number of large pages defragged", 16, kLu,
     [](auto &row) { return row.pool.nrLPagesDefragged; }, kAdd},
    // The total is the sum of the peaks.
    {"peakDefragAttempts", "Peak defrag attempts for any large page", 16, kLu,
     [](auto &row) { return row.pool.peakDefragAttempts; }, kAdd},
    {"nrCachehit", "Hit count in lpage victim cache", 16, kLu, [](auto &row) { return row.pool.nrCachehit; }, kAdd},
});

constexpr LPoolRow kTotal = {.name = "Total", .nodeID = 0, .pool = {}};

constinit ColumnSums sums;

void LPoolPrintRow(const LPoolRow &row, bool csv) {
  PrintFigures(columns, csv, false, &row, ReportUnit::kKB);
  sums.Add(columns, &row);
}

// Reads the record of a pool. The warning names the function for VM pools, even for a page-sharing pool.
HVC_ReturnStatus ReadPool(NodeRef<LPoolStatsRecord> node, const NODAL_ParamList *arguments, LPoolStatsRecord &pool) {
  const HVC_ReturnStatus status = ReadRecord(node, arguments, pool);
  WarnOfFailure("KestrelGetVmPoolStats", status, {});
  return status;
}

// Creates the arguments of the function `step`, which start with the NUMA node. On failure, warns and returns null.
ParamList MakeNodeArguments(const char *step, uint32_t capacity, uint32_t node) {
  ParamList arguments = MakeArgumentsFor(step, capacity);
  if (arguments == nullptr) return nullptr;
  const HVC_ReturnStatus status = NODAL_ParamListAddInt(arguments.get(), node);
  if (status == HVC_OK) return arguments;
  Warning("%s: NODAL_ParamListAddInt() failure, error code: %u\n", step, status);
  return nullptr;
}

// A pool that cannot be read gets a warning and no row.
void PrintPSharePool(uint32_t node, bool csv) {
  const ParamList arguments = MakeNodeArguments("KestrelGetPSharePoolStats", 1, node);
  if (arguments == nullptr) return;
  char name[128];
  std::snprintf(name, sizeof name, "%s%u", "pshare-", node);
  LPoolRow row = {.name = name, .nodeID = node, .pool = {}};
  if (ReadPool(nodes::kPSharePool, arguments.get(), row.pool) == HVC_OK) LPoolPrintRow(row, csv);
}

void PrintVmPool(uint32_t node, const char *name, bool csv) {
  const ParamList arguments = MakeNodeArguments("KestrelGetVmPoolStats", 2, node);
  if (arguments == nullptr) return;
  const HVC_ReturnStatus status = NODAL_ParamListAddString(arguments.get(), name);
  if (status != HVC_OK) {
    Warning("KestrelGetVmPoolStats: NODAL_ParamListAddString() failure, error code: %u\n", status);
    return;
  }
  LPoolRow row = {.name = name, .nodeID = node, .pool = {}};
  if (ReadPool(nodes::kVmPools, arguments.get(), row.pool) == HVC_OK) LPoolPrintRow(row, csv);
}

// Prints a warning and returns the status for a walk over the pools that failed.
HVC_ReturnStatus EndWalk(const char *message) {
  Warning("%s\n", message);
  return HVC_FAILURE;
}

HVC_ReturnStatus PrintVmPools(uint32_t node, uint32_t vmCount, bool csv) {
  ParamList arguments = MakeNodeArguments("KestrelTraverseLPools", 2, node);
  if (arguments == nullptr) return HVC_FAILURE;
  NODAL_ParamList *listed = nullptr;
  const HVC_ReturnStatus status = NODAL_GetInstanceListAllocHint(nodes::kVmPools.id, arguments.get(), vmCount, &listed);
  arguments.reset();
  if (status != HVC_OK) return EndWalk("KestrelTraverseLPools: NODAL_GetInstanceListAllocHint() failure");

  const ParamList names(listed);
  for (uint32_t i = 0; i < NODAL_ParamListUsedCount(names.get()); ++i) {
    const char *name = nullptr;
    if (NODAL_ParamListGetString(names.get(), i, &name) != HVC_OK) {
      return EndWalk("KestrelTraverseLPools: NODAL_ParamListGetString() failure");
    }
    PrintVmPool(node, name, csv);
  }
  return HVC_OK;
}

// The warnings of the first two reads misspell the function's name; they must not change.
HVC_ReturnStatus KestrelTraverseLPools(bool csv) {
  MemInfoRecord memInfo = {};
  if (ReadRecord(nodes::kMemInfo, nullptr, memInfo) != HVC_OK) {
    return EndWalk("KestrelTraversLPools: NODAL_Get hardwareInfo failure");
  }
  NumVMsRecord vms = {};
  if (ReadRecord(nodes::kNumVMs, nullptr, vms) != HVC_OK) {
    return EndWalk("KestrelTraversLPools: NODAL_Get numVMs failure");
  }
  for (uint32_t node = 0; node < memInfo.numNodes; ++node) {
    PrintPSharePool(node, csv);
    const HVC_ReturnStatus status = PrintVmPools(node, vms.numVMs, csv);
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
  sums.Print(columns, options.csv, true, &kTotal, ReportUnit::kKB);
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
