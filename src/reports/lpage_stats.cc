// lpage-stats: the large pages that back each virtual machine, and failed attempts to use large pages.
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

constexpr uint32_t k2MPagesPer1G = 512;

struct LPageRow {
  GroupHead head;
  LPageStatsRecord lpage;
};

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

constinit auto columns = ColumnsOf<LPageRow>({
    {"name", "Virtual machine name", 20, kS, [](auto &row) { return Text(row.head.name.name); }, kInTotal},
    SchedGroupColumn<LPageRow>(),
    ParentGroupColumn<LPageRow>(),
    WorldGroupColumn<LPageRow>(kU),
    {"nrBackings", "Current number of lpage backings", 10, kU,
     [](auto &row) { return row.lpage.backings1G * k2MPagesPer1G + row.lpage.backings2M; }, kAdd},
    {"nrAllocSuccess", "Number of lpage backing attempts succeeded", 10, kLu,
     [](auto &row) { return row.lpage.allocSuccess; }, kAdd},
    {"nrLockSuccess", "Number of guest lpage locking attempts", 10, kLu,
     [](auto &row) { return uint64_t{row.lpage.lockSuccess2 + row.lpage.lockSuccess}; }, kAdd},
    {"nrBroken", "Number of guest lpage backings broken", 10, kLu, [](auto &row) { return row.lpage.broken; }, kAdd},
    // The total is the sum of the thresholds.
    {"maxSwapThreshold", "Current max swap-in threshold to back with lpage", 10, kLu,
     [](auto &row) { return uint64_t{row.lpage.maxSwapThreshold}; }, kAdd},
    {"nrFailPinned", "Number of lpage backing attempts failed due to pinning", 10, kLu,
     [](auto &row) { return row.lpage.failPinned; }, kAdd},
    {"nrFailSwapped", "Number of lpage backing attempts failed to avoid excessive swapins", 10, kLu,
     [](auto &row) { return row.lpage.failSwapped; }, kAdd},
    {"nrFailPinnedLate", "Number of lpage backing attempts failed due to late pinning", 10, kLu,
     [](auto &row) { return row.lpage.failPinnedLate; }, kAdd},
    {"nrFailNoMem", "Number of lpage backing attempts failed due to lack of memory", 10, kLu,
     [](auto &row) { return row.lpage.failNoMem; }, kAdd},
});

constexpr LPageRow kTotal = TotalLabel<LPageRow>();

HVC_ReturnStatus KestrelLPageGetLPageStats(uint32_t vmmLeaderID, LPageStatsRecord &lpage) {
  return ReadClientRecord(__func__, vmmLeaderID, nodes::kLPageStats, lpage);
}

HVC_ReturnStatus KestrelLPageGroupCallback(const GroupVisit &group) {
  LPageRow row = {};
  uint32_t vmmLeaderID = 0;
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) status = Kestrel_GetVmmLeaderID(row.head.leaderID, vmmLeaderID);
  if (status == HVC_OK) status = KestrelLPageGetLPageStats(vmmLeaderID, row.lpage);
  if (status == HVC_OK) group.PrintRow(row);
  return status;
}

// All figures are counts, so -u changes nothing; an invalid unit is still an error.
constexpr GroupFrame kFrame = {
    .title = "VIRTUAL MACHINE LARGE PAGE STATS",
    .dashes = 58,
    .kinds = HVC_GROUP_VM,
    .unitName = "LPage (2M)",
    .callback = KestrelLPageGroupCallback,
    .totalLabel = &kTotal,
};

}  // namespace

constinit const Report kLPageStats = {
    .name = "lpage-stats",
    .summary = "how each virtual machine is backed with large pages",
    .options = kGroupOptions,
    .columns = columns,
    .sums = Sums::kTotalRow,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
