#include "platkit/linux/kernel/zoneinfo.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

Zone OnlyZone(std::string_view text) {
  KernelFiles kernel;
  const Zoneinfo info = ReadZoneinfo(kernel.With("proc/zoneinfo", text));
  EXPECT_TRUE(info.isComplete);
  EXPECT_EQ(info.zones.size(), 1u) << text;
  return info.zones.empty() ? Zone() : info.zones.front();
}

TEST(Zoneinfo, EachLineOfAZone) {
  const struct {
    std::string key;
    Figure Zone::*figure;
  } lines[] = {{"present", &Zone::present}, {"managed", &Zone::managed}, {"min", &Zone::min},
               {"low", &Zone::low},         {"high", &Zone::high},       {"promo", &Zone::promo},
               {"pages free", &Zone::free}};
  for (const auto &line : lines) {
    const std::string zone = "Node 0, zone   Normal\n  ";
    EXPECT_EQ(OnlyZone(zone + line.key + "  12\n").*line.figure, Figure(12)) << line.key;
    EXPECT_EQ(OnlyZone(zone + line.key + "  x\n").*line.figure, kUnreadable) << line.key;
    EXPECT_EQ(OnlyZone(zone + "other  1\n").*line.figure, kAbsent) << line.key;
    EXPECT_EQ(OnlyZone(zone + "other 1\n  pagesets\n    " + line.key + "  12\n").*line.figure, kAbsent)
        << line.key << " of a processor's pages";
  }
}

TEST(Zoneinfo, TheHighestProtectionCounts) {
  const auto protection = [](const std::string &list) {
    return OnlyZone("Node 0, zone DMA\n        protection: " + list + "\n").protection;
  };
  EXPECT_EQ(protection("(0, 3019, 2000)"), Figure(3019));
  EXPECT_EQ(protection("()"), Figure(0));
  EXPECT_EQ(protection("(0, x)"), kUnreadable);
  EXPECT_EQ(OnlyZone("Node 0, zone DMA\n").protection, Figure(0));
}

TEST(Zoneinfo, LowZones) {
  EXPECT_TRUE(OnlyZone("Node 0, zone      DMA\n").isLow);
  EXPECT_TRUE(OnlyZone("Node 1, zone    DMA32\n").isLow);
  EXPECT_FALSE(OnlyZone("Node 0, zone   Normal\n").isLow);
}

TEST(Zoneinfo, GarbageIsNoZone) {
  KernelFiles kernel;
  for (const char *text : {"", "\n", "Node 0, zone\n", "Node 0\n", "zone Normal\n", "  present 1\n"})
    EXPECT_TRUE(ReadZoneinfo(kernel.With("proc/zoneinfo", text)).zones.empty()) << text;
}

TEST(Zoneinfo, AFileThatCannotBeRead) {
  KernelFiles kernel;
  EXPECT_FALSE(ReadZoneinfo(kernel.files()).isComplete);
  kernel.host().Write("proc/zoneinfo", "Node 0, zone DMA\n");
  kernel.host().Forbid("proc/zoneinfo");
  OrdinaryUser user;
  EXPECT_FALSE(ReadZoneinfo(kernel.files()).isComplete);
}

}  // namespace
}  // namespace platkit
