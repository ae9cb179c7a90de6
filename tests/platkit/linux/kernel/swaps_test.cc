#include "platkit/linux/kernel/swaps.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Swaps, Total) {
  ExpectFigures(
      "proc/swaps", [](HostFiles &files) { return ReadSwaps(files).total; },
      {{"Filename Type Size Used Priority\n", Figure(0)},
       {"/a file 10 4 -2\n/b partition 5 5 -2 more\n", Figure(15)},
       {"/a\\040b\tfile\t10\t4\t-2\n", Figure(10)},
       {"/dev/zram0 partition 10 4 -2\n", Figure(0)},
       {"/a file ten 4 -2\n", kUnreadable},
       {"/a file\n", kUnreadable},
       {"/a other 10 4 -2\n", Figure(0)},
       {"", Figure(0)}},
      kUnreadable, Figure(0));
}

TEST(Swaps, Free) {
  ExpectFigures(
      "proc/swaps", [](HostFiles &files) { return ReadSwaps(files).free; },
      {{"/a file 10 4 -2\n/b partition 5 5 -2\n", Figure(6)},
       {"/a file 10 11 -2\n", Figure(0)},
       {"/a file 10 x -2\n", kUnreadable},
       {"/a file 10\n", kUnreadable},
       {"", Figure(0)}},
      kUnreadable, Figure(0));
}

TEST(Swaps, ZramIsApart) {
  ExpectFigures(
      "proc/swaps", [](HostFiles &files) { return ReadSwaps(files).zramUsed; },
      {{"/a file 10 4 -2\n", Figure(0)},
       {"/dev/zram0 partition 10 4 100\n/dev/zram12 partition 10 5 100\n/a file 10 9 -2\n", Figure(9)},
       {"/dev/zram0 partition 10 x 100\n", kUnreadable},
       {"/dev/zram/a partition 10 4 -2\n", Figure(0)},
       {"", Figure(0)}},
      kUnreadable, Figure(0));
  KernelFiles kernel;
  const Swaps space = ReadSwaps(kernel.With("proc/swaps", "/dev/zram12 partition 9 4 -2\n/dev/zram1x file 7 1 -2\n"));
  EXPECT_EQ(space.zramDevices, std::vector<uint64_t>{12});
  EXPECT_EQ(space.total, Figure(7)) << "not a zram device";
}

}  // namespace
}  // namespace platkit
