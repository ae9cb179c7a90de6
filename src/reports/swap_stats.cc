// swap-stats: what the host swaps of each virtual machine, by which swapper, and the room in its swap files.
#include <string_view>

#include "platkit/nodes.h"
#include "src/groups/mem_clients.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"

namespace kestrel {
namespace {

struct SwapStatsRow {
  GroupHead head;
  char curSwapper[4];
  // Narrow in the record, but shown and summed in 64 bits.
  uint64_t cacheUsage;
  uint64_t vmmSwapOn;
  uint64_t hvcSwapOn;
  VmSwapInfoRecord swap;
  VmmMemoryStatsRecord vmm;
};

using enum Conversion;
using enum FigureSum;
using namespace head_columns;
using Row = SwapStatsRow;

constinit ColumnDesc columns[] = {
    {"name", "Virtual machine name", 20, kS, kInTotal, kName},
    kSchedGrp,
    kParSchedGroup,
    kWorldGrp,
    {"isSwapping", "is the VM currently swapping out", 10, kC, kPlain, YES_NO(swap.isSwapping)},
    {"CurSwapper", "hvc or vmm swapper currently active", 10, kS, kPlain, PLAIN(curSwapper)},
    {"cacheUsage", "Swap slot cache usage", 10, kLu, kPlain, KB(cacheUsage)},
    {"swapoutReady", "Ready-time spent by swap-out client", 10, kLu, kPlain, PLAIN(swap.swapoutReady)},
    {"swapTgt", "Host swap target", 10, kLu, kInTotal, KB(swap.swapTgt).Sum(kAdd)},
    {"swapped", "Amount swapped by host", 10, kLu, kInTotal, KB(swap.swapped).Sum(kAdd)},
    // "phsyical" is how the reports' readers know these lines.
    {"swapRead", "Total guest phsyical memory read, and not released, from swap space", 10, kLu, kInTotal,
     KB(swap.swapRead).Sum(kAdd)},
    {"swapIn", "Total guest phsyical memory swapped in, and released, from swap space", 10, kLu, kInTotal,
     KB(swap.swapIn).Sum(kAdd)},
    {"swapOut", "Total guest physical memory swapped out to swap space", 10, kLu, kInTotal, KB(swap.swapOut).Sum(kAdd)},
    {"discarded", "Total swapped memory discarded from swap space", 10, kLu, kInTotal, KB(swap.discarded).Sum(kAdd)},
    {"COWSwapper", "Total guest physical memory swapped out which was marked as COW by HVcore", 10, kLu, kInTotal,
     KB(swap.cowSwapper).Sum(kAdd)},
    {"vmmSwapOn", "Number of times vmm swapper was turned on", 10, kLu, kInTotal, PLAIN(vmmSwapOn).Sum(kAdd)},
    {"hvcSwapOn", "Number of times hvc swapper was turned on", 10, kLu, kInTotal, PLAIN(hvcSwapOn).Sum(kAdd)},
    {"llswapped", "Memory swapped to llswap", 10, kLu, kInTotal, KB(vmm.llswapped).Sum(kAdd)},
    {"llswapUsed", "Total space used in llswap including internal fragmentation", 10, kLu, kInTotal,
     KB(vmm.llswapUsed).Sum(kAdd)},
    {"totalReg", "Total space in the regular swap file", 10, kLu, kInTotal, KB(swap.totalReg).Sum(kAdd)},
    {"freeReg", "Free space in the regular swap file", 10, kLu, kInTotal, KB(swap.freeReg).Sum(kAdd)},
    {"cptTgt", "Total checkpoint memory to read", 10, kLu, kInTotal, KB(swap.cptTgt).Sum(kAdd)},
    {"cptRead", "Checkpoint memory read from checkpoint file", 10, kLu, kInTotal, KB(swap.cptRead).Sum(kAdd)},
    {"cptWritten", "Checkpoint memory written to checkpoint file", 10, kLu, kInTotal, KB(swap.cptWritten).Sum(kAdd)},
    {"totalMig", "Total space in the migration swap file", 10, kLu, kInTotal, KB(swap.totalMig).Sum(kAdd)},
    {"freeMig", "Free space in the migration swap file", 10, kLu, kInTotal, KB(swap.freeMig).Sum(kAdd)},
    {"gblSwapRead", "Guest physical memory read from global swap file", 10, kLu, kInTotal,
     KB(swap.gblSwapRead).Sum(kAdd)},
    {"gblSwapIn", "Guest physical memory swapped in from global swap file", 10, kLu, kInTotal,
     KB(swap.gblSwapIn).Sum(kAdd)},
    {"gblSwapOut", "Guest physical memory swapped out to global swap file", 10, kLu, kInTotal,
     KB(swap.gblSwapOut).Sum(kAdd)},
};

constinit Row totals = TotalRow<Row>();

HVC_ReturnStatus PutRow(const GroupVisit &group) {
  Row row = {};
  uint32_t vmmLeaderID = 0;
  HVC_ReturnStatus status = ReadGroupHead(group.groupID, row.head);
  if (status == HVC_OK) status = Kestrel_GetVmmLeaderID(row.head.leaderID, vmmLeaderID);
  if (status == HVC_OK) {
    status = ReadClientRecord("KestrelSwapGetSwapStats", vmmLeaderID, NODAL_NODE_sched_memClients_swapInfo, row.swap);
  }
  if (status == HVC_OK) {
    status =
        ReadClientRecord("KestrelVMGetVMMStats", row.head.leaderID, NODAL_NODE_sched_memClients_kestrel_vmm, row.vmm);
  }
  if (status != HVC_OK) return status;

  std::string_view(row.swap.currentSwapper != 0 ? "hvc" : "vmm").copy(row.curSwapper, sizeof row.curSwapper - 1);
  row.cacheUsage = row.swap.cacheUsage;
  row.vmmSwapOn = row.swap.vmmSwapOn;
  row.hvcSwapOn = row.swap.hvcSwapOn;
  group.Put(row);
  return HVC_OK;
}

constexpr GroupFrame kFrame = {
    .title = "VIRTUAL MACHINE SWAP STATS",
    .dashes = 52,
    .kinds = HVC_GROUP_VM,
    .visit = PutRow,
    .totals = &totals,
};

}  // namespace

constinit const Report kSwapStats = {
    .name = "swap-stats",
    .summary = "what the host swaps of each virtual machine, and the room in its swap files",
    .options = kGroupOptions,
    .columns = columns,
    .sums = Sums::kTotalRow,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
