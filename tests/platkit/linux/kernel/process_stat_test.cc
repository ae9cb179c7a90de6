#include "platkit/linux/kernel/process_stat.h"

#include <unistd.h>

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(ProcessStat, TheLatestStart) {
  const uint64_t tick = 1'000'000'000 / static_cast<uint64_t>(sysconf(_SC_CLK_TCK));
  const std::string between = " S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 ";
  const struct {
    std::string text;
    uint64_t start;
  } stats[] = {{"7 (a)" + between + "500 0 0\n", 501 * tick},
               {"7 (a) b) 1 2)" + between + "0 0\n", tick},
               {"7 (a)" + between + "x 0\n", UINT64_MAX},
               {"7 (a)" + between, UINT64_MAX},
               {"7 (a) S 1 2\n", UINT64_MAX},
               {"7 (a", UINT64_MAX},
               {"", UINT64_MAX}};
  KernelFiles kernel;
  for (const auto &stat : stats)
    EXPECT_EQ(ReadLatestStart(kernel.With("proc/7/stat", stat.text), 7), stat.start) << stat.text;
  EXPECT_EQ(ReadStartTicks(kernel.With("proc/7/stat", stats[0].text), 7), Figure(500));
  kernel.host().Remove("proc/7/stat");
  EXPECT_EQ(ReadLatestStart(kernel.files(), 7), UINT64_MAX);
  EXPECT_EQ(ReadStartTicks(kernel.files(), 7), kUnreadable);
}

}  // namespace
}  // namespace platkit
