#include "platkit/linux/records/host_memory_records.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// From the best one down.
constexpr std::string_view kStates[] = {"high", "clear", "soft", "hard", "low"};
constexpr uint32_t kLowest = std::size(kStates) - 1;
constexpr uint32_t kUnknownState = UINT32_MAX;

// The records that share what is read, as numbers. Those of the states follow.
constexpr uint32_t kComprehensive = 0;
constexpr uint32_t kGlobal = 1;
constexpr uint32_t kFirstState = 2;

// The state is as bad as the number of watermarks that free memory is below.
uint32_t StateOf(const ZoneTotals &zones) {
  uint32_t state = 0;
  for (const Figure mark : {zones.ample, zones.high, zones.low, zones.min}) {
    const Figure lower = Lower(zones.free, mark);
    if (lower == Figure::Unreadable()) return kUnknownState;
    if (lower != mark) ++state;
  }
  return state;
}

// "  01000000-0220bb07 : Kernel code": the name, and how many bytes there are. Addresses that are not for this user
// read as 0.
bool ParseRange(std::string_view line, std::string_view &name, Figure &bytes) {
  const size_t colon = line.find(" : ");
  if (colon == std::string_view::npos) return false;
  name = line.substr(colon + 3);
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  uint64_t first = 0;
  uint64_t last = 0;
  const char *end = line.data() + line.size();
  const auto dash = std::from_chars(line.data(), end, first, 16);
  bytes = Figure::Unreadable();
  if (dash.ec != std::errc() || dash.ptr == end || *dash.ptr != '-') return true;
  const auto stop = std::from_chars(dash.ptr + 1, end, last, 16);
  if (stop.ec == std::errc() && last > first) bytes = Figure(last - first + 1);
  return true;
}

// The kernel's own image, in KB; unreadable for an ordinary user.
struct KernelImage {
  Figure code, data;
};

KernelImage ReadKernelImage(HostFiles &files) {
  Figure code, readOnly, data, bss;
  const WantedFigure wanted[] = {
      {"Kernel code", &code}, {"Kernel rodata", &readOnly}, {"Kernel data", &data}, {"Kernel bss", &bss}};
  LineReader lines(files, HostPath("proc/iomem"));
  for (std::string_view line, name; lines.Next(line);) {
    Figure bytes;
    if (!ParseRange(line, name, bytes)) continue;
    for (const WantedFigure &want : wanted) {
      if (want.key == name) *want.figure = want.figure->IfAbsent(bytes);
    }
  }
  return {.code = code.IfAbsent(Figure::Unreadable()) / 1024,
          .data = (data.IfAbsent(Figure::Unreadable()) + readOnly + bss) / 1024};
}

constexpr uint64_t kPageDescriptor = 64;  // bytes that the kernel keeps for each page

}  // namespace

HVC_ReturnStatus HostMemory::Comprehensive(ComprehensiveRecord &record) {
  const Meminfo &memory = MeminfoFor(kComprehensive);
  const ZoneTotals &zones = ZonesFor(kComprehensive);
  const KernelImage image = ReadKernelImage(files_);
  const Figure descriptors = CountersFor(kComprehensive).pageDescriptors * pageSize_.KB();
  record.total = zones.present.Cell(0);
  record.managedByMemMap = memory.total.Cell(0);
  record.discarded = memory.discarded.Cell(0);
  record.buddyOvhd = descriptors.IfAbsent(zones.present / pageSize_.KB() * kPageDescriptor / 1024).Cell(0);
  record.kernelCode = image.code.Cell(0);
  record.dataAndHeap = (image.data + memory.slab).Cell(0);
  record.hvcClientConsumed = (memory.kernel - memory.slab).Cell(0);
  record.otherConsumed = (memory.total - memory.free - memory.kernel).Cell(0);
  record.rsvdLow = zones.lowReserve.Cell(0);
  record.free = memory.free.Cell(0);
  return HVC_OK;
}

HVC_ReturnStatus HostMemory::Global(GlobalMemoryRecord &record) {
  const Meminfo &memory = MeminfoFor(kGlobal);
  const ZoneTotals &zones = ZonesFor(kGlobal);
  record.managedByMemSched = (memory.total - memory.kernel).Cell(0);
  record.minFree = zones.min.Cell(0);
  record.memState = StateOf(zones);
  return HVC_OK;
}

// How often free memory fell below a watermark: the reclaim daemon is woken at the low one and then works until the
// high one is reached, so it passes both, but for the times when its rest was cut short because only the high one was
// lost again; at the lowest one, whoever wants memory has to wait. What is now below has come back once less.
HVC_ReturnStatus HostMemory::Transitions(std::string_view state, StateTransitionsRecord &record) {
  const auto found = std::find(std::begin(kStates), std::end(kStates), state);
  if (found == std::end(kStates)) return HVC_NOT_FOUND;
  const auto number = static_cast<uint32_t>(found - std::begin(kStates));
  const Counters &counters = CountersFor(kFirstState + number);
  const uint32_t now = StateOf(ZonesFor(kFirstState + number));
  const Figure falls[kLowest] = {counters.daemonRuns, counters.daemonRuns, counters.daemonRuns - counters.shortRests,
                                 counters.stalls};
  // Below state `from`, to the next.
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

HostMemory::Counters HostMemory::ReadCounters() {
  Counters counters;
  std::array<Figure, 6> stalls;
  std::array<Figure, 2> descriptors;
  const WantedFigure wanted[] = {
      {"pageoutrun", &counters.daemonRuns}, {"kswapd_high_wmark_hit_quickly", &counters.shortRests},
      {"allocstall_dma", &stalls[0]},       {"allocstall_dma32", &stalls[1]},
      {"allocstall_normal", &stalls[2]},    {"allocstall_high", &stalls[3]},
      {"allocstall_movable", &stalls[4]},   {"allocstall_device", &stalls[5]},
      {"nr_memmap_pages", &descriptors[0]}, {"nr_memmap_boot_pages", &descriptors[1]},
  };
  ReadFigures(files_, HostPath("proc/vmstat"), wanted);
  for (const Figure figure : stalls)
    counters.stalls = counters.stalls + figure;
  for (const Figure figure : descriptors)
    counters.pageDescriptors = counters.pageDescriptors + figure;
  return counters;
}

const Meminfo &HostMemory::MeminfoFor(uint32_t record) {
  return meminfo_.For(record, [this] { return ReadMeminfo(files_); });
}

const ZoneTotals &HostMemory::ZonesFor(uint32_t record) {
  return zones_.For(record, [this] { return ReadZones(files_, pageSize_); });
}

const HostMemory::Counters &HostMemory::CountersFor(uint32_t record) {
  return counters_.For(record, [this] { return ReadCounters(); });
}

}  // namespace platkit
