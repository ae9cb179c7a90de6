// pshare-stats: what page sharing saves on the whole host, in one row.
#include "platkit/nodes.h"
#include "platkit/records.h"
#include "platkit/warning.h"
#include "src/nodal/param_list.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/options.h"
#include "src/table/report_row.h"

namespace kestrel {
namespace {

using enum Conversion;
using Row = PShareStatsRecord;

constinit ColumnDesc columns[] = {
    {"cow", "Client memory marked copy-on-write", 10, kLu, kInTotal, PAGES(cow)},
    {"cow1", "Client's COWed memory with single ref", 10, kLu, kInTotal, PAGES(cow1)},
    {"zero", "Zeroed client memory", 10, kLu, kInTotal, PAGES(zero)},
    {"used", "Machine memory used for backing COWed client memory", 10, kLu, kInTotal, PAGES(used)},
    {"reclaimed", "Machine memory reclaimed via pshare", 10, kLu, kInTotal, PAGES(reclaimed)},
    {"totAdd", "Total client memory added to pshare table", 10, kLu, kInTotal, PAGES(totAdd)},
    {"totRemove", "Total client memory removed from pshare table", 10, kLu, kInTotal, PAGES(totRemove)},
};

HVC_ReturnStatus ReadPShareStats(PShareStatsRecord &record) {
  const ParamList noArguments = MakeArguments(1);
  if (noArguments == nullptr) {
    Warning("KestrelPShareGetStats: NODAL_ParamListCreate() failure\n");
    return HVC_FAILURE;
  }
  return ReadRecord(NODAL_NODE_memory_pshare_stats, noArguments.get(), record);
}

void PrintBanner(const PShareStatsRecord &record, ReportUnit unit) {
  const Banner banner("PSHARE STATS", 38, 17);
  banner.Setting("Unit", WalkUnitName(unit));
  banner.Setting("Peak chain length", record.peakChainLength);
  banner.Setting("Peak chain index", record.peakChainIndex);
  banner.Setting("Peak ref.  count", record.peakRefCount);
  banner.SelectedColumns(columns);
}

}  // namespace

HVC_ReturnStatus KestrelPShareGetStats(int argc, char **argv) {
  ReportOptions options;
  HVC_ReturnStatus status = ParseReportOptions(argc, argv, "s:u:vq", options);
  if (status != HVC_OK) return status;
  ReportUnit unit{};
  status = UnitParse(options.unit, false, unit);
  if (status != HVC_OK) return status;
  ColumnsApplySelection(columns, options.selection);

  // Nothing is printed before the read has succeeded, so a failing run leaves no half table.
  PShareStatsRecord record = {};
  status = ReadPShareStats(record);
  if (status != HVC_OK) return status;

  if (!options.csv) PrintBanner(record, unit);
  TablePrintHead(columns, options.csv);
  PrintFigures(columns, options.csv, false, &record, unit);
  TablePrintSeparator(columns, options.csv);
  if (options.verbose) TablePrintDescriptions(columns);
  return HVC_OK;
}

}  // namespace kestrel
