#include "platkit/linux/kernel/vmstat.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Vmstat, EachLine) {
  const struct {
    std::string key;
    Figure Vmstat::*figure;
  } lines[] = {{"pageoutrun", &Vmstat::kswapdRuns},
               {"kswapd_high_wmark_hit_quickly", &Vmstat::kswapdShortRests},
               {"allocstall_dma", &Vmstat::allocStalls},
               {"allocstall_dma32", &Vmstat::allocStalls},
               {"allocstall_normal", &Vmstat::allocStalls},
               {"allocstall_high", &Vmstat::allocStalls},
               {"allocstall_movable", &Vmstat::allocStalls},
               {"allocstall_device", &Vmstat::allocStalls},
               {"nr_memmap_pages", &Vmstat::memmapPages},
               {"nr_memmap_boot_pages", &Vmstat::memmapPages},
               {"cow_ksm", &Vmstat::ksmCopies}};
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

}  // namespace
}  // namespace platkit
