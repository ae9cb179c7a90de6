// The frame of the per-group reports: a walk over the scheduler groups, rows for each group that qualifies, and what
// stands above and below them. A report fills a GroupFrame: which groups have rows, and how a group's row is read.
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

// A running report, with the options in force.
struct GroupRun {
  const Report &report;
  const GroupFrame &frame;
  ReportOptions options = {};
  ReportUnit unit = ReportUnit::kKB;
  uint32_t inclusion = UINT32_MAX;
  uint32_t exclusion = 0;
  uint32_t rows = 0;  // printed so far
};

// A group that has rows.
struct GroupVisit {
  GroupRun &run;
  int64_t groupID;
  uint32_t childCount;
  uint32_t flags;

  // Prints a row, and adds it to the report's totals.
  template <typename Row>
  void Put(const Row &row) const {
    static_assert(std::is_trivially_copyable_v<Row>);
    if constexpr (requires { row.head; }) static_assert(offsetof(Row, head) == 0, "the head's columns find it there");
    PutRow(&row);
  }

 private:
  void PutRow(const void *row) const;
};

struct GroupFrame {
  // The banner: its title, over a rule of so many dashes.
  const char *title;
  int dashes;
  // Flags of which a group must have one to have rows.
  uint32_t kinds = UINT32_MAX;
  // What the banner says instead of the chosen unit, for a report of counts.
  const char *unitName = nullptr;

  // Reads a group's rows and puts them. The order of the reads decides which failure is reported. A status other than
  // HVC_OK keeps the walk out of the group's children.
  HVC_ReturnStatus (*visit)(const GroupVisit &group);

  // The Total row, zero but for its name; null if the report has none. It is a sum of figures as they were read, so
  // that it is rounded once, when it is printed.
  void *totals = nullptr;
  // What follows the rows of a report of another kind.
  void (*ending)(const GroupRun &run) = nullptr;
};

// Runs the report in its frame, from its options to its last line. Returns the status of the walk. Rows, totals and all
// that follows are printed whatever that status is.
[[nodiscard]] HVC_ReturnStatus RunGroupReport(const Report &report, int argc, char **argv);

// The options that most of these reports take.
inline constexpr OptionSyntax kGroupOptions = {"g:l:s:u:vq"};

// Whose row it is, at the head of the rows of virtual machines and user worlds.
struct GroupHead {
  GroupNameRecord name;
  uint64_t schedGroupID;
  ParentGroupIDRecord parent;
  uint32_t leaderID;  // the memory client of the world that leads the group
};

[[nodiscard]] HVC_ReturnStatus ReadGroupHead(int64_t groupID, GroupHead &head);

// A row of sums with its name.
template <typename Row>
consteval Row TotalRow() {
  Row row = {};
  std::string_view("Total").copy(row.head.name.name, sizeof row.head.name.name);
  return row;
}

// The columns of the head.
namespace head_columns {
using Row = GroupHead;
inline constexpr Figure kName = PLAIN(name.name);
inline constexpr Figure kLeaderID = PLAIN(leaderID);
inline constexpr ColumnDesc kSchedGrp = {"schedGrp", "Scheduler group ID", 10, Conversion::kLu,
                                         kPlain,     PLAIN(schedGroupID)};
inline constexpr ColumnDesc kParSchedGroup = {"parSchedGroup", "Parent scheduler group ID", 10, Conversion::kLu,
                                              kPlain,          PLAIN(parent.parentGroupID)};
inline constexpr ColumnDesc kWorldGrp = {"worldGrp", "World group ID", 10, Conversion::kD, kPlain, kLeaderID};
}  // namespace head_columns

}  // namespace kestrel

#endif  // KESTREL_REPORTS_GROUP_REPORT_H
