#include "platkit/linux/kernel/pci.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

const std::string kPciDevices = "sys/bus/pci/devices/";
constexpr PciAddress kFunction = {0, 0x3a, 0xa, 2};
const std::string kFunctionFolder = kPciDevices + "0000:3a:0a.2/";

TEST(Pci, Functions) {
  KernelFiles kernel;
  std::vector<PciAddress> functions = {kFunction};
  EXPECT_EQ(ListPciFunctions(kernel.files(), functions), HVC_OK) << "a host without the bus";
  EXPECT_TRUE(functions.empty());
  for (const char *name : {"0000:3a:0a.2", "10000:00:1f.7", "0000:00:20.0", "0:00:00.0", "0000:00:00.8",
                           "0000:00:00.0 ", "0000:3A:00.0", "x", ":::"}) {
    kernel.host().MakeFolder(kPciDevices + name);
  }
  EXPECT_EQ(ListPciFunctions(kernel.files(), functions), HVC_OK);
  EXPECT_EQ(functions, (std::vector<PciAddress>{kFunction, {0x10000, 0, 0x1f, 7}}));
  kernel.host().Forbid(kPciDevices);
  OrdinaryUser user;
  EXPECT_EQ(ListPciFunctions(kernel.files(), functions), HVC_NO_PERMISSION);
}

TEST(Pci, Identifiers) {
  KernelFiles kernel;
  PciIds ids;
  EXPECT_EQ(ReadPciIds(kernel.files(), kFunction, ids), HVC_NOT_FOUND);
  kernel.host().Write(kFunctionFolder + "vendor", "0x8086\n");
  EXPECT_EQ(ReadPciIds(kernel.With(kFunctionFolder + "device", "0x2041\n"), kFunction, ids), HVC_OK);
  EXPECT_EQ(ids.vendor, 0x8086);
  EXPECT_EQ(ids.device, 0x2041);
  for (const char *bad : {"", "2041\n", "0x\n", "0x12345\n", "0x1 2\n", "max\n"})
    EXPECT_EQ(ReadPciIds(kernel.With(kFunctionFolder + "device", bad), kFunction, ids), HVC_IO_ERROR) << bad;
  EXPECT_EQ(ReadPciIds(kernel.files(), {0, 256, 0, 0}, ids), HVC_NOT_FOUND);
}

TEST(Pci, Registers) {
  KernelFiles kernel;
  uint32_t value = 0;
  const auto read = [&](int64_t size, int64_t address) {
    return ReadPciRegister(kernel.files(), {.function = kFunction, .size = size, .address = address}, value);
  };
  EXPECT_EQ(read(4, 0), HVC_NOT_FOUND);
  kernel.host().Write(kFunctionFolder + "config", "\x01\x02\x03\x04" + std::string(252, 'x'));
  EXPECT_EQ(read(4, 0), HVC_OK);
  EXPECT_EQ(value, 0x04030201u);
  EXPECT_EQ(read(1, 2), HVC_OK);
  EXPECT_EQ(value, 3u);
  EXPECT_EQ(read(3, 0), HVC_BAD_PARAM);
  EXPECT_EQ(read(4, 2), HVC_UNALIGNED_ADDRESS);
  EXPECT_EQ(read(4, 256), HVC_ADDRESS_TOO_HIGH);
  EXPECT_EQ(read(4, 4096), HVC_ADDRESS_TOO_HIGH);
  kernel.host().Write(kFunctionFolder + "config", std::string(64, 'x'));
  EXPECT_EQ(read(4, 64), HVC_NO_PERMISSION) << "what an ordinary user saved";
  EXPECT_EQ(WritePciRegister(kernel.files(), {.function = kFunction, .size = 4, .address = 0}, 1), HVC_READ_ONLY);
}

}  // namespace
}  // namespace platkit
