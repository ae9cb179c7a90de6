// DIR@TIME as the source of a tree.
#include "platkit/history/history_source.h"

#include "platkit/history/history.h"
#include "tests/platkit/history/recording.h"
#include "tests/platkit/snapshot/small_host.h"

namespace platkit::history {
namespace {

constexpr int64_t kFirst = kStart / kNanosInSecond;

// The small host of the snapshot tests, with a node that could not be read. numVMs holds the sample's time in seconds.
Entries SmallHostAt(uint32_t second) {
  std::string name = "host";
  name.resize(sizeof(GroupNameRecord));
  return {{"/sched/groups/0/groupName", {'R', name}},
          {"/sched/globalStats/numVMs", {'R', std::string(reinterpret_cast<const char *>(&second), sizeof second)}},
          {"/sched/groups/0/members/groups", {'I', Integers({1, -2, INT64_MAX})}},
          {"/system/heaps", {'T', std::string("main\0\0a/b\0", 10)}},
          {"failed:/system/buddy", {'R', std::string("\x0d\0\xad\x0b", 4)}}};
}

class MomentTest : public testing::Test {
 protected:
  // Records a sample every five seconds, each into the segment of its hour.
  void Record(double from, double to) {
    SegmentWriter writer;
    std::string open;
    for (double second = from; second < to; second += 5) {
      const SampleTime time = TimeAt(second);
      const std::string name = SegmentName::At(time.wall).text();
      if (name != open) {
        ASSERT_EQ(writer.Open(recording_.folder(), name.c_str()), HVC_OK);
      }
      open = name;
      Sample sample = SampleOf(SmallHostAt(static_cast<uint32_t>(static_cast<int64_t>(second))));
      ASSERT_EQ(writer.Append(TestHost(), {.time = time}, sample), HVC_OK);
    }
  }

  // The time in seconds of the sample that the source has, or the status of opening the source.
  int64_t Open(const std::string &time) {
    std::unique_ptr<Source> source;
    const HVC_ReturnStatus status = OpenMoment((recording_.scratch().folder() + "@" + time).c_str(), source);
    if (status != HVC_OK) return status;
    return snapshot::ReadSmallHost(*source, {HVC_OK}).numVMs.value();
  }
  int64_t OpenAt(int64_t second) { return Open("@" + std::to_string(kFirst + second)); }

  std::string PathAt(double second) { return recording_.scratch().Path(SegmentName::At(TimeAt(second).wall).text()); }

  Recording recording_;
};

TEST_F(MomentTest, IsTheLastSampleAtOrBeforeTheTime) {
  Record(0.5, 100);
  EXPECT_EQ(OpenAt(0), 0);
  EXPECT_EQ(OpenAt(4), 0);
  EXPECT_EQ(OpenAt(5), 5);
  EXPECT_EQ(OpenAt(64), 60);
  EXPECT_EQ(OpenAt(95), 95);
  EXPECT_EQ(Open("-0s"), 95);
  EXPECT_EQ(Open("-30s"), 65);
}

TEST_F(MomentTest, HasTheValuesOfTheSample) {
  Record(2, 3);
  std::unique_ptr<Source> source;
  ASSERT_EQ(OpenMoment((recording_.scratch().folder() + "@-0s").c_str(), source), HVC_OK);
  EXPECT_EQ(snapshot::ReadSmallHost(*source, {HVC_OK}), snapshot::kSmallHost);
  EXPECT_EQ(source->definitions().signature, OwnDefinitions().signature);
  EXPECT_EQ(snapshot::Reading("/system/buddy").List(*source), HVC_NO_PERMISSION);
  GroupNameRecord name;
  EXPECT_EQ(snapshot::Reading("/sched/groups/1/groupName").Get(*source, &name), HVC_NOT_FOUND);
}

TEST_F(MomentTest, IsWithinTheSpan) {
  Record(0, 100);
  EXPECT_EQ(OpenAt(-1), HVC_OUT_OF_RANGE);
  EXPECT_EQ(OpenAt(100), 95);  // the next sample is not due yet
  EXPECT_EQ(OpenAt(101), HVC_OUT_OF_RANGE);
  EXPECT_EQ(Open("-2m"), HVC_OUT_OF_RANGE);
  EXPECT_EQ(Open("@253402300799"), HVC_OUT_OF_RANGE);
}

// The clock of a sample has room for years up to 2262.
TEST_F(MomentTest, CanBeFarInTheFuture) {
  constexpr int kTwoHundredYears = 2'000'000'000;
  Record(kTwoHundredYears, kTwoHundredYears + 20);
  EXPECT_EQ(Open("-0s"), kTwoHundredYears + 15);
}

TEST_F(MomentTest, CanBeInAGap) {
  Record(0, 20);
  Record(3 * 3600, 3 * 3600 + 20);
  EXPECT_EQ(OpenAt(3600), 15);
  EXPECT_EQ(OpenAt(3 * 3600 - 1), 15);
  EXPECT_EQ(OpenAt(3 * 3600), 3 * 3600);
}

TEST_F(MomentTest, NeedsAKnownTime) {
  Record(0, 20);
  EXPECT_EQ(Open("yesterday"), HVC_BAD_PARAM);
  EXPECT_EQ(Open(""), HVC_BAD_PARAM);
}

TEST_F(MomentTest, NeedsAHistory) {
  EXPECT_EQ(Open("-0s"), HVC_NOT_FOUND);
  std::unique_ptr<Source> source;
  EXPECT_EQ(OpenMoment("no-such-folder@-0s", source), HVC_NOT_FOUND);
  EXPECT_EQ(OpenMoment("no-such-file", source), HVC_NOT_FOUND);
  EXPECT_EQ(OpenMoment("", source), HVC_NOT_FOUND);
}

// The clock was set back by 50 s, so two samples can have the same time. The sample that was recorded last counts.
TEST_F(MomentTest, FollowsAClockThatWasSetBack) {
  Record(0, 100);
  SegmentWriter writer;
  ASSERT_EQ(writer.Open(recording_.folder(), SegmentName::At(kStart).text().c_str()), HVC_OK);
  for (uint32_t second = 100; second < 120; second += 5) {
    SampleTime time = TimeAt(second);
    time.wall -= 50 * kNanosInSecond;
    Sample sample = SampleOf(SmallHostAt(second));
    ASSERT_EQ(writer.Append(TestHost(), {.time = time}, sample), HVC_OK);
  }
  EXPECT_EQ(OpenAt(49), 45);
  EXPECT_EQ(OpenAt(52), 100);
  EXPECT_EQ(OpenAt(67), 115);
  EXPECT_EQ(OpenAt(70), 70);
}

class DamagedMomentTest : public MomentTest {
 protected:
  void Flip(size_t frame, size_t byte) {
    const std::string path = PathAt(0);
    SegmentReader reader;
    ASSERT_EQ(reader.Open(recording_.folder(), SegmentName::At(kStart).text().c_str()), HVC_OK);
    std::string bytes = Contents(path);
    bytes[reader.frames()[frame].start + byte] ^= 1;
    testing_support::WriteFile(path, bytes);
  }
};

// The samples of seconds 20 to 55 are lost.
TEST_F(DamagedMomentTest, IsNotReplacedByAnEarlierSample) {
  for (const size_t byte : {0u, 40u, 100u}) {
    Record(0, 100);
    Flip(4, byte);
    EXPECT_EQ(OpenAt(15), 15);
    EXPECT_EQ(OpenAt(20), HVC_SNAPSHOT_DAMAGED);
    EXPECT_EQ(OpenAt(25), HVC_SNAPSHOT_DAMAGED);
    EXPECT_EQ(OpenAt(59), HVC_SNAPSHOT_DAMAGED);
    EXPECT_EQ(OpenAt(60), 60);
    std::filesystem::remove(PathAt(0));
  }
}

TEST_F(DamagedMomentTest, IsReadableBesideAnIncompleteEnd) {
  Record(0, 100);
  const std::string bytes = Contents(PathAt(0));
  testing_support::WriteFile(PathAt(0), bytes.substr(0, bytes.size() - 1));
  EXPECT_EQ(Open("-0s"), 90);
  EXPECT_EQ(OpenAt(93), 90);
}

TEST_F(DamagedMomentTest, InASegmentThatIsNone) {
  Record(0, 20);
  Record(3600, 3620);
  testing_support::WriteFile(PathAt(0), std::string(1000, 'x'));
  EXPECT_EQ(OpenAt(3600), 3600);
  EXPECT_EQ(OpenAt(3599), HVC_OUT_OF_RANGE);  // the history starts at its first readable sample
  Record(7200, 7220);
  testing_support::WriteFile(PathAt(3600), std::string(1000, 'x'));
  Record(-3600, -3580);
  EXPECT_EQ(OpenAt(3600), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(OpenAt(7200), 7200);
}

}  // namespace
}  // namespace platkit::history
