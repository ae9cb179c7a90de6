// vm-stats: how the memory of each virtual machine is backed: mapped, shared, compressed, ballooned, swapped.
#include <algorithm>

#include "src/groups/group_queries.h"
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

struct VmStatsRow {
  GroupHead head;
  VmmAllocRecord alloc;
  VmmMemoryStatsRecord vmm;
  VmSwapInfoRecord swap;
  GroupMemoryStatsRecord group;
};

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

// An amount of the VM's allocation, truncated to 32 bits.
int32_t Amount(uint64_t kb) { return static_cast<int32_t>(kb); }

// A maximum of the VM's allocation, truncated to 32 bits. A negative amount becomes -1, which means unlimited.
int32_t Limit(uint64_t kb) { return std::max(Amount(kb), -1); }

uint64_t ConsumedKB(const VmmMemoryStatsRecord &vmm) {
  return vmm.zipped + vmm.mapped - vmm.sharedSaved - vmm.zipSaved;
}

constinit auto columns = ColumnsOf<VmStatsRow>({
    {"name", "Virtual machine name", 15, kS, [](auto &row) { return Text(row.head.name.name); }, kInTotal},
    {"b", "Is balloon driver active?", 1, kC, kYesNo, [](auto &row) { return row.vmm.balloonActive; }},
    SchedGroupColumn<VmStatsRow>(),
    ParentGroupColumn<VmStatsRow>(),
    WorldGroupColumn<VmStatsRow>(),
    {"memSizeLimit", "Upper bound on guest physical memory size", 10, kLu, kKB,
     [](auto &row) { return row.vmm.memSizeLimit; }, kAdd},
    {"memSize", "Guest physical memory size", 10, kLu, kKB, [](auto &row) { return row.vmm.memSize; }, kAdd},
    {"min", "Configured host physical memory reservation for guest", 10, kLd, kKB,
     [](auto &row) { return Amount(row.alloc.min); }, kAdd},
    {"max", "Configured host physical memory limit for guest", 10, kLd, kKB,
     [](auto &row) { return Limit(row.alloc.max); }},
    {"minLimit", "Configured upper bound for VM reservation (includes ovhdResv)", 10, kLd, kKB,
     [](auto &row) { return Limit(row.alloc.minLimit); }},
    {"shares", "Configured shares", 10, kLd, [](auto &row) { return row.alloc.shares; }},
    {"ovhdResv", "Reserved overhead memory", 10, kLu, kKB, [](auto &row) { return row.group.ovhdResv; }, kAdd},
    {"ovhd", "Consumed overhead memory", 10, kLu, kKB, [](auto &row) { return row.group.ovhd; }, kAdd},
    {"allocTgt", "Host physical memory allocation target", 10, kLu, kKB, [](auto &row) { return row.vmm.allocTgt; },
     kAdd},
    {"consumed", "Host physical memory consumed by guest", 10, kLu, kKB, [](auto &row) { return ConsumedKB(row.vmm); },
     kAdd},
    {"balloonTgt", "Target balloon size", 10, kLu, kKB, [](auto &row) { return row.vmm.balloonTgt; }, kAdd},
    {"ballooned", "Actual balloon size", 10, kLu, kKB, [](auto &row) { return row.vmm.ballooned; }, kAdd},
    {"swapTgt", "Host swap target", 10, kLu, kKB, [](auto &row) { return row.vmm.swapTgt; }, kAdd},
    {"swapped", "Amount swapped by host", 10, kLu, kKB, [](auto &row) { return row.swap.swapped; }, kAdd},
    {"mapped", "Guest physical memory backed by host memory", 10, kLu, kKB, [](auto &row) { return row.vmm.mapped; },
     kAdd},
    {"touched", "Guest physical memory actively used by VM", 10, kLu, kKB, [](auto &row) { return row.vmm.touched; },
     kAdd},
    {"zipped", "Guest physical memory that is compressed", 10, kLu, kKB, [](auto &row) { return row.vmm.zipped; },
     kAdd},
    {"vpmemRO", "Guest physical persistent memory that is cached read-only", 10, kLu, kKB,
     [](auto &row) { return row.vmm.vpmemRO; }, kAdd},
    {"vpmemRW", "Guest physical persistent memory that is cached read-write", 10, kLu, kKB,
     [](auto &row) { return row.vmm.vpmemRW; }, kAdd},
    {"vpmemUC", "Guest physical persistent memory that is not yet cached", 10, kLu, kKB,
     [](auto &row) { return row.vmm.vpmemUC; }, kAdd},
    {"zipSaved", "Host physical memory saved by compression", 10, kLu, kKB, [](auto &row) { return row.vmm.zipSaved; },
     kAdd},
    {"shared", "Subset of mapped that is marked COW as a result of page-sharing", 10, kLu, kKB,
     [](auto &row) { return row.vmm.shared; }, kAdd},
    {"zero", "Subset of shared pages that are zero-filled", 10, kLu, kKB, [](auto &row) { return row.vmm.zero; }, kAdd},
    {"sharedSaved", "Host physical memory saved as a result of page-sharing", 10, kLu, kKB,
     [](auto &row) { return row.vmm.sharedSaved; }, kAdd},
    {"useReliableMem", "Uses Reliable memory", 1, kS, kYesNo, [](auto &row) { return row.vmm.useReliableMem; }},
    {"swapScope", "Swap scope", 1, kLu, [](auto &row) { return row.vmm.swapScope; }},
});

constexpr VmStatsRow kTotal = TotalLabel<VmStatsRow>();

// Reads the swap figures, which belong to the client of the VMM leader.
HVC_ReturnStatus KestrelVMGetSwapStats(uint32_t leaderID, VmSwapInfoRecord &swap) {
  uint32_t vmmLeaderID = 0;
  const HVC_ReturnStatus status = Kestrel_GetVmmLeaderID(leaderID, vmmLeaderID);
  if (status != HVC_OK) return status;
  return ReadClientRecord(__func__, vmmLeaderID, nodes::kVmSwapInfo, swap);
}

HVC_ReturnStatus KestrelVmStatsCallback(const GroupVisit &group) {
  VmStatsRow row = {};
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) status = Kestrel_GroupGetVMMAlloc(group.groupID, row.alloc);
  if (status == HVC_OK) status = KestrelVMGetVMMStats(row.head.leaderID, row.vmm);
  if (status == HVC_OK) status = KestrelVMGetSwapStats(row.head.leaderID, row.swap);
  if (status == HVC_OK) status = KestrelGroupGetMemoryStats(group.groupID, row.group);
  if (status == HVC_OK) group.PrintRow(row);
  return status;
}

constexpr GroupFrame kFrame = {
    .title = "VIRTUAL MACHINE STATS",
    .dashes = 47,
    .kinds = HVC_GROUP_VM,
    .callback = KestrelVmStatsCallback,
    .totalLabel = &kTotal,
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
