// group-stats: the hierarchy of scheduler groups, with the configuration, reservations and consumption of each. With
// -t, also the sums of the groups that have the same tag.
#include <cstdio>
#include <cstring>
#include <string_view>

#include "platkit/records.h"
#include "platkit/str.h"
#include "platkit/warning.h"
#include "src/groups/group_flags.h"
#include "src/groups/group_queries.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

struct GroupStatsRow {
  uint64_t groupID;  // 1 in the row of a tag
  ParentGroupIDRecord parent;
  GroupNameRecord name;
  char flags[64];  // long enough for the names of all flags
  GroupAllocRecord alloc;
  uint32_t nChild;
  GroupCapacityRecord capacity;
  GroupMemoryStatsRecord stats;
  GroupTagRecord tag;
};

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

// A maximum close to the largest amount that the kernel can express means unlimited.
uint64_t Limit(uint64_t kb) { return kb > 0xFFFFFFFFF0 ? HVC_KB_NONE : kb; }

// The sums are for the rows of tags. Some are odd but must not change: consumed is added twice, bMax comes from the
// last group, shares and throttlePct stay 0, and maxima print -1.
constinit auto columns = ColumnsOf<GroupStatsRow>({
    {"gid", "Group ID", 8, kLu, [](auto &row) { return row.groupID; }, kInTotal | kMandatory},
    {"name", "Group name", 28, kS, [](auto &row) { return Text(row.name.name); }, kInTotal},
    {"parGid", "Parent group ID", 8, kLd, [](auto &row) { return row.parent.parentGroupID; }, kInTotal},
    {"nChild", "Number of child groups", 8, kD, [](auto &row) { return row.nChild; }, kAdd},
    {"min", "Configured memory reservation", 10, kLd, kKB, [](auto &row) { return row.alloc.min; }, kAdd},
    {"max", "Configured memory limit", 10, kLd, kKB, [](auto &row) { return Limit(row.alloc.max); }, kAllOnes},
    {"minLimit", "Configured memory reservation limit", 10, kLd, kKB,
     [](auto &row) { return Limit(row.alloc.minLimit); }, kAllOnes},
    {"shares", "Configured shares", 10, kLd, [](auto &row) { return row.alloc.shares; }, kInTotal},
    {"conResv", "Total memory reservation consumed by children", 10, kLu, kKB,
     [](auto &row) { return row.capacity.consumedResv; }, kAdd},
    {"availResv", "Total memory reservation available to group", 10, kLu, kKB,
     [](auto &row) { return row.capacity.availResv; }, kAdd},
    {"memSize", "Guest physical / Accounted UW virtual / kernel machine address space currently consumed", 10, kLu, kKB,
     [](auto &row) { return row.stats.memSize; }, kAdd},
    {"memSizePeak",
     "Peak guest physical / Accounted UW virtual / kernel machine address space currently consumed (since last reset)",
     10, kLu, kKB, [](auto &row) { return row.stats.memSizePeak; }, kAdd},
    {"iMin", "Implicit memory reservation", 10, kLu, kKB, [](auto &row) { return row.stats.iMin; }, kAdd},
    {"eMin", "Effective memory reservation", 10, kLu, kKB, [](auto &row) { return row.stats.eMin; }, kAdd},
    {"eMinPeak", "Peak value for effective memory reservation (since last reset)", 10, kLu, kKB,
     [](auto &row) { return row.stats.eMinPeak; }, kAdd},
    {"rMinPeak", "Peak value for requested memory reservation (since last reset)", 10, kLu, kKB,
     [](auto &row) { return row.stats.rMinPeak; }, kAdd},
    {"rMinChildPeak", "Peak requested memory reservation value for subgroups (since last reset)", 10, kLu, kKB,
     [](auto &row) { return row.stats.rMinChildPeak; }, kAdd},
    {"bMin", "Base memory reservation", 10, kLu, kKB, [](auto &row) { return row.stats.bMin; }, kAdd},
    {"bMax", "Base memory limit", 10, kLu, kKB, [](auto &row) { return row.stats.bMax; }, kLast},
    {"bShares", "Base shares", 10, kLu, [](auto &row) { return row.stats.bShares; }, kInTotal},
    {"fShares", "flattened base shares", 10, kLu, [](auto &row) { return row.stats.fShares; }, kInTotal},
    {"ovhdResv", "Reserved overhead memory", 10, kLu, kKB, [](auto &row) { return row.stats.ovhdResv; }, kAdd},
    {"ovhd", "Consumed overhead memory", 10, kLu, kKB, [](auto &row) { return row.stats.ovhd; }, kAdd},
    {"allocTgt", "Memory allocation target for group", 10, kLu, kKB, [](auto &row) { return row.stats.allocTgt; },
     kAdd},
    {"consumed", "Total memory consumed by group", 10, kLu, kKB, [](auto &row) { return row.stats.consumed; },
     kAddTwice},
    {"consumedPeak", "Peak value for total memory consumed by group (since last reset)", 10, kLu, kKB,
     [](auto &row) { return row.stats.consumedPeak; }, kAdd},
    {"touched", "Estimate of guest memory touched", 10, kLu, kKB, [](auto &row) { return row.stats.touched; }, kAdd},
    {"bActive", "Base activeness", 10, kLu, kKB, [](auto &row) { return row.stats.bActive; }, kAdd},
    {"sharedSaved", "Estimate of memory savings from page sharing", 10, kLu, kKB,
     [](auto &row) { return row.stats.sharedSaved; }, kAdd},
    // Converted to the display unit, although the description says "(KB)".
    {"mps", "Memory per share (KB)", 20, kLd, kKB, [](auto &row) { return row.stats.mps; }, kAllOnes},
    {"throttlePct", "% of possible time the guest is allowed to be executed", 3, kU,
     [](auto &row) { return row.stats.throttlePct; }},
    {"flags", "Group flags", 16, kS, [](auto &row) { return Text(row.flags); }, kInTotal},
    {"tag", "Group Tag", 28, kS, [](auto &row) { return Text(row.tag.tag); }, kInTotal},
});

void SetFlags(GroupStatsRow &row, uint32_t flags) {
  std::string_view(FlagsDescribe(flags, GroupFlagNames).Text()).copy(row.flags, sizeof row.flags - 1);
}

// The sums of the groups that have a tag.
struct TagRow {
  bool IsFree() const { return label.groupID == 0; }

  // `label` is terminated, so a tag of eight characters loses its last one and never matches again. Each group with
  // that tag therefore gets its own row.
  bool Has(const GroupTagRecord &tag) const { return std::strncmp(label.tag.tag, tag.tag, sizeof tag.tag) == 0; }

  void Take(const GroupTagRecord &tag) {
    char terminated[sizeof tag.tag + 1] = {};
    std::memcpy(terminated, tag.tag, sizeof tag.tag);
    Str_Strcpy(label.name.name, terminated, sizeof label.name.name);
    Str_Strcpy(label.tag.tag, terminated, sizeof label.tag.tag);
    label.groupID = 1;
    SetFlags(label, 0);
  }

  GroupStatsRow label;
  ColumnSums sums;
};

// One row of sums for each tag, in the order in which the walk finds the tags.
class TagRows {
 public:
  // Returns false if other tags use all rows.
  [[nodiscard]] bool Add(const GroupStatsRow &row) {
    for (TagRow &tagRow : rows_) {
      if (tagRow.IsFree()) {
        tagRow.Take(row.tag);
      } else if (!tagRow.Has(row.tag)) {
        continue;
      }
      tagRow.sums.Add(columns, &row);
      return true;
    }
    return false;
  }

  void Print(const GroupRun &run) const {
    for (const TagRow &row : rows_) {
      if (row.IsFree()) return;
      row.sums.Print(columns, run.options.csv, false, &row.label, run.unit);
    }
  }

 private:
  TagRow rows_[512] = {};
};

constinit TagRows tagRows;

HVC_ReturnStatus ReadRow(int64_t groupID, GroupStatsRow &row) {
  HVC_ReturnStatus status = Kestrel_GroupGetName(groupID, row.name);
  if (status == HVC_OK) status = Kestrel_GroupGetTag(groupID, row.tag);
  if (status == HVC_OK) status = Kestrel_GroupGetParentID(groupID, row.parent);
  if (status == HVC_OK) status = Kestrel_GroupGetAlloc(groupID, row.alloc);
  if (status == HVC_OK) status = KestrelGroupGetCapacity(groupID, row.capacity);
  if (status == HVC_OK) status = KestrelGroupGetMemoryStats(groupID, row.stats);
  return status;
}

HVC_ReturnStatus KestrelGroupStatsCallback(const GroupVisit &group) {
  GroupStatsRow row = {};
  row.groupID = static_cast<uint64_t>(group.groupID);
  row.nChild = group.childCount;
  SetFlags(row, group.flags);
  const HVC_ReturnStatus status = ReadRow(group.groupID, row);
  if (status != HVC_OK) return status;

  if (group.run.options.tags && !tagRows.Add(row)) {
    Warning("Maximum number of VTag exceeded\n");
    return HVC_NO_MEMORY;
  }
  group.PrintRow(row);
  return HVC_OK;
}

void PrintTagRows(const GroupRun &run) {
  if (!run.options.tags) return;
  std::puts("Virtual tags report");
  tagRows.Print(run);
  TablePrintSeparator(columns, run.options.csv);
}

constexpr GroupFrame kFrame = {
    .title = "GROUP STATS",
    .dashes = 37,
    .callback = KestrelGroupStatsCallback,
    .printEnding = PrintTagRows,
};

}  // namespace

constinit const Report kGroupStats = {
    .name = "group-stats",
    .summary = "the hierarchy of scheduler groups, with the reservations and consumption of each",
    .options = {"e:g:i:l:s:u:vqt"},
    .columns = columns,
    .filterFlags = GroupFlagNames,
    .sums = Sums::kTagRows,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
