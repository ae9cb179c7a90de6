#include "platkit/linux/kernel/ksm.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Ksm, AFileOfTheHost) {
  ExpectFigures(
      "sys/kernel/mm/ksm/pages_sharing", [](HostFiles &files) { return ReadKsmPages(files, "pages_sharing"); },
      {{"12\n", Figure(12)}, {"x\n", kUnreadable}}, kUnreadable, kAbsent);
}

TEST(Ksm, EachLineOfAProcess) {
  const struct {
    std::string key;
    Figure ProcessKsm::*figure;
  } lines[] = {{"ksm_merging_pages", &ProcessKsm::merged}, {"ksm_zero_pages", &ProcessKsm::zero}};
  for (const auto &line : lines) {
    ExpectFigures(
        "proc/7/ksm_stat", [&line](HostFiles &files) { return ReadProcessKsm(files, 7).*line.figure; },
        {{line.key + " 12\n", Figure(12)}, {line.key + " x\n", kUnreadable}, {"ksm_rmap_items 1\n", kAbsent}},
        kUnreadable, kAbsent);
  }
}

TEST(Ksm, OlderKernelsHaveMergedPagesInAFileOfTheirOwn) {
  KernelFiles kernel;
  kernel.host().Write("proc/7/ksm_stat", "ksm_rmap_items 5\n");
  EXPECT_EQ(ReadProcessKsm(kernel.With("proc/7/ksm_merging_pages", "3\n"), 7).merged, Figure(3));
  EXPECT_EQ(ReadProcessKsm(kernel.With("proc/7/ksm_merging_pages", "x\n"), 7).merged, kUnreadable);
}

}  // namespace
}  // namespace platkit
