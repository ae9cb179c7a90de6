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

// Returns the number of watermarks that are higher than the memory that can be allocated without swapping. That memory
// includes cached files. Returns kUnknownState if a figure is unreadable.
uint32_t StateOfAvailable(Figure available, const ZoneTotals &zones) {
  uint32_t state = 0;
  for (const Figure mark : {zones.ample, zones.high, zones.low, zones.min}) {
    const Figure lower = Lower(available, mark);
    if (lower == Figure::Unreadable()) return kUnknownState;
    if (lower != mark) ++state;
  }
  return state;
}

// Memory is short if tasks wait for it. The thresholds for the time in which all tasks wait are those of programs that
// react to memory pressure: a warning at 10 %, and an intervention at 60 %.
uint32_t StateOfPressure(const MemoryPressure &pressure) {
  const auto isAtLeast = [](Figure share, uint64_t percent) {
    return Lower(share, Figure(percent)) == Figure(percent);
  };
  if (isAtLeast(pressure.full.IfAbsent(Figure(0)), 60)) return 4;
  if (isAtLeast(pressure.full.IfAbsent(Figure(0)), 10)) return 3;
  return isAtLeast(pressure.some.IfAbsent(Figure(0)), 10) ? 2 : 0;
}

uint32_t StateOf(HostWideFiles &host, PageSize &pageSize) {
  const uint32_t available = StateOfAvailable(host.meminfo().available, TotalsInKB(host.zoneinfo(), pageSize));
  return available == kUnknownState ? kUnknownState : std::max(available, StateOfPressure(host.pressure()));
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
  record.memState = StateOf(host_, pageSize_);
  return HVC_OK;
}

// Linux does not count changes of the state, so events that show a shortage are counted instead. An allocation that
// waited for reclaim shows that the state was hard. A process that was killed for lack of memory shows that it was low.
// To reach that state, the host passed through all higher ones. While the host is in a state below a given one, the
// last move down from the given state has no matching move up yet.
HVC_ReturnStatus HostMemoryRecords::Transitions(std::string_view state, StateTransitionsRecord &record) {
  const auto *found = std::ranges::find(kMemoryStates, state);
  if (found == kMemoryStates.end()) return HVC_NOT_FOUND;
  const auto number = static_cast<uint32_t>(found - kMemoryStates.begin());
  const Vmstat &counters = host_.vmstat();
  const uint32_t now = StateOf(host_, pageSize_);
  const Figure stalls = Higher(counters.allocStalls, counters.oomKills);
  const Figure falls[kLowest] = {stalls, stalls, stalls, counters.oomKills};
  // The number of moves from state `from` to the next lower one.
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
