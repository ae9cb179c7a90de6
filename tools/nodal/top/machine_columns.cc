#include "tools/nodal/top/screen.h"

namespace nodal::top {
namespace {

using enum Use;

#define VMM(field) \
  { TOP_FIELD(sched_memClients_kestrel_vmm, field) }
#define SWAP(field) \
  { TOP_FIELD(sched_memClients_swapInfo, field) }
#define GUEST(field) \
  { TOP_FIELD(sched_memClients_kestrel_guest, field) }
#define ZIP(field) \
  { TOP_FIELD(sched_memClients_memzipInfo, field) }
#define LPAGE(field) \
  { TOP_FIELD(memory_lpage_vmLPage, field) }

// The columns of vm-stats, swap-stats, guest-stats, zip-stats and lpage-stats. A name in several of them is one column.
constexpr Column kMachineColumns[] = {
    {.name = "schedGrp", .use = kSetting, .quantity = Quantity::kIdentifier, .meaning = "the machine's group"},
    {.name = "parSchedGroup", .use = kSetting, .terms = {TOP_FIELD(sched_groups_parentGroupID, parentGroupID)}},
    {.name = "worldGrp", .use = kSetting, .terms = {TOP_FIELD(sched_groups_groupLeaderID, leaderID)}},
    {.name = "b", .use = kSetting, .terms = VMM(balloonActive)},
    {.name = "memSizeLimit", .use = kSetting, .terms = VMM(memSizeLimit)},
    {.name = "memSize", .use = kLevel, .terms = VMM(memSize), .isDefault = true},
    {.name = "min", .use = kSetting, .terms = {TOP_FIELD(sched_groups_memAllocationInKB, min)}},
    {.name = "max", .use = kSetting, .terms = {TOP_FIELD(sched_groups_memAllocationInKB, max)}, .isDefault = true},
    {.name = "minLimit", .use = kSetting, .terms = {TOP_FIELD(sched_groups_memAllocationInKB, minLimit)}},
    {.name = "shares", .use = kSetting, .terms = {TOP_FIELD(sched_groups_memAllocationInKB, shares)}},
    {.name = "ovhdResv", .use = kLevel, .terms = {TOP_FIELD(sched_groups_stats_memoryStats, ovhdResv)}},
    {.name = "ovhd", .use = kLevel, .terms = {TOP_FIELD(sched_groups_stats_memoryStats, ovhd)}, .isDefault = true},
    {.name = "allocTgt", .use = kSetting, .terms = VMM(allocTgt)},
    {.name = "consumed",
     .use = kLevel,
     .terms = {TOP_FIELD(sched_memClients_kestrel_vmm, mapped), TOP_FIELD(sched_memClients_kestrel_vmm, zipped),
               TOP_TIMES(sched_memClients_kestrel_vmm, sharedSaved, -1),
               TOP_TIMES(sched_memClients_kestrel_vmm, zipSaved, -1)},
     .isDefault = true,
     .meaning = "host memory consumed by the guest"},
    {.name = "balloonTgt", .use = kLevel, .terms = VMM(balloonTgt)},
    {.name = "ballooned", .use = kLevel, .terms = VMM(ballooned), .isDefault = true},
    {.name = "swapTgt", .use = kLevel, .terms = VMM(swapTgt)},
    {.name = "swapped", .use = kLevel, .terms = SWAP(swapped), .isDefault = true},
    {.name = "withSwap",
     .use = kLevel,
     .isDefault = true,
     .quantity = Quantity::kAmount,
     .meaning = "consumed and swapped",
     .sumOf = {"consumed", "swapped"}},
    {.name = "mapped", .use = kLevel, .terms = VMM(mapped)},
    {.name = "touched", .use = kLevel, .terms = VMM(touched), .isDefault = true},
    {.name = "zipped", .use = kLevel, .terms = VMM(zipped), .isDefault = true},
    {.name = "vpmemRO", .use = kLevel, .terms = VMM(vpmemRO)},
    {.name = "vpmemRW", .use = kLevel, .terms = VMM(vpmemRW)},
    {.name = "vpmemUC", .use = kLevel, .terms = VMM(vpmemUC)},
    {.name = "zipSaved", .use = kLevel, .terms = VMM(zipSaved)},
    {.name = "shared", .use = kLevel, .terms = VMM(shared), .isDefault = true},
    {.name = "zero", .use = kLevel, .terms = VMM(zero)},
    {.name = "sharedSaved", .use = kLevel, .terms = VMM(sharedSaved)},
    {.name = "useReliableMem", .use = kSetting, .terms = VMM(useReliableMem)},
    {.name = "swapScope", .use = kSetting, .terms = VMM(swapScope)},
    {.name = "isSwapping", .use = kSetting, .terms = SWAP(isSwapping)},
    {.name = "CurSwapper", .use = kSetting, .terms = SWAP(currentSwapper), .quantity = Quantity::kSwapper},
    {.name = "cacheUsage", .use = kLevel, .terms = SWAP(cacheUsage)},
    {.name = "swapoutReady", .use = kSetting, .terms = SWAP(swapoutReady)},
    {.name = "swapRead", .use = kCounter, .terms = SWAP(swapRead)},
    {.name = "swapIn", .use = kCounter, .terms = SWAP(swapIn)},
    {.name = "swapOut", .use = kCounter, .terms = SWAP(swapOut)},
    {.name = "discarded", .use = kCounter, .terms = SWAP(discarded)},
    {.name = "COWSwapper", .use = kCounter, .terms = SWAP(cowSwapper)},
    {.name = "vmmSwapOn", .use = kCounter, .terms = SWAP(vmmSwapOn)},
    {.name = "hvcSwapOn", .use = kCounter, .terms = SWAP(hvcSwapOn)},
    {.name = "llswapped", .use = kLevel, .terms = VMM(llswapped)},
    {.name = "llswapUsed", .use = kLevel, .terms = VMM(llswapUsed)},
    {.name = "totalReg", .use = kSetting, .terms = SWAP(totalReg)},
    {.name = "freeReg", .use = kSetting, .terms = SWAP(freeReg)},
    {.name = "cptTgt", .use = kLevel, .terms = SWAP(cptTgt)},
    {.name = "cptRead", .use = kCounter, .terms = SWAP(cptRead)},
    {.name = "cptWritten", .use = kCounter, .terms = SWAP(cptWritten)},
    {.name = "totalMig", .use = kSetting, .terms = SWAP(totalMig)},
    {.name = "freeMig", .use = kSetting, .terms = SWAP(freeMig)},
    {.name = "gblSwapRead", .use = kHostCounter, .terms = SWAP(gblSwapRead)},
    {.name = "gblSwapIn", .use = kHostCounter, .terms = SWAP(gblSwapIn)},
    {.name = "gblSwapOut", .use = kHostCounter, .terms = SWAP(gblSwapOut)},
    {.name = "memTotal", .use = kLevel, .terms = GUEST(memTotal), .isDefault = true},
    {.name = "lpageTotal", .use = kLevel, .terms = GUEST(lpageTotal)},
    {.name = "memNeeded", .use = kLevel, .terms = GUEST(memNeeded), .isDefault = true},
    {.name = "totalCache", .use = kLevel, .terms = ZIP(totalCache)},
    {.name = "maxCache", .use = kLevel, .terms = ZIP(maxCache)},
    {.name = "usedCache", .use = kLevel, .terms = ZIP(usedCache)},
    {.name = "unZipped", .use = kCounter, .terms = ZIP(unZipped)},
    {.name = "zipRejected", .use = kCounter, .terms = ZIP(zipRejected)},
    {.name = "nrFreeHalf", .use = kLevel, .terms = ZIP(nrFreeHalf)},
    {.name = "nrFreeQuarter", .use = kLevel, .terms = ZIP(nrFreeQuarter)},
    {.name = "avgZipTime", .use = kSetting, .terms = ZIP(avgZipTime)},
    {.name = "avgUnzipTime", .use = kSetting, .terms = ZIP(avgUnzipTime)},
    {.name = "nrBackings",
     .use = kLevel,
     .terms = {TOP_FIELD(memory_lpage_vmLPage, backings2M), TOP_TIMES(memory_lpage_vmLPage, backings1G, 512)},
     .meaning = "current large-page backings, in pages of 2 MB"},
    {.name = "nrAllocSuccess", .use = kCounter, .terms = LPAGE(allocSuccess)},
    {.name = "nrLockSuccess",
     .use = kCounter,
     .terms = {TOP_FIELD(memory_lpage_vmLPage, lockSuccess), TOP_FIELD(memory_lpage_vmLPage, lockSuccess2)},
     .meaning = "guest large-page locking attempts"},
    {.name = "nrBroken", .use = kCounter, .terms = LPAGE(broken)},
    {.name = "maxSwapThreshold", .use = kSetting, .terms = LPAGE(maxSwapThreshold)},
    {.name = "nrFailPinned", .use = kCounter, .terms = LPAGE(failPinned)},
    {.name = "nrFailSwapped", .use = kCounter, .terms = LPAGE(failSwapped)},
    {.name = "nrFailPinnedLate", .use = kCounter, .terms = LPAGE(failPinnedLate)},
    {.name = "nrFailNoMem", .use = kCounter, .terms = LPAGE(failNoMem)},
};

#undef VMM
#undef SWAP
#undef GUEST
#undef ZIP
#undef LPAGE

}  // namespace

std::span<const Column> MachineColumns() { return kMachineColumns; }

}  // namespace nodal::top
