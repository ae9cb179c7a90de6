#include "tools/nodal/top/screen.h"

namespace nodal::top {
namespace {

using enum Use;

#define ALLOC(field) \
  { TOP_FIELD(sched_groups_memAllocationInKB, field) }
#define STATS(field) \
  { TOP_FIELD(sched_groups_stats_memoryStats, field) }
#define WORLD(field) \
  { TOP_FIELD(sched_memClients_kestrel_uw, field) }

// The columns of group-stats, and after them the columns that only uw-stats has.
constexpr Column kColumns[] = {
    {.name = "gid", .use = kSetting, .quantity = Quantity::kIdentifier, .meaning = "the group's number"},
    {.name = "parGid", .use = kSetting, .terms = {TOP_FIELD(sched_groups_parentGroupID, parentGroupID)}},
    {.name = "nChild", .use = kSetting, .meaning = "groups right below"},
    {.name = "consumed", .use = kLevel, .terms = STATS(consumed), .isDefault = true},
    {.name = "swapped",
     .use = kLevel,
     .terms = {TOP_FIELD(sched_memClients_swapInfo, swapped)},
     .otherwise = TOP_FIELD(sched_memClients_kestrel_uw, swapped),
     .isDefault = true,
     .meaning = "swapped memory; for a group other than a process or a virtual machine, the sum of its members"},
    {.name = "withSwap",
     .use = kLevel,
     .isDefault = true,
     .quantity = Quantity::kAmount,
     .meaning = "consumed and swapped",
     .sumOf = {"consumed", "swapped"}},
    {.name = "min", .use = kSetting, .terms = ALLOC(min), .isDefault = true},
    {.name = "max", .use = kSetting, .terms = ALLOC(max), .isDefault = true},
    {.name = "minLimit", .use = kSetting, .terms = ALLOC(minLimit)},
    {.name = "shares", .use = kSetting, .terms = ALLOC(shares)},
    {.name = "conResv", .use = kSetting, .terms = {TOP_FIELD(sched_groups_stats_capacity, consumedResv)}},
    {.name = "availResv", .use = kSetting, .terms = {TOP_FIELD(sched_groups_stats_capacity, availResv)}},
    {.name = "memSize", .use = kLevel, .terms = STATS(memSize)},
    {.name = "memSizePeak", .use = kSetting, .terms = STATS(memSizePeak)},
    {.name = "iMin", .use = kSetting, .terms = STATS(iMin)},
    {.name = "eMin", .use = kSetting, .terms = STATS(eMin)},
    {.name = "eMinPeak", .use = kSetting, .terms = STATS(eMinPeak)},
    {.name = "rMinPeak", .use = kSetting, .terms = STATS(rMinPeak)},
    {.name = "rMinChildPeak", .use = kSetting, .terms = STATS(rMinChildPeak)},
    {.name = "bMin", .use = kSetting, .terms = STATS(bMin)},
    {.name = "bMax", .use = kSetting, .terms = STATS(bMax)},
    {.name = "bShares", .use = kSetting, .terms = STATS(bShares)},
    {.name = "fShares", .use = kSetting, .terms = STATS(fShares)},
    {.name = "ovhdResv", .use = kLevel, .terms = STATS(ovhdResv)},
    {.name = "ovhd", .use = kLevel, .terms = STATS(ovhd), .isDefault = true},
    {.name = "allocTgt", .use = kSetting, .terms = STATS(allocTgt)},
    {.name = "consumedPeak", .use = kSetting, .terms = STATS(consumedPeak), .isDefault = true},
    {.name = "touched", .use = kLevel, .terms = STATS(touched)},
    {.name = "bActive", .use = kLevel, .terms = STATS(bActive)},
    {.name = "sharedSaved", .use = kLevel, .terms = STATS(sharedSaved), .isDefault = true},
    {.name = "mps", .use = kSetting, .terms = STATS(mps)},
    {.name = "throttlePct", .use = kSetting, .terms = STATS(throttlePct), .isDefault = true},
    {.name = "flags",
     .use = kSetting,
     .terms = {TOP_FIELD(sched_groups_groupFlags, flags)},
     .isDefault = true,
     .quantity = Quantity::kGroupFlags},
    {.name = "tag", .use = kText, .terms = {TOP_FIELD(sched_groups_groupTag, tag)}, .isDefault = true},
    {.name = "totalResv", .use = kLevel, .terms = WORLD(totalResv)},
    {.name = "pinnedResv", .use = kLevel, .terms = WORLD(pinnedResv)},
    {.name = "memSizeLimit", .use = kSetting, .terms = WORLD(memSizeLimit)},
    {.name = "memBStore", .use = kLevel, .terms = WORLD(memBStore)},
    {.name = "swapBStore", .use = kLevel, .terms = WORLD(swapBStore)},
    {.name = "mapped", .use = kLevel, .terms = WORLD(mapped)},
    {.name = "swappable", .use = kLevel, .terms = WORLD(swappable)},
    {.name = "cow", .use = kLevel, .terms = WORLD(cow)},
    {.name = "pageable", .use = kLevel, .terms = WORLD(pageable)},
    {.name = "pageableUnacct", .use = kLevel, .terms = WORLD(pageableUnacct)},
    {.name = "pinned", .use = kLevel, .terms = WORLD(pinned)},
    {.name = "prealloced", .use = kLevel, .terms = WORLD(prealloced)},
    {.name = "shm", .use = kLevel, .terms = WORLD(shm)},
    {.name = "swapTgt", .use = kLevel, .terms = WORLD(swapTgt)},
    {.name = "useReliableMem", .use = kSetting, .terms = WORLD(useReliableMem)},
    {.name = "swapScope", .use = kSetting, .terms = WORLD(swapScope)},
};

#undef ALLOC
#undef STATS
#undef WORLD

}  // namespace

std::span<const Column> GroupColumns() { return kColumns; }

}  // namespace nodal::top
