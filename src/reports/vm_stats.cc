// vm-stats: how the memory of each virtual machine is backed: mapped, shared, compressed, ballooned, swapped.
#include "platkit/nodes.h"
#include "src/groups/group_queries.h"
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

struct VmStatsRow {
  GroupHead head;
  // The VM's allocation, kept in 32 bits.
  int32_t min;
  int32_t max;
  int32_t minLimit;
  int32_t shares;
  uint64_t consumed;
  VmmMemoryStatsRecord vmm;
  VmSwapInfoRecord swap;
  GroupMemoryStatsRecord group;
};

using enum Conversion;
using enum FigureSum;
using namespace head_columns;
using Row = VmStatsRow;

constinit ColumnDesc columns[] = {
    {"name", "Virtual machine name", 15, kS, kInTotal, kName},
    {"b", "Is balloon driver active?", 1, kC, kPlain, YES_NO(vmm.balloonActive)},
    kSchedGrp,
    kParSchedGroup,
    kWorldGrp,
    {"memSizeLimit", "Upper bound on guest physical memory size", 10, kLu, kInTotal, KB(vmm.memSizeLimit).Sum(kAdd)},
    {"memSize", "Guest physical memory size", 10, kLu, kInTotal, KB(vmm.memSize).Sum(kAdd)},
    {"min", "Configured host physical memory reservation for guest", 10, kLd, kInTotal, KB(min).Sum(kAdd)},
    {"max", "Configured host physical memory limit for guest", 10, kLd, kPlain, KB(max)},
    {"minLimit", "Configured upper bound for VM reservation (includes ovhdResv)", 10, kLd, kPlain, KB(minLimit)},
    {"shares", "Configured shares", 10, kLd, kPlain, PLAIN(shares)},
    {"ovhdResv", "Reserved overhead memory", 10, kLu, kInTotal, KB(group.ovhdResv).Sum(kAdd)},
    {"ovhd", "Consumed overhead memory", 10, kLu, kInTotal, KB(group.ovhd).Sum(kAdd)},
    {"allocTgt", "Host physical memory allocation target", 10, kLu, kInTotal, KB(vmm.allocTgt).Sum(kAdd)},
    {"consumed", "Host physical memory consumed by guest", 10, kLu, kInTotal, KB(consumed).Sum(kAdd)},
    {"balloonTgt", "Target balloon size", 10, kLu, kInTotal, KB(vmm.balloonTgt).Sum(kAdd)},
    {"ballooned", "Actual balloon size", 10, kLu, kInTotal, KB(vmm.ballooned).Sum(kAdd)},
    {"swapTgt", "Host swap target", 10, kLu, kInTotal, KB(vmm.swapTgt).Sum(kAdd)},
    {"swapped", "Amount swapped by host", 10, kLu, kInTotal, KB(swap.swapped).Sum(kAdd)},
    {"mapped", "Guest physical memory backed by host memory", 10, kLu, kInTotal, KB(vmm.mapped).Sum(kAdd)},
    {"touched", "Guest physical memory actively used by VM", 10, kLu, kInTotal, KB(vmm.touched).Sum(kAdd)},
    {"zipped", "Guest physical memory that is compressed", 10, kLu, kInTotal, KB(vmm.zipped).Sum(kAdd)},
    {"vpmemRO", "Guest physical persistent memory that is cached read-only", 10, kLu, kInTotal,
     KB(vmm.vpmemRO).Sum(kAdd)},
    {"vpmemRW", "Guest physical persistent memory that is cached read-write", 10, kLu, kInTotal,
     KB(vmm.vpmemRW).Sum(kAdd)},
    {"vpmemUC", "Guest physical persistent memory that is not yet cached", 10, kLu, kInTotal,
     KB(vmm.vpmemUC).Sum(kAdd)},
    {"zipSaved", "Host physical memory saved by compression", 10, kLu, kInTotal, KB(vmm.zipSaved).Sum(kAdd)},
    {"shared", "Subset of mapped that is marked COW as a result of page-sharing", 10, kLu, kInTotal,
     KB(vmm.shared).Sum(kAdd)},
    {"zero", "Subset of shared pages that are zero-filled", 10, kLu, kInTotal, KB(vmm.zero).Sum(kAdd)},
    {"sharedSaved", "Host physical memory saved as a result of page-sharing", 10, kLu, kInTotal,
     KB(vmm.sharedSaved).Sum(kAdd)},
    {"useReliableMem", "Uses Reliable memory", 1, kS, kPlain, YES_NO(vmm.useReliableMem)},
    {"swapScope", "Swap scope", 1, kLu, kPlain, PLAIN(vmm.swapScope)},
};

constinit Row totals = TotalRow<Row>();

// In 32 bits, a limit beyond what they hold may come out negative: no limit.
int32_t Limit(uint64_t kb) {
  const auto limit = static_cast<int32_t>(kb);
  return limit < 0 ? -1 : limit;
}

HVC_ReturnStatus ReadAlloc(int64_t groupID, Row &row) {
  VmmAllocRecord alloc = {};
  const HVC_ReturnStatus status = Kestrel_GroupGetVMMAlloc(groupID, alloc);
  row.min = static_cast<int32_t>(alloc.min);
  row.max = Limit(alloc.max);
  row.minLimit = Limit(alloc.minLimit);
  row.shares = alloc.shares;
  return status;
}

// The swap figures are those of the monitor's own client.
HVC_ReturnStatus ReadSwapInfo(uint32_t leaderID, VmSwapInfoRecord &swap) {
  uint32_t vmmLeaderID = 0;
  const HVC_ReturnStatus status = Kestrel_GetVmmLeaderID(leaderID, vmmLeaderID);
  if (status != HVC_OK) return status;
  return ReadClientRecord("KestrelVMGetSwapStats", vmmLeaderID, NODAL_NODE_sched_memClients_swapInfo, swap);
}

HVC_ReturnStatus PutRow(const GroupVisit &group) {
  Row row = {};
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) status = ReadAlloc(group.groupID, row);
  if (status == HVC_OK) {
    status =
        ReadClientRecord("KestrelVMGetVMMStats", row.head.leaderID, NODAL_NODE_sched_memClients_kestrel_vmm, row.vmm);
  }
  if (status == HVC_OK) status = ReadSwapInfo(row.head.leaderID, row.swap);
  if (status == HVC_OK) status = KestrelGroupGetMemoryStats(group.groupID, row.group);
  if (status != HVC_OK) return status;

  row.consumed = row.vmm.zipped + row.vmm.mapped - row.vmm.sharedSaved - row.vmm.zipSaved;
  group.Put(row);
  return HVC_OK;
}

constexpr GroupFrame kFrame = {
    .title = "VIRTUAL MACHINE STATS",
    .dashes = 47,
    .kinds = HVC_GROUP_VM,
    .visit = PutRow,
    .totals = &totals,
};

}  // namespace

constinit const Report kVmStats = {
    .name = "vm-stats",
    .summary = "how the memory of each virtual machine is backed",
    .options = kGroupOptions,
    .columns = columns,
    .sums = Sums::kTotalRow,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
