// uw-stats: how the address space of each user world is reserved, backed, shared, pinned and swapped.
#include <string_view>

#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

// The types for -i and -e. A user world of a VM has both flags, so its type is "(all)".
constexpr FlagName kTypes[] = {
    {HVC_GROUP_USER_WORLD, "uw"},
    {HVC_GROUP_VM, "vm"},
};

struct UwStatsRow {
  GroupHead head;
  char type[16];
  UwMemoryStatsRecord uw;
};

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

// A maximum close to the largest amount that the kernel can express means unlimited.
uint64_t Limit(uint64_t kb) { return kb > 0xFFFFFFFFEF ? HVC_KB_NONE : kb; }

uint64_t ConsumedKB(const UwMemoryStatsRecord &uw) { return uw.mapped + uw.zipped - uw.sharedSaved - uw.zipSaved; }

// The total row has no label, because its name column is blank.
constinit auto columns = ColumnsOf<UwStatsRow>({
    {"type", "Type of user-world (uw: stand-alone, vm: VM-based)", 20, kS, [](auto &row) { return Text(row.type); }},
    {"name", "User world name", 20, kS, [](auto &row) { return Text(row.head.name.name); }},
    SchedGroupColumn<UwStatsRow>(),
    ParentGroupColumn<UwStatsRow>(),
    WorldGroupColumn<UwStatsRow>(),
    {"min", "Configured memory reservation", 10, kLd, kKB, [](auto &row) { return row.uw.min; }, kAdd},
    {"max", "Configured memory limit", 10, kLd, kKB, [](auto &row) { return Limit(row.uw.max); }},
    {"minLimit", "Configured memory reservation limit", 10, kLd, kKB, [](auto &row) { return Limit(row.uw.minLimit); }},
    {"shares", "Configured memory shares", 10, kLd, [](auto &row) { return row.uw.shares; }},
    {"totalResv", "Total memory reservation", 10, kLu, kKB, [](auto &row) { return row.uw.totalResv; }, kAdd},
    {"pinnedResv", "Memory reserved for pinning purposes", 10, kLu, kKB, [](auto &row) { return row.uw.pinnedResv; },
     kAdd},
    {"memSizeLimit", "Limit on virtual address-space size", 10, kLd, kKB,
     [](auto &row) { return int64_t{row.uw.memSizeLimit}; }},
    {"memSize", "Current virtual address-space size", 10, kLu, kKB, [](auto &row) { return row.uw.memSize; }, kAdd},
    {"memBStore", "Memory backing store consumed", 10, kLu, kKB, [](auto &row) { return row.uw.memBStore; }, kAdd},
    {"swapBStore", "Swap backing store consumed", 10, kLu, kKB, [](auto &row) { return row.uw.swapBStore; }, kAdd},
    {"mapped", "Virtual address-space size backed by physical memory (private + shared + pinned)", 10, kLu, kKB,
     [](auto &row) { return row.uw.mapped; }, kAdd},
    {"touched", "Virtual memory touched used by VM", 10, kLu, kKB, [](auto &row) { return row.uw.touched; }, kAdd},
    {"swappable", "Non-shared mapped memory that can be reclaimed", 10, kLu, kKB,
     [](auto &row) { return row.uw.swappable; }, kAdd},
    {"cow", "COW memory", 10, kLu, kKB, [](auto &row) { return row.uw.cow; }, kAdd},
    {"pageable", "Accounted pageable memory", 10, kLu, kKB, [](auto &row) { return row.uw.pageable; }, kAdd},
    {"pageableUnacct", "Unaccounted pageable memory", 10, kLu, kKB, [](auto &row) { return row.uw.pageableUnacct; },
     kAdd},
    {"pinned", "Non-swappable mapped memory", 10, kLu, kKB, [](auto &row) { return row.uw.pinned; }, kAdd},
    {"prealloced", "Preallocated memory", 10, kLu, kKB, [](auto &row) { return row.uw.prealloced; }, kAdd},
    {"shm", "SHM memory", 10, kLu, kKB, [](auto &row) { return row.uw.shm; }, kAdd},
    {"allocTgt", "Physical memory allocation target", 10, kLu, kKB, [](auto &row) { return row.uw.allocTgt; }, kAdd},
    {"consumed", "Physical memory consumed", 10, kLu, kKB, [](auto &row) { return ConsumedKB(row.uw); }, kAdd},
    {"swapTgt", "Swap target", 10, kLu, kKB, [](auto &row) { return row.uw.swapTgt; }, kAdd},
    {"swapped", "Memory swapped to secondary storage", 10, kLu, kKB, [](auto &row) { return row.uw.swapped; }, kAdd},
    {"useReliableMem", "Uses Reliable memory", 1, kS, kYesNo, [](auto &row) { return row.uw.useReliableMem; }},
    {"swapScope", "Swap scope", 1, kLu, [](auto &row) { return row.uw.swapScope; }},
});

constexpr UwStatsRow kNoLabel = {};

HVC_ReturnStatus KestrelUWGetUWStats(uint32_t leaderID, UwMemoryStatsRecord &uw) {
  return ReadClientRecord(__func__, leaderID, nodes::kUwMemoryStats, uw);
}

HVC_ReturnStatus KestrelUwStatsCallback(const GroupVisit &group) {
  UwStatsRow row = {};
  const uint32_t type = group.flags & (HVC_GROUP_USER_WORLD | HVC_GROUP_VM);
  std::string_view(FlagsDescribe(type, kTypes).Text()).copy(row.type, sizeof row.type - 1);
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) status = KestrelUWGetUWStats(row.head.leaderID, row.uw);
  if (status == HVC_OK) group.PrintRow(row);
  return status;
}

constexpr GroupFrame kFrame = {
    .title = "USER-WORLD STATS",
    .dashes = 42,
    .kinds = HVC_GROUP_USER_WORLD,
    .callback = KestrelUwStatsCallback,
    .totalLabel = &kNoLabel,
};

}  // namespace

constinit const Report kUwStats = {
    .name = "uw-stats",
    .summary = "how the address space of each user world is reserved and backed",
    .options = {"e:g:i:l:s:u:vq"},
    .columns = columns,
    .filterFlags = kTypes,
    .sums = Sums::kTotalRow,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
