// swap-stats: the memory of each virtual machine that the host swaps, and the space in its swap files.
#include <string_view>

#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

struct SwapStatsRow {
  GroupHead head;
  VmSwapInfoRecord swap;
  VmmMemoryStatsRecord vmm;
};

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

// The name of a VM's current swapper.
std::string_view SwapperName(uint32_t currentSwapper) { return currentSwapper != 0 ? "hvc" : "vmm"; }

// Some figures have 32 bits in the record, but are shown and summed with 64 bits.
constinit auto columns = ColumnsOf<SwapStatsRow>({
    {"name", "Virtual machine name", 20, kS, [](auto &row) { return Text(row.head.name.name); }, kInTotal},
    SchedGroupColumn<SwapStatsRow>(),
    ParentGroupColumn<SwapStatsRow>(),
    WorldGroupColumn<SwapStatsRow>(),
    {"isSwapping", "is the VM currently swapping out", 10, kC, kYesNo, [](auto &row) { return row.swap.isSwapping; }},
    {"CurSwapper", "hvc or vmm swapper currently active", 10, kS,
     [](auto &row) { return SwapperName(row.swap.currentSwapper); }},
    {"cacheUsage", "Swap slot cache usage", 10, kLu, kKB, [](auto &row) { return uint64_t{row.swap.cacheUsage}; }},
    {"swapoutReady", "Ready-time spent by swap-out client", 10, kLu, [](auto &row) { return row.swap.swapoutReady; }},
    {"swapTgt", "Host swap target", 10, kLu, kKB, [](auto &row) { return row.swap.swapTgt; }, kAdd},
    {"swapped", "Amount swapped by host", 10, kLu, kKB, [](auto &row) { return row.swap.swapped; }, kAdd},
    // "phsyical" must not change: scripts match these texts.
    {"swapRead", "Total guest phsyical memory read, and not released, from swap space", 10, kLu, kKB,
     [](auto &row) { return row.swap.swapRead; }, kAdd},
    {"swapIn", "Total guest phsyical memory swapped in, and released, from swap space", 10, kLu, kKB,
     [](auto &row) { return row.swap.swapIn; }, kAdd},
    {"swapOut", "Total guest physical memory swapped out to swap space", 10, kLu, kKB,
     [](auto &row) { return row.swap.swapOut; }, kAdd},
    {"discarded", "Total swapped memory discarded from swap space", 10, kLu, kKB,
     [](auto &row) { return row.swap.discarded; }, kAdd},
    {"COWSwapper", "Total guest physical memory swapped out which was marked as COW by HVcore", 10, kLu, kKB,
     [](auto &row) { return row.swap.cowSwapper; }, kAdd},
    {"vmmSwapOn", "Number of times vmm swapper was turned on", 10, kLu,
     [](auto &row) { return uint64_t{row.swap.vmmSwapOn}; }, kAdd},
    {"hvcSwapOn", "Number of times hvc swapper was turned on", 10, kLu,
     [](auto &row) { return uint64_t{row.swap.hvcSwapOn}; }, kAdd},
    {"llswapped", "Memory swapped to llswap", 10, kLu, kKB, [](auto &row) { return row.vmm.llswapped; }, kAdd},
    {"llswapUsed", "Total space used in llswap including internal fragmentation", 10, kLu, kKB,
     [](auto &row) { return row.vmm.llswapUsed; }, kAdd},
    {"totalReg", "Total space in the regular swap file", 10, kLu, kKB, [](auto &row) { return row.swap.totalReg; },
     kAdd},
    {"freeReg", "Free space in the regular swap file", 10, kLu, kKB, [](auto &row) { return row.swap.freeReg; }, kAdd},
    {"cptTgt", "Total checkpoint memory to read", 10, kLu, kKB, [](auto &row) { return row.swap.cptTgt; }, kAdd},
    {"cptRead", "Checkpoint memory read from checkpoint file", 10, kLu, kKB, [](auto &row) { return row.swap.cptRead; },
     kAdd},
    {"cptWritten", "Checkpoint memory written to checkpoint file", 10, kLu, kKB,
     [](auto &row) { return row.swap.cptWritten; }, kAdd},
    {"totalMig", "Total space in the migration swap file", 10, kLu, kKB, [](auto &row) { return row.swap.totalMig; },
     kAdd},
    {"freeMig", "Free space in the migration swap file", 10, kLu, kKB, [](auto &row) { return row.swap.freeMig; },
     kAdd},
    {"gblSwapRead", "Guest physical memory read from global swap file", 10, kLu, kKB,
     [](auto &row) { return row.swap.gblSwapRead; }, kAdd},
    {"gblSwapIn", "Guest physical memory swapped in from global swap file", 10, kLu, kKB,
     [](auto &row) { return row.swap.gblSwapIn; }, kAdd},
    {"gblSwapOut", "Guest physical memory swapped out to global swap file", 10, kLu, kKB,
     [](auto &row) { return row.swap.gblSwapOut; }, kAdd},
});

constexpr SwapStatsRow kTotal = TotalLabel<SwapStatsRow>();

HVC_ReturnStatus KestrelSwapGetSwapStats(uint32_t vmmLeaderID, VmSwapInfoRecord &swap) {
  return ReadClientRecord(__func__, vmmLeaderID, nodes::kVmSwapInfo, swap);
}

HVC_ReturnStatus KestrelSwapStatsCallback(const GroupVisit &group) {
  SwapStatsRow row = {};
  uint32_t vmmLeaderID = 0;
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) status = Kestrel_GetVmmLeaderID(row.head.leaderID, vmmLeaderID);
  if (status == HVC_OK) status = KestrelSwapGetSwapStats(vmmLeaderID, row.swap);
  if (status == HVC_OK) status = KestrelVMGetVMMStats(row.head.leaderID, row.vmm);
  if (status == HVC_OK) group.PrintRow(row);
  return status;
}

constexpr GroupFrame kFrame = {
    .title = "VIRTUAL MACHINE SWAP STATS",
    .dashes = 52,
    .kinds = HVC_GROUP_VM,
    .callback = KestrelSwapStatsCallback,
    .totalLabel = &kTotal,
};

}  // namespace

constinit const Report kSwapStats = {
    .name = "swap-stats",
    .summary = "the memory of each virtual machine that the host swaps, and the space in its swap files",
    .options = kGroupOptions,
    .columns = columns,
    .sums = Sums::kTotalRow,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
