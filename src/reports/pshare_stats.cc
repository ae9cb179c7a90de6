// pshare-stats: page sharing on the whole host, in one row.
#include "platkit/records.h"
#include "src/reports/host_report.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/report_row.h"

namespace kestrel {
namespace {

using enum Conversion;
using enum FigureUnit;

constinit auto columns = ColumnsOf<PShareStatsRecord>({
    {"cow", "Client memory marked copy-on-write", 10, kLu, kPages, [](auto &row) { return row.cow; }},
    {"cow1", "Client's COWed memory with single ref", 10, kLu, kPages, [](auto &row) { return row.cow1; }},
    {"zero", "Zeroed client memory", 10, kLu, kPages, [](auto &row) { return row.zero; }},
    {"used", "Machine memory used for backing COWed client memory", 10, kLu, kPages,
     [](auto &row) { return row.used; }},
    {"reclaimed", "Machine memory reclaimed via pshare", 10, kLu, kPages, [](auto &row) { return row.reclaimed; }},
    {"totAdd", "Total client memory added to pshare table", 10, kLu, kPages, [](auto &row) { return row.totAdd; }},
    {"totRemove", "Total client memory removed from pshare table", 10, kLu, kPages,
     [](auto &row) { return row.totRemove; }},
});

void PrintBanner(const PShareStatsRecord &record, ReportUnit unit) {
  const Banner banner("PSHARE STATS", 38, 17);
  banner.Setting("Unit", WalkUnitName(unit));
  banner.Setting("Peak chain length", record.peakChainLength);
  banner.Setting("Peak chain index", record.peakChainIndex);
  banner.Setting("Peak ref.  count", record.peakRefCount);
  banner.SelectedColumns(columns);
}

HVC_ReturnStatus KestrelPShareGetStats(const Report &report, int argc, char **argv) {
  HostRun run;
  HVC_ReturnStatus status = StartHostReport(report, argc, argv, run);
  if (status != HVC_OK) return status;

  // Read first, so that a failed run prints no part of the table.
  PShareStatsRecord record = {};
  status = ReadHostRecord("KestrelPShareGetStats", nodes::kPShareStats, record);
  if (status != HVC_OK) return status;

  if (!run.options.csv) PrintBanner(record, run.unit);
  TablePrintHead(columns, run.options.csv);
  PrintFigures(columns, run.options.csv, false, &record, run.unit);
  EndHostReport(columns, run.options);
  return HVC_OK;
}

}  // namespace

constinit const Report kPShareStats = {
    .name = "pshare-stats",
    .summary = "page sharing on the whole host, and the memory that it saves",
    .options = {"s:u:vq"},
    .columns = columns,
    .run = KestrelPShareGetStats,
};

}  // namespace kestrel
