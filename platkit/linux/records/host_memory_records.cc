#include "platkit/linux/records/host_memory_records.h"

#include <algorithm>

#include "platkit/linux/kernel/iomem.h"
#include "platkit/linux/records/zone_totals.h"
#include "platkit/memory_states.h"

namespace platkit {
namespace {

constexpr uint32_t kLowest = kMemoryStates.size() - 1;
constexpr uint32_t kUnknownState = UINT32_MAX;

constexpr uint64_t kPageDescriptor = 64;  // bytes of metadata per page

// The state is the number of watermarks above the free memory.
uint32_t StateOf(const ZoneTotals &zones) {
  uint32_t state = 0;
  for (const Figure mark : {zones.ample, zones.high, zones.low, zones.min}) {
    const Figure lower = Lower(zones.free, mark);
    if (lower == Figure::Unreadable()) return kUnknownState;
    if (lower != mark) ++state;
  }
  return state;
}

}  // namespace

HVC_ReturnStatus HostMemoryRecords::Comprehensive(ComprehensiveRecord &record) {
  const Meminfo &memory = host_.meminfo();
  const ZoneTotals zones = TotalsInKB(host_.zoneinfo(), pageSize_);
  const KernelImage image = ReadKernelImage(files_);
  const Figure code = image.code.IfAbsent(Figure::Unreadable()) / 1024;
  const Figure data = (image.data.IfAbsent(Figure::Unreadable()) + image.rodata + image.bss) / 1024;
  const Figure descriptors = host_.vmstat().memmapPages * pageSize_.KB();
  record.total = zones.present.Cell(0);
  record.managedByMemMap = memory.total.Cell(0);
  record.discarded = memory.hardwareCorrupted.Cell(0);
  record.buddyOvhd = descriptors.IfAbsent(zones.present / pageSize_.KB() * kPageDescriptor / 1024).Cell(0);
  record.kernelCode = code.Cell(0);
  record.dataAndHeap = (data + memory.slab).Cell(0);
  record.hvcClientConsumed = (memory.kernel - memory.slab).Cell(0);
  record.otherConsumed = (memory.total - memory.free - memory.kernel).Cell(0);
  record.rsvdLow = zones.lowReserve.Cell(0);
  record.free = memory.free.Cell(0);
  return HVC_OK;
}

HVC_ReturnStatus HostMemoryRecords::Global(GlobalMemoryRecord &record) {
  const Meminfo &memory = host_.meminfo();
  const ZoneTotals zones = TotalsInKB(host_.zoneinfo(), pageSize_);
  record.managedByMemSched = (memory.total - memory.kernel).Cell(0);
  record.minFree = zones.min.Cell(0);
  record.memState = StateOf(zones);
  return HVC_OK;
}

// Counts how often free memory fell below each watermark. kswapd wakes at the low watermark and runs until the high one
// is reached, so each run counts for both. A run that started soon after the last one counts only for the high
// watermark. Below the min watermark, allocations enter direct reclaim. While free memory is below a watermark, it has
// fallen below it once more often than it has risen above it.
HVC_ReturnStatus HostMemoryRecords::Transitions(std::string_view state, StateTransitionsRecord &record) {
  const auto *found = std::ranges::find(kMemoryStates, state);
  if (found == kMemoryStates.end()) return HVC_NOT_FOUND;
  const auto number = static_cast<uint32_t>(found - kMemoryStates.begin());
  const Vmstat &counters = host_.vmstat();
  const uint32_t now = StateOf(TotalsInKB(host_.zoneinfo(), pageSize_));
  const Figure falls[kLowest] = {counters.kswapdRuns, counters.kswapdRuns,
                                 counters.kswapdRuns - counters.kswapdShortRests, counters.allocStalls};
  // From state `from` to the next lower one.
  const auto fallsFrom = [&](uint32_t from) {
    const bool isBelow = now != kUnknownState && now > from;
    return isBelow && falls[from].Cell(0) == 0 ? Figure(1) : falls[from];
  };
  if (number < kLowest) record.toLowerCount = fallsFrom(number).Cell32(0);
  if (number > 0) {
    const bool isBelow = now != kUnknownState && now >= number;
    record.toHigherCount = (fallsFrom(number - 1) - Figure(isBelow ? 1 : 0)).Cell32(0);
  }
  return HVC_OK;
}

}  // namespace platkit
