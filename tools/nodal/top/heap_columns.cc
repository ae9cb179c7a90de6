#include "tools/nodal/top/screen.h"

namespace nodal::top {
namespace {

using enum Use;

#define HEAP(name, use)                                 \
  {                                                     \
#name, use, { TOP_FIELD(system_heaps_stats, name) } \
  }
#define SHOWN(name, use) \
  { #name, use, {TOP_FIELD(system_heaps_stats, name) }, {}, true }

// The columns of heap-stats.
constexpr Column kHeapColumns[] = {
    HEAP(dynGrow, kSetting),
    HEAP(lowerLimit, kSetting),
    HEAP(upperLimit, kSetting),
    HEAP(reserved, kSetting),
    HEAP(numRanges, kLevel),
    {.name = "dlMallocOvdh", .use = kLevel, .terms = {TOP_FIELD(system_heaps_stats, dlMallocOvhd)}},
    SHOWN(size, kLevel),
    {.name = "used",
     .use = kLevel,
     .terms = {TOP_FIELD(system_heaps_stats, size), TOP_TIMES(system_heaps_stats, avail, -1)},
     .isDefault = true,
     .meaning = "used part of the current size"},
    SHOWN(avail, kLevel),
    HEAP(initial, kLevel),
    SHOWN(max, kSetting),
    SHOWN(pctFreeOfCur, kSetting),
    HEAP(maxAvail, kLevel),
    HEAP(pctFreeOfMax, kSetting),
    HEAP(lowPctFreeOfMax, kSetting),
    SHOWN(numSuccAllocs, kCounter),
    SHOWN(numFailAllocs, kCounter),
    HEAP(numGrowthOps, kCounter),
    HEAP(numShrinkOps, kCounter),
    HEAP(numReqsPerGrowth, kSetting),
    HEAP(avgAllocSize, kSetting),
};

#undef HEAP
#undef SHOWN

}  // namespace

std::span<const Column> HeapColumns() { return kHeapColumns; }

}  // namespace nodal::top
