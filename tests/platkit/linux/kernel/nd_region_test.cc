#include "platkit/linux/kernel/nd_region.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

const std::string kRegion = "sys/bus/nd/devices/region0/";

TEST(NdRegion, Start) {
  ExpectFigures(
      kRegion + "resource", [](HostFiles &files) { return ReadRegionStart(files, "region0"); },
      {{"0x1a2b\n", Figure(0x1a2b)}, {"1a2b\n", kUnreadable}, {"0x\n", kUnreadable}, {"0x1 2\n", kUnreadable}},
      kUnreadable, kUnreadable);
}

TEST(NdRegion, Cookie) {
  KernelFiles kernel;
  EXPECT_EQ(ReadRegionCookie(kernel.files(), "region0"), "");
  EXPECT_EQ(ReadRegionCookie(kernel.With(kRegion + "set_cookie", "0x1a2b\n"), "region0"), "1a2b");
  for (const char *bad : {"", "0x0\n", "x\n", "0xzz\n", "0x1 2\n"})
    EXPECT_EQ(ReadRegionCookie(kernel.With(kRegion + "set_cookie", bad), "region0"), "") << bad;
}

TEST(NdRegion, PersistentOrNot) {
  KernelFiles kernel;
  EXPECT_TRUE(IsPersistentRegion(kernel.files(), "region0")) << "not told";
  EXPECT_TRUE(IsPersistentRegion(kernel.With(kRegion + "devtype", "nd_pmem\n"), "region0"));
  EXPECT_FALSE(IsPersistentRegion(kernel.With(kRegion + "devtype", "nd_volatile\n"), "region0"));
}

TEST(NdRegion, Modules) {
  KernelFiles kernel;
  using Names = std::vector<std::string>;
  EXPECT_EQ(ReadRegionModules(kernel.files(), "region0"), Names{});
  kernel.host().Write(kRegion + "mappings", "4\n");
  kernel.host().Write(kRegion + "mapping0", "nmem3,0,268435456,0\n");
  kernel.host().Write(kRegion + "mapping1", "nonsense\n");
  kernel.host().Write(kRegion + "mapping3", "nmem12\n");
  EXPECT_EQ(ReadRegionModules(kernel.files(), "region0"), (Names{"nmem3", "nmem12"}));
  for (const char *bad : {"x\n", "max\n", "99999999999\n"}) {
    EXPECT_EQ(ReadRegionModules(kernel.With(kRegion + "mappings", bad), "region0"), (Names{"nmem3", "nmem12"})) << bad;
  }
}

}  // namespace
}  // namespace platkit
