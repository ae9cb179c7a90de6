// The common parts of the host-wide reports: their beginning, their end, and reads of nodes without arguments.
#ifndef KESTREL_REPORTS_HOST_REPORT_H
#define KESTREL_REPORTS_HOST_REPORT_H

#include "platkit/status.h"
#include "src/nodal/param_list.h"
#include "src/reports/report.h"
#include "src/table/unit.h"

namespace kestrel {

struct HostRun {
  ReportOptions options = {};
  ReportUnit unit = ReportUnit::kKB;
};

// Parses a report's options, including the unit, and applies the column selection.
[[nodiscard]] inline HVC_ReturnStatus StartHostReport(const Report &report, int argc, char **argv, HostRun &run) {
  HVC_ReturnStatus status = ParseReportOptions(argc, argv, report.options, run.options);
  if (status == HVC_OK) status = UnitParse(run.options.unit, report.inBytes, run.unit);
  if (status == HVC_OK) ColumnsApplySelection(report.columns, run.options.selection);
  return status;
}

// Prints the line below the last row and, with -v, the descriptions.
inline void EndHostReport(ColumnTable columns, const ReportOptions &options) {
  TablePrintSeparator(columns, options.csv);
  if (options.verbose) TablePrintDescriptions(columns);
}

// Reads the record of a node without arguments for the function `step`. Does not warn if the read itself fails.
template <typename Record>
[[nodiscard]] HVC_ReturnStatus ReadHostRecord(const char *step, NodeRef<Record> node, Record &record) {
  const ParamList noArguments = MakeArgumentsFor(step, 1);
  return noArguments == nullptr ? HVC_FAILURE : ReadRecord(node, noArguments.get(), record);
}

}  // namespace kestrel

#endif  // KESTREL_REPORTS_HOST_REPORT_H
