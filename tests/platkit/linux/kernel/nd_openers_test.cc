#include "platkit/linux/kernel/nd_openers.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

const std::string kDevices = "sys/bus/nd/devices/";
const std::string kDisk = kDevices + "namespace0.1/block/pmem0.1";
constexpr std::string_view kMounts =
    "22 27 0:21 / /proc rw - proc proc rw\n40 22 259:3 / /data rw - ext4 /dev/pmem0.1 rw\n";

// A namespace whose block device has the number 259:3.
class OpenersTest : public testing::Test {
 protected:
  OpenersTest() {
    kernel_.host().Write(kDisk + "/dev", "259:3\n");
    kernel_.host().MakeFolder(kDisk + "/holders");
  }

  Figure Count() { return CountNdOpeners(kernel_.files(), "namespace0.1"); }

  KernelFiles kernel_;
};

TEST_F(OpenersTest, EachKind) {
  EXPECT_EQ(Count(), Figure(0));
  kernel_.host().Write("proc/self/mountinfo", kMounts);
  EXPECT_EQ(Count(), Figure(1));
  kernel_.host().Write("proc/swaps", "/dev/pmem0.1 partition 9 0 -2\n/dev/pmem0 partition 9 0 -2\n");
  EXPECT_EQ(Count(), Figure(2));
  kernel_.host().MakeFolder(kDisk + "/holders/dm-0");
  kernel_.host().MakeFolder(kDisk + "/holders/md1");
  EXPECT_EQ(Count(), Figure(4));
}

TEST_F(OpenersTest, UsesOfOtherDevicesDoNotCount) {
  kernel_.host().Write("proc/self/mountinfo", "40 22 259:31 / /data rw - ext4 /dev/pmem0.1 rw\n");
  kernel_.host().Write("proc/swaps", "/dev/pmem0.10 partition 9 0 -2\n");
  EXPECT_EQ(Count(), Figure(0));
}

TEST_F(OpenersTest, AnotherDeviceMayHoldTheNamespace) {
  kernel_.host().Write(kDevices + "namespace0.2/holder", "pfn0.0\n");
  kernel_.host().Write(kDevices + "pfn0.0/block/pmem0/dev", "259:3\n");
  kernel_.host().MakeFolder(kDevices + "pfn0.0/block/pmem0/holders");
  kernel_.host().Write("proc/self/mountinfo", kMounts);
  EXPECT_EQ(CountNdOpeners(kernel_.files(), "namespace0.2"), Figure(1));
}

TEST_F(OpenersTest, WhatCannotBeToldIsUnreadable) {
  EXPECT_EQ(CountNdOpeners(kernel_.files(), "namespace0.3"), kUnreadable) << "no block device";
  kernel_.host().Write(kDevices + "namespace0.4/holder", "../region0\n");
  EXPECT_EQ(CountNdOpeners(kernel_.files(), "namespace0.4"), kUnreadable) << "not a device";
  kernel_.host().Write("proc/swaps", "");
  kernel_.host().Forbid("proc/swaps");
  {
    OrdinaryUser user;
    EXPECT_EQ(Count(), kUnreadable);
  }
  kernel_.host().Remove(kDisk + "/holders");
  EXPECT_EQ(Count(), kUnreadable);
  kernel_.host().Remove(kDisk + "/dev");
  EXPECT_EQ(Count(), kUnreadable);
}

}  // namespace
}  // namespace platkit
