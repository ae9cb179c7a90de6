#include "platkit/linux/kernel/nd_devices.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

const std::string kNdDevices = "sys/bus/nd/devices/";

TEST(NdDevices, AFigure) {
  ExpectFigures(
      kNdDevices + "region0/size", [](HostFiles &files) { return ReadNdFigure(files, "region0", "size"); },
      {{"12\n", Figure(12)}, {"max\n", kUnreadable}, {"x\n", kUnreadable}}, kUnreadable, kAbsent);
}

TEST(NdDevices, ANumaNode) {
  ExpectFigures(
      kNdDevices + "region0/numa_node", [](HostFiles &files) { return ReadNdNumaNode(files, "region0"); },
      {{"2\n", Figure(2)}, {"-1\n", kAbsent}, {"x\n", kAbsent}, {"99999999999\n", kAbsent}}, kAbsent, kAbsent);
}

TEST(NdDevices, AText) {
  KernelFiles kernel;
  EXPECT_EQ(ReadNdText(kernel.files(), "region0", "devtype"), "");
  EXPECT_EQ(ReadNdText(kernel.With(kNdDevices + "region0/devtype", "nd_pmem\nmore\n"), "region0", "devtype"),
            "nd_pmem");
  EXPECT_EQ(ReadNdText(kernel.With(kNdDevices + "region0/devtype", "a\x01z"), "region0", "devtype"), "a\x01z");
  EXPECT_EQ(ReadNdText(kernel.With(kNdDevices + "region0/devtype", std::string(300, 'x')), "region0", "devtype"), "");
}

TEST(NdDevices, DevicesOfOneKindAreListedByNumber) {
  KernelFiles kernel;
  std::vector<std::string> devices = {"old"};
  EXPECT_EQ(ListNdDevices(kernel.files(), devices), HVC_OK) << "a host without persistent memory";
  EXPECT_TRUE(devices.empty());
  for (const char *name : {"region10", "region2", "nmem0"})
    kernel.host().MakeFolder(kNdDevices + name);
  EXPECT_EQ(ListNdDevices(kernel.files(), devices), HVC_OK);
  EXPECT_EQ(devices, (std::vector<std::string>{"nmem0", "region2", "region10"}));
  EXPECT_TRUE(NdDeviceExists(kernel.files(), "region2"));
  EXPECT_FALSE(NdDeviceExists(kernel.files(), "region3"));
}

TEST(NdDevices, NumbersInNames) {
  uint64_t number = 0;
  EXPECT_TRUE(ParseNdNumber("region12", "region", number));
  EXPECT_EQ(number, 12u);
  EXPECT_TRUE(ParseNdNumber("namespace3.4", "namespace", number));
  EXPECT_EQ(number, 3u);
  for (const char *name : {"region", "regionx", "region2x", "region\n3", "regions", "namespace1.0", "region.1", ""})
    EXPECT_FALSE(ParseNdNumber(name, "region", number)) << name;
}

}  // namespace
}  // namespace platkit
