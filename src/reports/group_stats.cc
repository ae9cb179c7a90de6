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
#include "src/groups/traverse.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/options.h"
#include "src/table/report_row.h"

namespace kestrel {
namespace {

struct GroupStatsRow {
  uint64_t groupId;  // 1 in a tag's row, 0 in one that is free
  int64_t parentGroupId;
  char name[64];
  uint32_t flags;
  char flagText[64];  // holds all names but one; all of them are "(all)"
  GroupAllocRecord alloc;
  uint32_t nChild;
  GroupCapacityRecord capacity;
  GroupMemoryStatsRecord stats;
  char tag[8];
};

using enum Conversion;
using enum FigureSum;
using Row = GroupStatsRow;

// The sums are those of a tag's row. Some of them are odd, and users know them so: consumed is counted twice, bMax is
// that of the last group, shares and the percentage stay 0. A limit has no sum.
constinit ColumnDesc columns[] = {
    {"gid", "Group ID", 8, kLu, kInTotal | kMandatory, PLAIN(groupId)},
    {"name", "Group name", 28, kS, kInTotal, PLAIN(name)},
    {"parGid", "Parent group ID", 8, kLd, kInTotal, PLAIN(parentGroupId)},
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
    {"flags", "Group flags", 16, kS, kInTotal, PLAIN(flagText)},
    {"tag", "Group Tag", 28, kS, kInTotal, PLAIN(tag)},
};

constexpr option kLongOptions[] = {kOptionGid,     kOptionLevel,   kOptionUnit,    kOptionIFilter, kOptionEFilter,
                                   kOptionVerbose, kOptionCSelect, kOptionCsvMode, kOptionTags,    kOptionsEnd};

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
  void ForEach(Visit visit) {
    for (Row &row : rows_) {
      if (row.groupId == 0) return;
      visit(row);
    }
  }

 private:
  Row *Find(const char (&tag)[8]) {
    for (Row &row : rows_) {
      if (row.groupId == 0) {
        Take(row, tag);
        return &row;
      }
      if (std::strncmp(row.tag, tag, sizeof tag) == 0) return &row;
    }
    return nullptr;
  }

  // A row's own tag is always terminated. One of eight characters loses its last here, and so never matches again:
  // every group that has it gets a row to itself.
  static void Take(Row &row, const char (&tag)[8]) {
    char terminated[sizeof tag + 1] = {};
    std::memcpy(terminated, tag, sizeof tag);
    Str_Strcpy(row.name, terminated, sizeof row.name);
    Str_Strcpy(row.tag, terminated, sizeof row.tag);
    row.groupId = 1;
  }

  Row rows_[512] = {};
};

struct GroupStatsContext {
  ReportUnit unit;
  uint32_t inclusion;
  uint32_t exclusion;
  bool tags;
  TagRows tagRows;
};

// A limit close to the largest amount that the kernel can express is no limit.
uint64_t ClampLimit(uint64_t kb) { return kb > 0xFFFFFFFFF0 ? HVC_KB_NONE : kb; }

void GroupStatsPrintRow(Row &row, ReportUnit unit, bool csv) {
  row.alloc.max = ClampLimit(row.alloc.max);
  row.alloc.minLimit = ClampLimit(row.alloc.minLimit);
  std::string_view(FlagsDescribe(row.flags, GroupFlagNames).Text()).copy(row.flagText, sizeof row.flagText - 1);
  PrintFigures(columns, csv, false, &row, unit);
}

HVC_ReturnStatus GetCapacity(int64_t groupID, GroupCapacityRecord &capacity) {
  const HVC_ReturnStatus status =
      KestrelGroupNodalGet(groupID, NODAL_NODE_sched_groups_stats_capacity, &capacity, sizeof capacity);
  if (status != HVC_OK && status != HVC_NOT_FOUND) {
    Warning("KestrelGroupGetCapacity() failure, error code: %u\n", status);
  }
  return status;
}

// Reads what a row is made of, besides the flags.
HVC_ReturnStatus ReadRow(int64_t groupID, Row &row) {
  GroupNameRecord name = {};
  GroupTagRecord tag = {};
  ParentGroupIDRecord parent = {};
  HVC_ReturnStatus status = Kestrel_GroupGetName(groupID, name);
  if (status == HVC_OK) status = Kestrel_GroupGetTag(groupID, tag);
  if (status == HVC_OK) status = Kestrel_GroupGetParentID(groupID, parent);
  if (status == HVC_OK) status = Kestrel_GroupGetAlloc(groupID, row.alloc);
  if (status == HVC_OK) status = GetCapacity(groupID, row.capacity);
  if (status == HVC_OK) status = KestrelGroupGetMemoryStats(groupID, row.stats);
  std::memcpy(row.name, name.name, sizeof row.name);
  std::memcpy(row.tag, tag.tag, sizeof row.tag);
  row.parentGroupId = parent.parentGroupID;
  return status;
}

HVC_ReturnStatus KestrelGroupStatsCallback(int64_t groupID, uint32_t childCount, bool csv, void *user) {
  auto &context = *static_cast<GroupStatsContext *>(user);
  GroupFlagsRecord flags = {};
  HVC_ReturnStatus status = Kestrel_GroupGetFlags(groupID, flags);
  if (status != HVC_OK) return status;
  // A group without any flag is in no inclusion filter, the default one included.
  if ((flags.flags & context.inclusion) == 0 || (flags.flags & context.exclusion) != 0) return HVC_OK;

  Row row = {};
  row.groupId = static_cast<uint64_t>(groupID);
  row.nChild = childCount;
  row.flags = flags.flags;
  status = ReadRow(groupID, row);
  if (status != HVC_OK) return status;

  if (context.tags && !context.tagRows.Add(row)) {
    Warning("Maximum number of VTag exceeded\n");
    return HVC_NO_MEMORY;
  }
  GroupStatsPrintRow(row, context.unit, csv);
  return HVC_OK;
}

void PrintBanner(const ReportOptions &options, const GroupStatsContext &context) {
  const Banner banner("GROUP STATS", 37);
  banner.Setting("Start Group ID", static_cast<uint64_t>(options.startGroup));
  banner.Setting("No. of levels", options.levels);
  banner.Setting("Unit", WalkUnitName(context.unit));
  banner.Setting("Inclusion filter", FlagsDescribe(context.inclusion, GroupFlagNames).Text());
  banner.Setting("Exclusion filter", FlagsDescribe(context.exclusion, GroupFlagNames).Text());
  banner.SelectedColumns(columns);
}

void PrintTagRows(GroupStatsContext &context, bool csv) {
  std::puts("Virtual tags report");
  context.tagRows.ForEach([&](Row &row) { GroupStatsPrintRow(row, context.unit, csv); });
  TablePrintSeparator(columns, csv);
}

}  // namespace

HVC_ReturnStatus KestrelGroupStatsReport(int argc, char **argv) {
  ReportOptions options;
  HVC_ReturnStatus status = ParseReportOptions(argc, argv, "e:g:i:l:s:u:vqt", kLongOptions, options);
  if (status != HVC_OK) return status;

  static constinit GroupStatsContext context = {};
  context.tags = options.tags;
  status = UnitParse(options.unit, false, context.unit);
  if (status != HVC_OK) return status;
  status = FlagsParseFilter(options.inclusionFilter, GroupFlagNames, context.inclusion, FilterKind::kInclusion);
  if (status != HVC_OK) return status;
  status = FlagsParseFilter(options.exclusionFilter, GroupFlagNames, context.exclusion, FilterKind::kExclusion);
  if (status != HVC_OK) return status;
  ColumnsApplySelection(columns, options.selection);

  if (!options.csv) PrintBanner(options, context);
  TablePrintHead(columns, options.csv);
  status = KestrelTraverseGroups(options.startGroup, options.levels, options.csv, KestrelGroupStatsCallback, &context);
  TablePrintSeparator(columns, options.csv);
  if (options.tags) PrintTagRows(context, options.csv);
  if (options.verbose) TablePrintDescriptions(columns);
  return status;
}

}  // namespace kestrel
