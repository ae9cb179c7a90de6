#include "platkit/linux/kernel/vmstat.h"

#include <array>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

Vmstat ReadVmstat(HostFiles &files) {
  Vmstat counters;
  std::array<Figure, 6> stalls;
  std::array<Figure, 2> memmap;
  const WantedFigure wanted[] = {
      {"pageoutrun", &counters.kswapdRuns}, {"kswapd_high_wmark_hit_quickly", &counters.kswapdShortRests},
      {"allocstall_dma", &stalls[0]},       {"allocstall_dma32", &stalls[1]},
      {"allocstall_normal", &stalls[2]},    {"allocstall_high", &stalls[3]},
      {"allocstall_movable", &stalls[4]},   {"allocstall_device", &stalls[5]},
      {"nr_memmap_pages", &memmap[0]},      {"nr_memmap_boot_pages", &memmap[1]},
      {"cow_ksm", &counters.ksmCopies},
  };
  ReadFigures(files, HostPath("proc/vmstat"), wanted);
  for (const Figure figure : stalls)
    counters.allocStalls = counters.allocStalls + figure;
  for (const Figure figure : memmap)
    counters.memmapPages = counters.memmapPages + figure;
  return counters;
}

}  // namespace platkit
