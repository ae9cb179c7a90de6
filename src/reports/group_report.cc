#include "src/reports/group_report.h"

#include "src/groups/group_queries.h"
#include "src/groups/traverse.h"
#include "src/table/banner.h"

namespace kestrel {
namespace {

HVC_ReturnStatus ApplyOptions(const Report &report, GroupRun &run) {
  HVC_ReturnStatus status = UnitParse(run.options.unit, report.inBytes, run.unit);
  if (status != HVC_OK) return status;
  status = FlagsParseFilter(run.options.inclusionFilter, report.filterFlags, run.inclusion, FilterKind::kInclusion);
  if (status != HVC_OK) return status;
  status = FlagsParseFilter(run.options.exclusionFilter, report.filterFlags, run.exclusion, FilterKind::kExclusion);
  if (status != HVC_OK) return status;
  ColumnsApplySelection(report.columns, run.options.selection);
  return HVC_OK;
}

void PrintBanner(const Report &report, const GroupRun &run) {
  const GroupFrame &frame = run.frame;
  const Banner banner(frame.title, frame.dashes);
  banner.Setting("Start Group ID", static_cast<uint64_t>(run.options.startGroup));
  if (report.options.Takes('l')) banner.Setting("No. of levels", run.options.levels);
  banner.Setting("Unit", frame.unitName != nullptr ? frame.unitName : WalkUnitName(run.unit));
  if (report.options.Takes('i')) {
    banner.Setting("Inclusion filter", FlagsDescribe(run.inclusion, report.filterFlags).Text());
  }
  if (report.options.Takes('e')) {
    banner.Setting("Exclusion filter", FlagsDescribe(run.exclusion, report.filterFlags).Text());
  }
  banner.SelectedColumns(report.columns);
}

// A group without flags has no rows in any report, because even the default inclusion filter requires a flag.
bool Qualifies(const GroupRun &run, uint32_t flags) {
  return (flags & run.frame.kinds) != 0 && (flags & run.inclusion) != 0 && (flags & run.exclusion) == 0;
}

HVC_ReturnStatus VisitGroup(int64_t groupID, uint32_t childCount, bool, void *context) {
  auto &run = *static_cast<GroupRun *>(context);
  GroupFlagsRecord flags = {};
  const HVC_ReturnStatus status = Kestrel_GroupGetFlags(groupID, flags);
  if (status != HVC_OK) return status;
  return Qualifies(run, flags.flags) ? run.frame.callback({run, groupID, childCount, flags.flags}) : HVC_OK;
}

void PrintTotals(const GroupRun &run) {
  const ColumnTable columns = run.report.columns;
  run.sums.Print(columns, run.options.csv, true, run.frame.totalLabel, run.unit);
  TablePrintSeparator(columns, run.options.csv);
}

}  // namespace

void GroupVisit::PrintRowAt(const void *row) const {
  const ColumnTable columns = run.report.columns;
  if (run.frame.totalLabel != nullptr) run.sums.Add(columns, row);
  PrintFigures(columns, run.options.csv, false, row, run.unit);
}

HVC_ReturnStatus RunGroupReport(const Report &report, int argc, char **argv) {
  const GroupFrame &frame = *report.frame;
  GroupRun run = {.report = report, .frame = frame};
  HVC_ReturnStatus status = ParseReportOptions(argc, argv, report.options, run.options);
  if (status != HVC_OK) return status;
  status = ApplyOptions(report, run);
  if (status != HVC_OK) return status;

  const ReportOptions &options = run.options;
  if (!options.csv) PrintBanner(report, run);
  TablePrintHead(report.columns, options.csv);
  status = KestrelTraverseGroups(options.startGroup, options.levels, options.csv, VisitGroup, &run);
  TablePrintSeparator(report.columns, options.csv);
  if (frame.totalLabel != nullptr) PrintTotals(run);
  if (frame.printEnding != nullptr) frame.printEnding(run);
  if (options.verbose) TablePrintDescriptions(report.columns);
  return status;
}

HVC_ReturnStatus ReadGroupHead(int64_t groupID, GroupHead &head) {
  head.schedGroupID = static_cast<uint64_t>(groupID);
  HVC_ReturnStatus status = Kestrel_GroupGetName(groupID, head.name);
  if (status == HVC_OK) status = Kestrel_GroupGetParentID(groupID, head.parent);
  if (status == HVC_OK) status = Kestrel_GroupGetGroupLeaderID(groupID, head.leaderID);
  return status;
}

}  // namespace kestrel
