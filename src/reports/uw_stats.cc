// uw-stats: how the address space of each user world is reserved, backed, shared, pinned and swapped.
#include <string_view>

#include "platkit/nodes.h"
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

// The types that the filters know. A user world of a VM has both flags, so its type reads "(all)".
constexpr FlagName kTypes[] = {
    {HVC_GROUP_USER_WORLD, "uw"},
    {HVC_GROUP_VM, "vm"},
};

struct UwStatsRow {
  GroupHead head;
  char type[16];
  // In 64 bits, as their columns show them: a negative one is converted as such.
  int64_t shares;
  int64_t memSizeLimit;
  uint64_t consumed;
  UwMemoryStatsRecord uw;
};

using enum Conversion;
using enum FigureSum;
using namespace head_columns;
using Row = UwStatsRow;

// The name is not in the total row, which therefore has no label.
constinit ColumnDesc columns[] = {
    {"type", "Type of user-world (uw: stand-alone, vm: VM-based)", 20, kS, kPlain, PLAIN(type)},
    {"name", "User world name", 20, kS, kPlain, kName},
    kSchedGrp,
    kParSchedGroup,
    kWorldGrp,
    {"min", "Configured memory reservation", 10, kLd, kInTotal, KB(uw.min).Sum(kAdd)},
    {"max", "Configured memory limit", 10, kLd, kPlain, KB(uw.max)},
    {"minLimit", "Configured memory reservation limit", 10, kLd, kPlain, KB(uw.minLimit)},
    {"shares", "Configured memory shares", 10, kLd, kPlain, PLAIN(shares)},
    {"totalResv", "Total memory reservation", 10, kLu, kInTotal, KB(uw.totalResv).Sum(kAdd)},
    {"pinnedResv", "Memory reserved for pinning purposes", 10, kLu, kInTotal, KB(uw.pinnedResv).Sum(kAdd)},
    {"memSizeLimit", "Limit on virtual address-space size", 10, kLd, kPlain, KB(memSizeLimit)},
    {"memSize", "Current virtual address-space size", 10, kLu, kInTotal, KB(uw.memSize).Sum(kAdd)},
    {"memBStore", "Memory backing store consumed", 10, kLu, kInTotal, KB(uw.memBStore).Sum(kAdd)},
    {"swapBStore", "Swap backing store consumed", 10, kLu, kInTotal, KB(uw.swapBStore).Sum(kAdd)},
    {"mapped", "Virtual address-space size backed by physical memory (private + shared + pinned)", 10, kLu, kInTotal,
     KB(uw.mapped).Sum(kAdd)},
    {"touched", "Virtual memory touched used by VM", 10, kLu, kInTotal, KB(uw.touched).Sum(kAdd)},
    {"swappable", "Non-shared mapped memory that can be reclaimed", 10, kLu, kInTotal, KB(uw.swappable).Sum(kAdd)},
    {"cow", "COW memory", 10, kLu, kInTotal, KB(uw.cow).Sum(kAdd)},
    {"pageable", "Accounted pageable memory", 10, kLu, kInTotal, KB(uw.pageable).Sum(kAdd)},
    {"pageableUnacct", "Unaccounted pageable memory", 10, kLu, kInTotal, KB(uw.pageableUnacct).Sum(kAdd)},
    {"pinned", "Non-swappable mapped memory", 10, kLu, kInTotal, KB(uw.pinned).Sum(kAdd)},
    {"prealloced", "Preallocated memory", 10, kLu, kInTotal, KB(uw.prealloced).Sum(kAdd)},
    {"shm", "SHM memory", 10, kLu, kInTotal, KB(uw.shm).Sum(kAdd)},
    {"allocTgt", "Physical memory allocation target", 10, kLu, kInTotal, KB(uw.allocTgt).Sum(kAdd)},
    {"consumed", "Physical memory consumed", 10, kLu, kInTotal, KB(consumed).Sum(kAdd)},
    {"swapTgt", "Swap target", 10, kLu, kInTotal, KB(uw.swapTgt).Sum(kAdd)},
    {"swapped", "Memory swapped to secondary storage", 10, kLu, kInTotal, KB(uw.swapped).Sum(kAdd)},
    {"useReliableMem", "Uses Reliable memory", 1, kS, kPlain, YES_NO(uw.useReliableMem)},
    {"swapScope", "Swap scope", 1, kLu, kPlain, PLAIN(uw.swapScope)},
};

constinit Row totals = {};

// A limit close to the largest amount that the kernel can express is no limit.
uint64_t Limit(uint64_t kb) { return kb > 0xFFFFFFFFEF ? HVC_KB_NONE : kb; }

HVC_ReturnStatus PutRow(const GroupVisit &group) {
  Row row = {};
  const uint32_t type = group.flags & (HVC_GROUP_USER_WORLD | HVC_GROUP_VM);
  std::string_view(FlagsDescribe(type, kTypes).Text()).copy(row.type, sizeof row.type - 1);
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) {
    status = ReadClientRecord("KestrelUWGetUWStats", row.head.leaderID, NODAL_NODE_sched_memClients_kestrel_uw, row.uw);
  }
  if (status != HVC_OK) return status;

  row.uw.max = Limit(row.uw.max);
  row.uw.minLimit = Limit(row.uw.minLimit);
  row.shares = row.uw.shares;
  row.memSizeLimit = row.uw.memSizeLimit;
  row.consumed = row.uw.mapped + row.uw.zipped - row.uw.sharedSaved - row.uw.zipSaved;
  group.Put(row);
  return HVC_OK;
}

constexpr GroupFrame kFrame = {
    .title = "USER-WORLD STATS",
    .dashes = 42,
    .kinds = HVC_GROUP_USER_WORLD,
    .visit = PutRow,
    .totals = &totals,
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
