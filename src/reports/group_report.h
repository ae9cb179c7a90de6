// The common parts of the per-group reports: options, banner, walk over the groups, rows and totals.
#ifndef KESTREL_REPORTS_GROUP_REPORT_H
#define KESTREL_REPORTS_GROUP_REPORT_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "platkit/records.h"
#include "platkit/status.h"
#include "src/reports/report.h"
#include "src/table/report_row.h"

namespace kestrel {

// A running report and its options.
struct GroupRun {
  const Report &report;
  const GroupFrame &frame;
  ReportOptions options = {};
  ReportUnit unit = ReportUnit::kKB;
  uint32_t inclusion = UINT32_MAX;
  uint32_t exclusion = 0;
  ColumnSums sums = {};
};

// A group whose rows are to be printed.
struct GroupVisit {
  GroupRun &run;
  int64_t groupID;
  uint32_t childCount;
  uint32_t flags;

  // Prints a row and adds it to the report's totals. `Row` is the row type of the report's columns.
  template <typename Row>
  void PrintRow(const Row &row) const {
    static_assert(std::is_trivially_copyable_v<Row>);
    PrintRowAt(&row);
  }

 private:
  void PrintRowAt(const void *row) const;
};

struct GroupFrame {
  const char *title;
  int dashes;  // length of the line below the title
  // A group has rows if it has one of these flags.
  uint32_t kinds = UINT32_MAX;
  // The name of the unit in the banner; null for the unit that -u chooses.
  const char *unitName = nullptr;

  // Reads a group and prints its rows. The order of the reads decides which failure is reported. After a status other
  // than HVC_OK, the walk skips the group's children.
  HVC_ReturnStatus (*callback)(const GroupVisit &group);

  // A row structure with the label of the Total row; null if the report has no totals.
  const void *totalLabel = nullptr;
  // Prints the part below the rows; null if there is none.
  void (*printEnding)(const GroupRun &run) = nullptr;
};

// Runs a per-group report. Returns the status of the walk; rows, totals and ending are printed in any case.
[[nodiscard]] HVC_ReturnStatus RunGroupReport(const Report &report, int argc, char **argv);

// The options of most per-group reports.
inline constexpr OptionSyntax kGroupOptions = {"g:l:s:u:vq"};

// The members that rows of VMs and of user worlds have in common.
struct GroupHead {
  GroupNameRecord name;
  uint64_t schedGroupID;
  ParentGroupIDRecord parent;
  uint32_t leaderID;  // the memory client of the world that leads the group
};

[[nodiscard]] HVC_ReturnStatus ReadGroupHead(int64_t groupID, GroupHead &head);

// The label of a Total row.
template <typename Row>
consteval Row TotalLabel() {
  Row row = {};
  std::string_view("Total").copy(row.head.name.name, sizeof row.head.name.name);
  return row;
}

// Columns of the group, for rows that have a GroupHead `head`.
template <typename Row>
constexpr Column<Row> SchedGroupColumn() {
  return {"schedGrp", "Scheduler group ID", 10, Conversion::kLu, [](auto &row) { return row.head.schedGroupID; }};
}

template <typename Row>
constexpr Column<Row> ParentGroupColumn() {
  return {"parSchedGroup", "Parent scheduler group ID", 10, Conversion::kLu,
          [](auto &row) { return row.head.parent.parentGroupID; }};
}

template <typename Row>
constexpr Column<Row> WorldGroupColumn(Conversion conversion = Conversion::kD) {
  return {"worldGrp", "World group ID", 10, conversion, [](auto &row) { return row.head.leaderID; }};
}

}  // namespace kestrel

#endif  // KESTREL_REPORTS_GROUP_REPORT_H
