// pshareHint-stats: the hints that page sharing goes by, for regular pages, for large pages, and in all.
#include "platkit/nodes.h"
#include "platkit/records.h"
#include "src/reports/host_report.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/report_row.h"

namespace kestrel {
namespace {

struct PShareHintRow {
  const char *type;
  uint64_t totAdd;
  uint64_t totRemove;
  uint64_t active;
};

using enum Conversion;
using Row = PShareHintRow;

constinit ColumnDesc columns[] = {
    {"type", "Hint type (regular or large page hint)", 10, kS, kInTotal, PLAIN(type)},
    {"totAdd", "Total hints added", 15, kLu, kInTotal, PAGES(totAdd)},
    {"totRemove", "Total hints removed", 15, kLu, kInTotal, PAGES(totRemove)},
    {"active", "Currently active hints", 15, kLu, kInTotal, PAGES(active)},
};

// Of one type, what was added and not removed is active. Counters that contradict each other show as huge numbers.
Row OfType(const char *type, uint64_t added, uint64_t removed) { return {type, added, removed, added - removed}; }

void PrintRow(const HostRun &run, bool total, const Row &row) {
  PrintFigures(columns, run.options.csv, total, &row, run.unit);
}

HVC_ReturnStatus KestrelPShareHintGetStats(const Report &report, int argc, char **argv) {
  HostRun run;
  HVC_ReturnStatus status = StartHostReport(report, argc, argv, run);
  if (status != HVC_OK) return status;

  PShareStatsRecord record = {};
  status = ReadHostRecord("KestrelPShareHintGetStats", NODAL_NODE_memory_pshare_stats, record);
  if (status != HVC_OK) return status;

  if (!run.options.csv) {
    const Banner banner("PSHARE HINT STATS", 43);
    banner.Setting("Unit", WalkUnitName(run.unit));
    banner.SelectedColumns(columns);
  }
  TablePrintHead(columns, run.options.csv);
  PrintRow(
      run, false,
      OfType("regular", record.hintsAdded - record.lpageHintsAdded, record.hintsRemoved - record.lpageHintsRemoved));
  PrintRow(run, false, OfType("lpage", record.lpageHintsAdded, record.lpageHintsRemoved));
  TablePrintSeparator(columns, run.options.csv);
  // The kernel's own count of active hints, which need not agree with the two rows above.
  PrintRow(run, true, {"Total", record.hintsAdded, record.hintsRemoved, record.hintsActive});
  EndHostReport(columns, run.options);
  return HVC_OK;
}

}  // namespace

constinit const Report kPShareHintStats = {
    .name = "pshareHint-stats",
    .summary = "the hints that page sharing goes by",
    .options = {"s:u:vq"},
    .columns = columns,
    .sums = Sums::kTotalRow,
    .run = KestrelPShareHintGetStats,
};

}  // namespace kestrel
