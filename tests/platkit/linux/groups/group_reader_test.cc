#include "platkit/linux/groups/group_reader.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

class SampledGroup : public testing::Test {
 protected:
  SampledGroup() {
    files_.UseClock(Clock([this] { return now_; }));
    host_.Write(kWeb + "/memory.current", "4096\n");
    host_.Write(kWeb + "/memory.stat", "zswap 1\n");
  }

  // The zswap figure of memory.stat in a sample that is taken `pause` after the previous one.
  Figure NextZswap(std::chrono::seconds pause) {
    now_ += pause;
    return reader_.Stat(group_).zswap;
  }

  SavedHost host_{"v2.host"};
  HostFiles files_{host_.Path(""), Reach::kHost};
  Clock::Time now_ = std::chrono::steady_clock::now();
  GroupReader reader_{files_};
  Group group_{.kind = GroupKind::kControlGroup,
               .id = kFirstControlGroup,
               .name = "web",
               .folder = kWeb,
               .parentID = kHostGroup};
};

TEST_F(SampledGroup, MemoryStatIsReadAgainIfTheMemoryHasChanged) {
  using std::chrono::seconds;
  files_.KeepOpen(100);
  EXPECT_EQ(NextZswap(seconds(0)), Figure(1));
  host_.Write(kWeb + "/memory.stat", "zswap 2\n");
  EXPECT_EQ(NextZswap(seconds(5)), Figure(1));
  host_.Write(kWeb + "/memory.current", "8192\n");
  EXPECT_EQ(NextZswap(seconds(5)), Figure(2));
  host_.Write(kWeb + "/memory.stat", "zswap 3\n");
  EXPECT_EQ(NextZswap(seconds(59)), Figure(2));
  EXPECT_EQ(NextZswap(seconds(1)), Figure(3)) << "a minute has passed";
}

TEST_F(SampledGroup, WithoutASamplerMemoryStatIsReadEachTime) {
  EXPECT_EQ(NextZswap(std::chrono::seconds(0)), Figure(1));
  host_.Write(kWeb + "/memory.stat", "zswap 2\n");
  EXPECT_EQ(NextZswap(std::chrono::seconds(5)), Figure(2));
}

TEST_F(SampledGroup, LimitsAreReusedUpToAnAge) {
  using std::chrono::seconds;
  host_.Write(kWeb + "/memory.max", "4096\n");
  const auto next = [&](CgroupAmount amount, seconds pause) {
    now_ += pause;
    return reader_.Amount(group_, amount);
  };
  files_.KeepOpen(100);
  const auto age = std::make_shared<Clock::Time::duration>(seconds(3));
  files_.ReuseSettings(age);
  EXPECT_EQ(next(CgroupAmount::kMax, seconds(1)), Figure(4096));
  host_.Write(kWeb + "/memory.max", "8192\n");
  host_.Write(kWeb + "/memory.current", "8192\n");
  EXPECT_EQ(next(CgroupAmount::kMax, seconds(2)), Figure(4096));
  EXPECT_EQ(next(CgroupAmount::kCurrent, seconds(0)), Figure(8192));
  EXPECT_EQ(next(CgroupAmount::kMax, seconds(1)), Figure(8192));
  host_.Write(kWeb + "/memory.max", "max\n");
  *age = seconds(0);
  EXPECT_EQ(next(CgroupAmount::kMax, seconds(1)), Figure::Unlimited());
}

TEST(GroupReader, AProcessIsCheckedOnceAfterEachRead) {
  SavedHost host("v2.host");
  HostFiles files(host.Path(""), Reach::kRootFolder);
  GroupReader reader(files);
  ProcessStatus status;
  ASSERT_EQ(ReadProcessStatus(files, 101, status), HVC_OK);
  Group process = {.kind = GroupKind::kProcess, .id = 101, .name = "b", .parentID = kHostGroup};
  process.identity = status.identity;
  EXPECT_EQ(reader.Confirm(process), HVC_OK);
  host.Remove("proc/101/status");
  EXPECT_EQ(reader.Confirm(process), HVC_OK) << "nothing was read since";
  std::string text;
  EXPECT_EQ(files.ReadTrusted(HostPath("sys/missing"), 1, text), HVC_NOT_FOUND);
  EXPECT_EQ(reader.Confirm(process), HVC_NOT_FOUND) << "another process may have its control group";
  char buffer[8];
  std::string_view link;
  EXPECT_NE(files.ReadLink(HostPath("proc/101/exe"), buffer, link), HVC_OK);
  EXPECT_EQ(reader.Confirm(process), HVC_NOT_FOUND);
}

}  // namespace
}  // namespace platkit
