// pshareHint-stats: the hints of page sharing, for regular pages, large pages and both.
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
using enum FigureUnit;

constinit auto columns = ColumnsOf<PShareHintRow>({
    {"type", "Hint type (regular or large page hint)", 10, kS, [](auto &row) { return Text(row.type); }, kInTotal},
    {"totAdd", "Total hints added", 15, kLu, kPages, [](auto &row) { return row.totAdd; }, kInTotal},
    {"totRemove", "Total hints removed", 15, kLu, kPages, [](auto &row) { return row.totRemove; }, kInTotal},
    {"active", "Currently active hints", 15, kLu, kPages, [](auto &row) { return row.active; }, kInTotal},
});

// The row for one type of page. If more hints were removed than added, `active` wraps.
PShareHintRow OfType(const char *type, uint64_t added, uint64_t removed) {
  return {type, added, removed, added - removed};
}

void PrintRow(const HostRun &run, bool total, const PShareHintRow &row) {
  PrintFigures(columns, run.options.csv, total, &row, run.unit);
}

HVC_ReturnStatus KestrelPShareHintGetStats(const Report &report, int argc, char **argv) {
  HostRun run;
  HVC_ReturnStatus status = StartHostReport(report, argc, argv, run);
  if (status != HVC_OK) return status;

  PShareStatsRecord record = {};
  status = ReadHostRecord("KestrelPShareHintGetStats", nodes::kPShareStats, record);
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
  // `active` is the kernel's own count, not the sum of the other two rows.
  PrintRow(run, true, {"Total", record.hintsAdded, record.hintsRemoved, record.hintsActive});
  EndHostReport(columns, run.options);
  return HVC_OK;
}

}  // namespace

constinit const Report kPShareHintStats = {
    .name = "pshareHint-stats",
    .summary = "the hints of page sharing",
    .options = {"s:u:vq"},
    .columns = columns,
    .sums = Sums::kTotalRow,
    .run = KestrelPShareHintGetStats,
};

}  // namespace kestrel
