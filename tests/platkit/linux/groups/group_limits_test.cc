#include "platkit/linux/groups/group_limits.h"

#include "platkit/linux/groups/host_groups.h"
#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

constexpr uint64_t kMB = 1 << 20;
const std::string kSlice = "sys/fs/cgroup/machine.slice";
const std::string kScope = kSlice + "/web.scope";
const std::string kGuest = kScope + "/guest";

// The VM 310 of clients.host, whose control group is machine.slice/web.scope/guest.
class GroupLimitsTest : public testing::Test {
 protected:
  Figure Lowest(CgroupAmount amount) {
    HostGroups groups(files_);
    return groups.limits.Lowest(*groups.tree.Find(310), amount);
  }
  SwapLimit Swap() {
    HostGroups groups(files_);
    return groups.limits.Swap(*groups.tree.Find(310));
  }

  SavedHost host_{"clients.host"};
  HostFiles files_{host_.Path(""), Reach::kRootFolder};
};

TEST_F(GroupLimitsTest, TheLowestOfAllGroupsAboveHolds) {
  EXPECT_EQ(Lowest(CgroupAmount::kMax), Figure(4096 * kMB)) << "only the own group has a limit";
  host_.Write(kSlice + "/memory.max", "max\n");
  host_.Write(kScope + "/memory.max", "1048576\n");
  EXPECT_EQ(Lowest(CgroupAmount::kMax), Figure(kMB));
  host_.Write(kSlice + "/memory.max", "4096\n");
  EXPECT_EQ(Lowest(CgroupAmount::kMax), Figure(4096));
  host_.Write(kSlice + "/memory.max", "x\n");
  EXPECT_EQ(Lowest(CgroupAmount::kMax), kUnreadable) << "it might be lower";
  EXPECT_EQ(Lowest(CgroupAmount::kLow), kAbsent);
}

TEST_F(GroupLimitsTest, SwapIsUnlimitedWithoutALimit) {
  EXPECT_EQ(Swap().total, kUnlimited);
  EXPECT_EQ(Swap().free, kUnlimited);
  host_.Write(kGuest + "/memory.swap.max", "max\n");
  EXPECT_EQ(Swap().total, kUnlimited);
}

TEST_F(GroupLimitsTest, SwapOfEachGroupAbove) {
  host_.Write(kGuest + "/memory.swap.max", std::to_string(1000 * kMB) + "\n");  // 400 MB of which are in use
  EXPECT_EQ(Swap().total, Figure(1000 * kMB));
  EXPECT_EQ(Swap().free, Figure(600 * kMB));
  host_.Write(kSlice + "/memory.swap.max", std::to_string(2000 * kMB) + "\n");
  host_.Write(kSlice + "/memory.swap.current", std::to_string(1900 * kMB) + "\n");
  EXPECT_EQ(Swap().total, Figure(1000 * kMB));
  EXPECT_EQ(Swap().free, Figure(100 * kMB)) << "others in the slice use the rest";
  host_.Write(kSlice + "/memory.swap.current", std::to_string(2100 * kMB) + "\n");
  EXPECT_EQ(Swap().free, Figure(0)) << "the limit was lowered";
}

TEST_F(GroupLimitsTest, Version1LimitsMemoryAndSwapTogether) {
  SavedHost host("v1.host");
  HostFiles files(host.Path(""), Reach::kRootFolder);
  const std::string folder = "sys/fs/cgroup/memory/limited";
  host.Write(folder + "/memory.limit_in_bytes", std::to_string(16 * kMB) + "\n");
  host.Write(folder + "/memory.memsw.limit_in_bytes", std::to_string(20 * kMB) + "\n");
  host.Write(folder + "/memory.stat", "total_swap 1048576\n");
  HostGroups groups(files);
  const SwapLimit limit = groups.limits.Swap(*groups.tree.Find(100));
  EXPECT_EQ(limit.total, Figure(4 * kMB));
  EXPECT_EQ(limit.free, Figure(3 * kMB));
}

}  // namespace
}  // namespace platkit
