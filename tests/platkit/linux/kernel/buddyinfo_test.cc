#include "platkit/linux/kernel/buddyinfo.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Buddyinfo, AZone) {
  KernelFiles kernel;
  const Buddyinfo info = ReadBuddyinfo(kernel.With("proc/buddyinfo", "Node 3, zone   Normal   1   69  x\n"));
  EXPECT_EQ(info.status, HVC_OK);
  ASSERT_EQ(info.zones.size(), 1u);
  EXPECT_EQ(info.zones[0].numaNode, 3u);
  EXPECT_EQ(info.zones[0].zone, "Normal");
  EXPECT_EQ(info.zones[0].free, (std::vector<Figure>{Figure(1), Figure(69), kUnreadable}));
}

TEST(Buddyinfo, TheFirstLineOfAZoneCounts) {
  KernelFiles kernel;
  const Buddyinfo info =
      ReadBuddyinfo(kernel.With("proc/buddyinfo", "Node 0, zone DMA 1\nNode 0, zone DMA 2\nNode 1, zone DMA 3\n"));
  ASSERT_EQ(info.zones.size(), 2u);
  EXPECT_EQ(info.zones[0].free, std::vector<Figure>{Figure(1)});
  EXPECT_EQ(info.zones[1].free, std::vector<Figure>{Figure(3)});
}

TEST(Buddyinfo, GarbageIsNoZone) {
  KernelFiles kernel;
  for (const char *text :
       {"", "\n", "Node 0, zone\n", "Node x, zone Normal 1\n", "Node 5 zone Normal 1\n", "Node -1, zone DMA 1\n",
        "Node 4096, zone DMA 1\n", "Node 99999999999999999999, zone DMA 1\n"}) {
    const Buddyinfo info = ReadBuddyinfo(kernel.With("proc/buddyinfo", text));
    EXPECT_EQ(info.status, HVC_OK);
    EXPECT_TRUE(info.zones.empty()) << text;
  }
}

TEST(Buddyinfo, AFileThatCannotBeRead) {
  KernelFiles kernel;
  EXPECT_EQ(ReadBuddyinfo(kernel.files()).status, HVC_NOT_FOUND);
  kernel.host().Write("proc/buddyinfo", "");
  kernel.host().Forbid("proc/buddyinfo");
  OrdinaryUser user;
  EXPECT_EQ(ReadBuddyinfo(kernel.files()).status, HVC_NO_PERMISSION);
}

}  // namespace
}  // namespace platkit
