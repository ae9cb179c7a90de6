#include "platkit/linux/kernel/zram.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Zram, MemoryOfADevice) {
  ExpectFigures(
      "sys/block/zram3/mm_stat", [](HostFiles &files) { return ReadZramMemory(files, std::vector<uint64_t>{3}); },
      {{" 409600    4096   20480        0    20480        0        0        0        0\n", Figure(20)},
       {"409600 4096 x\n", kUnreadable},
       {"409600 4096\n", kUnreadable},
       {"", kUnreadable}},
      kUnreadable, kUnreadable);
}

TEST(Zram, DevicesAreAdded) {
  KernelFiles kernel;
  kernel.host().Write("sys/block/zram0/mm_stat", "1 1 4096 0\n");
  kernel.host().Write("sys/block/zram1/mm_stat", "1 1 8192 0\n");
  EXPECT_EQ(ReadZramMemory(kernel.files(), {}), Figure(0));
  EXPECT_EQ(ReadZramMemory(kernel.files(), std::vector<uint64_t>{0, 1}), Figure(12));
}

}  // namespace
}  // namespace platkit
