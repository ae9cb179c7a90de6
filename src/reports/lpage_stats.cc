// lpage-stats: how the memory of each virtual machine is backed by large pages, and what kept it from being so.
#include "platkit/nodes.h"
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

constexpr uint32_t kSmallerPerLarger = 512;  // pages of 2 MB in one of 1 GB

struct LPageStatsRow {
  GroupHead head;
  uint32_t nrBackings;     // in units of 2 MB
  uint64_t nrLockSuccess;  // a sum of 32 bits that is shown and summed up in 64, as is the threshold
  uint64_t maxSwapThreshold;
  LPageStatsRecord lpage;
};

using enum Conversion;
using enum FigureSum;
using namespace head_columns;
using Row = LPageStatsRow;

constinit ColumnDesc columns[] = {
    {"name", "Virtual machine name", 20, kS, kInTotal, kName},
    kSchedGrp,
    kParSchedGroup,
    {"worldGrp", "World group ID", 10, kU, kPlain, kLeaderID},  // unsigned here
    {"nrBackings", "Current number of lpage backings", 10, kU, kInTotal, PLAIN(nrBackings).Sum(kAdd)},
    {"nrAllocSuccess", "Number of lpage backing attempts succeeded", 10, kLu, kInTotal,
     PLAIN(lpage.allocSuccess).Sum(kAdd)},
    {"nrLockSuccess", "Number of guest lpage locking attempts", 10, kLu, kInTotal, PLAIN(nrLockSuccess).Sum(kAdd)},
    {"nrBroken", "Number of guest lpage backings broken", 10, kLu, kInTotal, PLAIN(lpage.broken).Sum(kAdd)},
    // The total is the sum of the thresholds, though there is no such threshold anywhere.
    {"maxSwapThreshold", "Current max swap-in threshold to back with lpage", 10, kLu, kInTotal,
     PLAIN(maxSwapThreshold).Sum(kAdd)},
    {"nrFailPinned", "Number of lpage backing attempts failed due to pinning", 10, kLu, kInTotal,
     PLAIN(lpage.failPinned).Sum(kAdd)},
    {"nrFailSwapped", "Number of lpage backing attempts failed to avoid excessive swapins", 10, kLu, kInTotal,
     PLAIN(lpage.failSwapped).Sum(kAdd)},
    {"nrFailPinnedLate", "Number of lpage backing attempts failed due to late pinning", 10, kLu, kInTotal,
     PLAIN(lpage.failPinnedLate).Sum(kAdd)},
    {"nrFailNoMem", "Number of lpage backing attempts failed due to lack of memory", 10, kLu, kInTotal,
     PLAIN(lpage.failNoMem).Sum(kAdd)},
};

constinit Row totals = TotalRow<Row>();

HVC_ReturnStatus PutRow(const GroupVisit &group) {
  Row row = {};
  uint32_t vmmLeaderID = 0;
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) status = Kestrel_GetVmmLeaderID(row.head.leaderID, vmmLeaderID);
  if (status == HVC_OK) {
    status = ReadClientRecord("KestrelLPageGetLPageStats", vmmLeaderID, NODAL_NODE_memory_lpage_vmLPage, row.lpage);
  }
  if (status != HVC_OK) return status;

  row.nrBackings = row.lpage.backings1G * kSmallerPerLarger + row.lpage.backings2M;
  row.nrLockSuccess = row.lpage.lockSuccess2 + row.lpage.lockSuccess;
  row.maxSwapThreshold = row.lpage.maxSwapThreshold;
  group.Put(row);
  return HVC_OK;
}

// All figures are counts. A unit is still accepted, and a wrong one refused, as in the other reports.
constexpr GroupFrame kFrame = {
    .title = "VIRTUAL MACHINE LARGE PAGE STATS",
    .dashes = 58,
    .kinds = HVC_GROUP_VM,
    .unitName = "LPage (2M)",
    .visit = PutRow,
    .totals = &totals,
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
