// guest-stats: what the guest of each virtual machine says of its own memory.
#include "platkit/nodes.h"
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

struct GuestStatsRow {
  GroupHead head;
  GuestStatsRecord guest;
};

using enum Conversion;
using enum FigureSum;
using namespace head_columns;
using Row = GuestStatsRow;

// Figures print signed, so that one which is not available shows as -1. Such figures are not in the totals.
constinit ColumnDesc columns[] = {
    {"name", "Virtual machine name", 20, kS, kInTotal, kName},
    kSchedGrp,
    kParSchedGroup,
    kWorldGrp,
    {"memTotal", "Total memory", 10, kLd, kInTotal, KB(guest.memTotal).Sum(kAddAvailable)},
    {"lpageTotal", "Total large pages available for guest apps", 10, kD, kInTotal,
     PLAIN(guest.lpageTotal).Sum(kAddAvailable)},
    {"memNeeded", "Memory required by current workload", 10, kLd, kInTotal, KB(guest.memNeeded).Sum(kAddAvailable)},
};

constinit Row totals = TotalRow<Row>();

HVC_ReturnStatus PutRow(const GroupVisit &group) {
  Row row = {};
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) {
    status = ReadClientRecord("KestrelGuestGetStats", row.head.leaderID, NODAL_NODE_sched_memClients_kestrel_guest,
                              row.guest);
  }
  if (status == HVC_OK) group.Put(row);
  return status;
}

constexpr GroupFrame kFrame = {
    .title = "GUEST STATS",
    .dashes = 37,
    .kinds = HVC_GROUP_VM,
    .visit = PutRow,
    .totals = &totals,
};

}  // namespace

constinit const Report kGuestStats = {
    .name = "guest-stats",
    .summary = "what the guest of each virtual machine says of its memory",
    .options = kGroupOptions,
    .columns = columns,
    .sums = Sums::kTotalRow,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
