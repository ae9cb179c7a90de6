#include "platkit/linux/kernel/process_maps.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(ProcessMaps, AMapping) {
  KernelFiles kernel;
  ProcessMaps maps(kernel.With("proc/7/maps", "7f00-8000 rw-s 00001000 fe:01 31      /a path\n"), 7);
  Mapping mapping;
  ASSERT_TRUE(maps.Next(mapping));
  EXPECT_EQ(mapping.start, 0x7f00u);
  EXPECT_EQ(mapping.end, 0x8000u);
  EXPECT_TRUE(mapping.isReadable);
  EXPECT_TRUE(mapping.isWritable);
  EXPECT_FALSE(mapping.isExecutable);
  EXPECT_EQ(mapping.device, DeviceNumber{0xfe} << 32 | 1);
  EXPECT_EQ(mapping.inode, 31u);
  EXPECT_EQ(mapping.name, "/a path");
  EXPECT_FALSE(maps.Next(mapping));
  EXPECT_EQ(maps.status(), HVC_OK);
}

TEST(ProcessMaps, GarbageIsSkipped) {
  for (const char *line :
       {"200-100 rw-p 0 00:00 0", "100-100 rw-p 0 00:00 0", "100-200 rw-p 0 00:00", "100-200 rw", "100-200 rw-p 0 00 0",
        "100-200rw-p 0 00:00 0", "g-200 rw-p 0 00:00 0", "100-fffffffffffffffff rw-p 0 00:00 0", "-", "", "max"}) {
    KernelFiles kernel;
    ProcessMaps maps(kernel.With("proc/7/maps", std::string(line) + "\n1-2 r-xp 0 00:00 0\n"), 7);
    Mapping mapping;
    ASSERT_TRUE(maps.Next(mapping)) << line;
    EXPECT_EQ(mapping.end, 2u) << line;
    EXPECT_TRUE(mapping.isExecutable);
    EXPECT_EQ(mapping.name, "");
  }
}

TEST(ProcessMaps, AFileThatCannotBeRead) {
  KernelFiles kernel;
  EXPECT_EQ(ProcessMaps(kernel.files(), 7).status(), HVC_NOT_FOUND);
  kernel.host().Write("proc/7/maps", "");
  kernel.host().Forbid("proc/7/maps");
  OrdinaryUser user;
  EXPECT_EQ(ProcessMaps(kernel.files(), 7).status(), HVC_NO_PERMISSION);
}

}  // namespace
}  // namespace platkit
