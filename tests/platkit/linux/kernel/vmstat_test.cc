#include "platkit/linux/kernel/vmstat.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Vmstat, EachLine) {
  const struct {
    std::string key;
    Figure Vmstat::*figure;
  } lines[] = {{"oom_kill", &Vmstat::oomKills},
               {"allocstall_dma", &Vmstat::allocStalls},
               {"allocstall_dma32", &Vmstat::allocStalls},
               {"allocstall_normal", &Vmstat::allocStalls},
               {"allocstall_high", &Vmstat::allocStalls},
               {"allocstall_movable", &Vmstat::allocStalls},
               {"allocstall_device", &Vmstat::allocStalls},
               {"nr_memmap_pages", &Vmstat::memmapPages},
               {"nr_memmap_boot_pages", &Vmstat::memmapPages},
               {"cow_ksm", &Vmstat::ksmCopies},
               {"pswpin", &Vmstat::swapIn},
               {"swpin_zero", &Vmstat::swapIn},
               {"pswpout", &Vmstat::swapOut},
               {"swpout_zero", &Vmstat::swapOut},
               {"thp_fault_alloc", &Vmstat::hugeAllocs},
               {"thp_collapse_alloc", &Vmstat::hugeAllocs},
               {"thp_swpout_fallback", &Vmstat::hugeSplits},
               {"pswpout", &Vmstat::swapWrites},
               {"thp_fault_fallback", &Vmstat::hugeFailures},
               {"thp_scan_exceed_swap_pte", &Vmstat::hugeSwappedRefused}};
  for (const auto &line : lines) {
    ExpectFigures(
        "proc/vmstat", [&line](HostFiles &files) { return ReadVmstat(files).*line.figure; },
        {{line.key + " 12\n", Figure(12)}, {line.key + " x\n", kUnreadable}, {"other 1\n", kAbsent}}, kUnreadable,
        kAbsent);
  }
}

TEST(Vmstat, StallsOfAllZonesAreAdded) {
  KernelFiles kernel;
  EXPECT_EQ(ReadVmstat(kernel.With("proc/vmstat", "allocstall_dma 1\nallocstall_normal 20\n")).allocStalls, Figure(21));
}

TEST(Vmstat, PagesOfZerosCountAsSwapped) {
  KernelFiles kernel;
  EXPECT_EQ(ReadVmstat(kernel.With("proc/vmstat", "pswpin 1\npswpout 2\nswpin_zero 10\nswpout_zero 20\n")).swapIn,
            Figure(11));
  EXPECT_EQ(ReadVmstat(kernel.files()).swapOut, Figure(22));
}

}  // namespace
}  // namespace platkit
