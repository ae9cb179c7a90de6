// guest-stats: the memory figures that the guest of each virtual machine reports.
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

struct GuestRow {
  GroupHead head;
  GuestStatsRecord guest;
};

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

// Figures print as signed numbers; -1 means not available. The totals omit such figures.
constinit auto columns = ColumnsOf<GuestRow>({
    {"name", "Virtual machine name", 20, kS, [](auto &row) { return Text(row.head.name.name); }, kInTotal},
    SchedGroupColumn<GuestRow>(),
    ParentGroupColumn<GuestRow>(),
    WorldGroupColumn<GuestRow>(),
    {"memTotal", "Total memory", 10, kLd, kKB, [](auto &row) { return row.guest.memTotal; }, kAddAvailable},
    {"lpageTotal", "Total large pages available for guest apps", 10, kD, [](auto &row) { return row.guest.lpageTotal; },
     kAddAvailable},
    {"memNeeded", "Memory required by current workload", 10, kLd, kKB, [](auto &row) { return row.guest.memNeeded; },
     kAddAvailable},
});

constexpr GuestRow kTotal = TotalLabel<GuestRow>();

HVC_ReturnStatus KestrelGuestGetStats(uint32_t leaderID, GuestStatsRecord &guest) {
  return ReadClientRecord(__func__, leaderID, nodes::kGuestStats, guest);
}

HVC_ReturnStatus KestrelGuestGroupCallback(const GroupVisit &group) {
  GuestRow row = {};
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) status = KestrelGuestGetStats(row.head.leaderID, row.guest);
  if (status == HVC_OK) group.PrintRow(row);
  return status;
}

constexpr GroupFrame kFrame = {
    .title = "GUEST STATS",
    .dashes = 37,
    .kinds = HVC_GROUP_VM,
    .callback = KestrelGuestGroupCallback,
    .totalLabel = &kTotal,
};

}  // namespace

constinit const Report kGuestStats = {
    .name = "guest-stats",
    .summary = "the memory figures that the guest of each virtual machine reports",
    .options = kGroupOptions,
    .columns = columns,
    .sums = Sums::kTotalRow,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
