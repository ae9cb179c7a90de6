#include "platkit/linux/kernel/vmstat.h"

#include <array>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

Vmstat ReadVmstat(HostFiles &files) {
  Vmstat counters;
  std::array<Figure, 6> stalls;
  Figure memmap, memmapAtBoot, swapIn, zeroIn, zeroOut, faults, collapses;
  const WantedFigure wanted[] = {
      {"allocstall_dma", &stalls[0]},
      {"allocstall_dma32", &stalls[1]},
      {"allocstall_normal", &stalls[2]},
      {"allocstall_high", &stalls[3]},
      {"allocstall_movable", &stalls[4]},
      {"allocstall_device", &stalls[5]},
      {"oom_kill", &counters.oomKills},
      {"nr_memmap_pages", &memmap},
      {"nr_memmap_boot_pages", &memmapAtBoot},
      {"cow_ksm", &counters.ksmCopies},
      {"pswpin", &swapIn},
      {"pswpout", &counters.swapWrites},
      {"swpin_zero", &zeroIn},
      {"swpout_zero", &zeroOut},
      {"thp_fault_alloc", &faults},
      {"thp_collapse_alloc", &collapses},
      {"thp_swpout_fallback", &counters.hugeSplits},
      {"thp_fault_fallback", &counters.hugeFailures},
      {"thp_scan_exceed_swap_pte", &counters.hugeSwappedRefused},
  };
  ReadFigures(files, HostPath("proc/vmstat"), wanted);
  for (const Figure figure : stalls)
    counters.allocStalls = counters.allocStalls + figure;
  counters.memmapPages = memmap + memmapAtBoot;
  counters.swapIn = swapIn + zeroIn;
  counters.swapOut = counters.swapWrites + zeroOut;
  counters.hugeAllocs = faults + collapses;
  return counters;
}

}  // namespace platkit
