// group-stats: the hierarchy of scheduler groups, a row per group, with what each is configured to get, what it
// reserves and what it consumes; and, on demand, the sums over groups with the same tag.
#include <cstdio>
#include <cstring>
#include <string_view>

#include "platkit/nodes.h"
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
  uint64_t groupID;  // 1 in a tag's row, 0 in one that is free
  ParentGroupIDRecord parent;
  GroupNameRecord name;
  char flags[64];  // holds all names but one; all of them are "(all)"
  GroupAllocRecord alloc;
  uint32_t nChild;
  GroupCapacityRecord capacity;
  GroupMemoryStatsRecord stats;
  GroupTagRecord tag;
};

using enum Conversion;
using enum FigureSum;
using Row = GroupStatsRow;

// The sums are those of a tag's row. Some of them are odd, and users know them so: consumed is counted twice, bMax is
// that of the last group, shares and the percentage stay 0. A limit has no sum.
constinit ColumnDesc columns[] = {
    {"gid", "Group ID", 8, kLu, kInTotal | kMandatory, PLAIN(groupID)},
    {"name", "Group name", 28, kS, kInTotal, PLAIN(name.name)},
    {"parGid", "Parent group ID", 8, kLd, kInTotal, PLAIN(parent.parentGroupID)},
    {"nChild", "Number of child groups", 8, kD, kInTotal, PLAIN(nChild).Sum(kAdd)},
    {"min", "Configured memory reservation", 10, kLd, kInTotal, KB(alloc.min).Sum(kAdd)},
    {"max", "Configured memory limit", 10, kLd, kInTotal, KB(alloc.max).Sum(kAllOnes)},
    {"minLimit", "Configured memory reservation limit", 10, kLd, kInTotal, KB(alloc.minLimit).Sum(kAllOnes)},
    {"shares", "Configured shares", 10, kLd, kInTotal, PLAIN(alloc.shares)},
    {"conResv", "Total memory reservation consumed by children", 10, kLu, kInTotal,
     KB(capacity.consumedResv).Sum(kAdd)},
    {"availResv", "Total memory reservation available to group", 10, kLu, kInTotal, KB(capacity.availResv).Sum(kAdd)},
    {"memSize", "Guest physical / Accounted UW virtual / kernel machine address space currently consumed", 10, kLu,
     kInTotal, KB(stats.memSize).Sum(kAdd)},
    {"memSizePeak",
     "Peak guest physical / Accounted UW virtual / kernel machine address space currently consumed (since last reset)",
     10, kLu, kInTotal, KB(stats.memSizePeak).Sum(kAdd)},
    {"iMin", "Implicit memory reservation", 10, kLu, kInTotal, KB(stats.iMin).Sum(kAdd)},
    {"eMin", "Effective memory reservation", 10, kLu, kInTotal, KB(stats.eMin).Sum(kAdd)},
    {"eMinPeak", "Peak value for effective memory reservation (since last reset)", 10, kLu, kInTotal,
     KB(stats.eMinPeak).Sum(kAdd)},
    {"rMinPeak", "Peak value for requested memory reservation (since last reset)", 10, kLu, kInTotal,
     KB(stats.rMinPeak).Sum(kAdd)},
    {"rMinChildPeak", "Peak requested memory reservation value for subgroups (since last reset)", 10, kLu, kInTotal,
     KB(stats.rMinChildPeak).Sum(kAdd)},
    {"bMin", "Base memory reservation", 10, kLu, kInTotal, KB(stats.bMin).Sum(kAdd)},
    {"bMax", "Base memory limit", 10, kLu, kInTotal, KB(stats.bMax).Sum(kLast)},
    {"bShares", "Base shares", 10, kLu, kInTotal, PLAIN(stats.bShares)},
    {"fShares", "flattened base shares", 10, kLu, kInTotal, PLAIN(stats.fShares)},
    {"ovhdResv", "Reserved overhead memory", 10, kLu, kInTotal, KB(stats.ovhdResv).Sum(kAdd)},
    {"ovhd", "Consumed overhead memory", 10, kLu, kInTotal, KB(stats.ovhd).Sum(kAdd)},
    {"allocTgt", "Memory allocation target for group", 10, kLu, kInTotal, KB(stats.allocTgt).Sum(kAdd)},
    {"consumed", "Total memory consumed by group", 10, kLu, kInTotal, KB(stats.consumed).Sum(kAddTwice)},
    {"consumedPeak", "Peak value for total memory consumed by group (since last reset)", 10, kLu, kInTotal,
     KB(stats.consumedPeak).Sum(kAdd)},
    {"touched", "Estimate of guest memory touched", 10, kLu, kInTotal, KB(stats.touched).Sum(kAdd)},
    {"bActive", "Base activeness", 10, kLu, kInTotal, KB(stats.bActive).Sum(kAdd)},
    {"sharedSaved", "Estimate of memory savings from page sharing", 10, kLu, kInTotal, KB(stats.sharedSaved).Sum(kAdd)},
    // Converted like the others, whatever its description says.
    {"mps", "Memory per share (KB)", 20, kLd, kInTotal, KB(stats.mps).Sum(kAllOnes)},
    {"throttlePct", "% of possible time the guest is allowed to be executed", 3, kU, kPlain, PLAIN(stats.throttlePct)},
    {"flags", "Group flags", 16, kS, kInTotal, PLAIN(flags)},
    {"tag", "Group Tag", 28, kS, kInTotal, PLAIN(tag.tag)},
};

void SetFlags(Row &row, uint32_t flags) {
  std::string_view(FlagsDescribe(flags, GroupFlagNames).Text()).copy(row.flags, sizeof row.flags - 1);
}

// The rows of sums, one per tag, in the order in which the tags were met.
class TagRows {
 public:
  // False if the group's tag is a new one and there is no row left for it.
  [[nodiscard]] bool Add(const Row &row) {
    Row *sums = Find(row.tag);
    if (sums != nullptr) SumFigures(columns, &row, sums);
    return sums != nullptr;
  }

  template <typename Visit>
  void ForEach(Visit visit) const {
    for (const Row &row : rows_) {
      if (row.groupID == 0) return;
      visit(row);
    }
  }

 private:
  Row *Find(const GroupTagRecord &tag) {
    for (Row &row : rows_) {
      if (row.groupID == 0) {
        Take(row, tag);
        return &row;
      }
      if (std::strncmp(row.tag.tag, tag.tag, sizeof tag.tag) == 0) return &row;
    }
    return nullptr;
  }

  // A row's own tag is always terminated. One of eight characters loses its last here, and so never matches again:
  // every group that has it gets a row to itself.
  static void Take(Row &row, const GroupTagRecord &tag) {
    char terminated[sizeof tag.tag + 1] = {};
    std::memcpy(terminated, tag.tag, sizeof tag.tag);
    Str_Strcpy(row.name.name, terminated, sizeof row.name.name);
    Str_Strcpy(row.tag.tag, terminated, sizeof row.tag.tag);
    row.groupID = 1;
    SetFlags(row, 0);
  }

  Row rows_[512] = {};
};

constinit TagRows tagRows;

// A limit close to the largest amount that the kernel can express is no limit.
uint64_t Limit(uint64_t kb) { return kb > 0xFFFFFFFFF0 ? HVC_KB_NONE : kb; }

// Reads what a row is made of, besides the flags.
HVC_ReturnStatus ReadRow(int64_t groupID, Row &row) {
  HVC_ReturnStatus status = Kestrel_GroupGetName(groupID, row.name);
  if (status == HVC_OK) status = Kestrel_GroupGetTag(groupID, row.tag);
  if (status == HVC_OK) status = Kestrel_GroupGetParentID(groupID, row.parent);
  if (status == HVC_OK) status = Kestrel_GroupGetAlloc(groupID, row.alloc);
  if (status == HVC_OK) {
    status = ReadGroupRecord("KestrelGroupGetCapacity", groupID, NODAL_NODE_sched_groups_stats_capacity, row.capacity);
  }
  if (status == HVC_OK) status = KestrelGroupGetMemoryStats(groupID, row.stats);
  return status;
}

HVC_ReturnStatus PutRow(const GroupVisit &group) {
  Row row = {};
  row.groupID = static_cast<uint64_t>(group.groupID);
  row.nChild = group.childCount;
  const HVC_ReturnStatus status = ReadRow(group.groupID, row);
  if (status != HVC_OK) return status;

  SetFlags(row, group.flags);
  row.alloc.max = Limit(row.alloc.max);
  row.alloc.minLimit = Limit(row.alloc.minLimit);
  if (group.run.options.tags && !tagRows.Add(row)) {
    Warning("Maximum number of VTag exceeded\n");
    return HVC_NO_MEMORY;
  }
  group.Put(row);
  return HVC_OK;
}

void PrintTagRows(const GroupRun &run) {
  if (!run.options.tags) return;
  std::puts("Virtual tags report");
  tagRows.ForEach([&](const Row &row) { PrintFigures(columns, run.options.csv, false, &row, run.unit); });
  TablePrintSeparator(columns, run.options.csv);
}

constexpr GroupFrame kFrame = {
    .title = "GROUP STATS",
    .dashes = 37,
    .visit = PutRow,
    .ending = PrintTagRows,
};

}  // namespace

constinit const Report kGroupStats = {
    .name = "group-stats",
    .summary = "the hierarchy of scheduler groups, and what each reserves and consumes",
    .options = {"e:g:i:l:s:u:vqt"},
    .columns = columns,
    .filterFlags = GroupFlagNames,
    .sums = Sums::kTagRows,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
