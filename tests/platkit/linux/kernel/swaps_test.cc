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

}  // namespace
}  // namespace platkit
