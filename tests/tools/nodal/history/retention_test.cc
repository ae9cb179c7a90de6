// How long samples are kept, over simulated months.
#include "tools/nodal/history/retention.h"

#include "tests/tools/nodal/history/recorder_support.h"

namespace nodal {
namespace {

class RetentionTest : public testing::Test {
 protected:
  RetentionTest() : options_{.folder = scratch_.Path("history")} {}

  void Record(int64_t duration) {
    options_.count = static_cast<uint64_t>(duration / options_.interval);
    Recorder(options_, host_, pace_).Run();
  }
  // Returns the samples whose age, at the end of the recording, is from `from` to before `to`.
  std::vector<RecordedSample> SamplesOfAge(int64_t from, int64_t to) const {
    std::vector<RecordedSample> samples = SamplesIn(options_.folder);
    std::erase_if(samples, [&](const RecordedSample &sample) {
      const int64_t age = pace_.now.wall - sample.info.time.wall;
      return age < from || age >= to;
    });
    return samples;
  }

  Scratch scratch_;
  RecorderOptions options_;
  FakeHost host_;
  FakePace pace_;
};

TEST_F(RetentionTest, AfterThreeMonthsThereIsOne) {
  options_.interval = kHour;
  Record(90 * kDay);
  const std::vector<RecordedSample> samples = SamplesIn(options_.folder);
  const int64_t oldest = pace_.now.wall - samples.front().info.time.wall;
  EXPECT_GE(oldest, 30 * kDay);
  EXPECT_LE(oldest, 30 * kDay + 2 * kHour);
  EXPECT_EQ(samples.size(), static_cast<size_t>(oldest / options_.interval + 1));
}

TEST_F(RetentionTest, AfterADayOneSampleAMinuteRemains) {
  options_.interval = 20 * kSecond;
  host_.available = [](uint64_t number) { return number % 3 == 1 ? 100 : 200 + number; };
  Record(2 * kDay);
  const size_t recent = SamplesOfAge(0, 23 * kHour).size();
  EXPECT_EQ(recent, 23u * 60 * 3);
  const std::vector<RecordedSample> old = SamplesOfAge(26 * kHour, 47 * kHour);
  EXPECT_EQ(old.size(), 21u * 60);
  for (const RecordedSample &sample : old) {
    EXPECT_EQ(sample.info.availableBytes, 100u) << "the one with the least memory available";
    EXPECT_EQ(std::stoull(sample.number) % 3, 1u);
    EXPECT_NE(sample.info.marks & platkit::history::kThinned, 0);
  }
  for (const auto &entry : std::filesystem::directory_iterator(options_.folder))
    EXPECT_NE(entry.path().filename(), SegmentThinner::kTemporary);
}

TEST_F(RetentionTest, AShortAge) {
  options_.interval = kMinute;
  options_.limits.age = 3 * kHour;
  Record(10 * kHour);
  EXPECT_EQ(SegmentsIn(options_.folder).size(), 4u) << "the open one, and three that are at most as old";
}

// After a restart, the recorder continues to thin the samples of its previous runs.
TEST_F(RetentionTest, Restarts) {
  options_.interval = 20 * kSecond;
  for (int i = 0; i < 12; ++i)
    Record(4 * kHour + kMinute);
  const std::vector<RecordedSample> old = SamplesOfAge(26 * kHour, 47 * kHour);
  EXPECT_LE(old.size(), 21u * 60 + 12);
  EXPECT_GE(old.size(), 21u * 60 - 12);
}

TEST_F(RetentionTest, AWrongYearDoesNotMakeSamplesOld) {
  options_.interval = 10 * kMinute;
  Record(5 * kDay);
  const size_t before = SamplesIn(options_.folder).size();
  pace_.now.wall += 10 * 365 * kDay;
  Record(6 * kHour);
  pace_.now.wall -= 10 * 365 * kDay;
  EXPECT_EQ(SamplesIn(options_.folder).size(), before + 36);
  Record(kHour);
  EXPECT_GE(SamplesIn(options_.folder).size(), before) << "those of the wrong year are as old as they are ahead";
}

TEST_F(RetentionTest, AfterADayAClockThatWasSetForwardIsBelieved) {
  options_.interval = 10 * kMinute;
  Record(2 * kDay);
  pace_.now.wall += 365 * kDay;
  Record(2 * kDay);
  for (const RecordedSample &sample : SamplesIn(options_.folder))
    EXPECT_LT(pace_.now.wall - sample.info.time.wall, 3 * kDay);
}

TEST_F(RetentionTest, WhatAThinningLeftIsRemoved) {
  ASSERT_TRUE(std::filesystem::create_directory(options_.folder));
  std::filesystem::permissions(options_.folder, std::filesystem::perms::owner_all);
  scratch_.Write("history/thinning.tmp", "left");
  Record(kMinute);
  EXPECT_FALSE(std::filesystem::exists(scratch_.Path("history/thinning.tmp")));
}

TEST_F(RetentionTest, OtherFilesStay) {
  ASSERT_TRUE(std::filesystem::create_directory(options_.folder));
  std::filesystem::permissions(options_.folder, std::filesystem::perms::owner_all);
  scratch_.Write("history/README", "text");
  options_.interval = kMinute;
  options_.limits.age = kHour;
  Record(5 * kHour);
  EXPECT_EQ(Contents(scratch_.Path("history/README")), "text");
}

TEST_F(RetentionTest, FilesThatWereSetAsideBecomeTooOld) {
  ASSERT_TRUE(std::filesystem::create_directory(options_.folder));
  std::filesystem::permissions(options_.folder, std::filesystem::perms::owner_all);
  const std::string name = "history/" + SegmentName::At(kNewYear).text();
  for (const char *end : {".damaged", ".damaged.2", ".damaged.x"})
    scratch_.Write(name + end, "text");
  options_.interval = 10 * kMinute;
  options_.limits.age = 3 * kHour;
  Record(3 * kHour);
  EXPECT_EQ(Contents(scratch_.Path(name + ".damaged.2")), "text");
  Record(3 * kHour);
  EXPECT_FALSE(std::filesystem::exists(scratch_.Path(name + ".damaged")));
  EXPECT_FALSE(std::filesystem::exists(scratch_.Path(name + ".damaged.2")));
  EXPECT_EQ(Contents(scratch_.Path(name + ".damaged.x")), "text") << "not the recorder's";
}

TEST_F(RetentionTest, FilesThatWereSetAsideCount) {
  options_.interval = 10 * kMinute;
  Record(4 * kHour);
  const auto segments = SegmentsIn(options_.folder);
  ASSERT_GE(segments.size(), 4u);
  const std::string second = std::next(segments.begin())->first;
  const std::string aside = "history/" + second + ".damaged";
  scratch_.Write(aside, std::string(100'000, 'x'));
  options_.limits.bytes = SizeOf(segments) + 100'000;
  Record(kHour);
  EXPECT_FALSE(std::filesystem::exists(options_.folder + "/" + segments.begin()->first)) << "the oldest one";
  EXPECT_TRUE(std::filesystem::exists(scratch_.Path(aside)));
  options_.limits.bytes = 50'000;
  Record(kMinute * 10);
  EXPECT_FALSE(std::filesystem::exists(options_.folder + "/" + second)) << "before the file that was set aside";
  EXPECT_FALSE(std::filesystem::exists(scratch_.Path(aside)));
  EXPECT_TRUE(std::filesystem::exists(options_.folder + "/" + std::next(segments.begin(), 2)->first));
}

// A segment in which a frame is damaged is thinned to the samples that can be read.
TEST_F(RetentionTest, DamagedSegments) {
  options_.interval = 20 * kSecond;
  Record(2 * kHour);
  const auto segments = SegmentsIn(options_.folder);
  const std::string path = options_.folder + "/" + segments.begin()->first;
  std::string bytes = Contents(path);
  bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
  testing_support::WriteFile(path, bytes);
  Record(26 * kHour);
  HistoryFolder folder;
  ASSERT_EQ(folder.Open(options_.folder.c_str()), HVC_OK);
  SegmentReader reader;
  ASSERT_EQ(reader.Open(folder.fd(), segments.begin()->first.c_str()), HVC_OK);
  EXPECT_GE(reader.frames().size(), 55u);
  EXPECT_LE(reader.frames().size(), 60u);
}

// Groups of samples of the same minute.

SegmentReader::Frame FrameAt(int64_t second, uint64_t available, uint8_t marks = 0) {
  SegmentReader::Frame frame = {};
  frame.info = {.time = {.wall = kNewYear + second * kSecond, .boot = second * kSecond, .monotonic = second * kSecond},
                .availableBytes = available,
                .marks = marks};
  return frame;
}

TEST(MinutesOf, TheSampleWithTheLeastMemoryComesFirst) {
  const auto minutes = MinutesOf({FrameAt(0, 30), FrameAt(20, 10), FrameAt(40, 20), FrameAt(60, 5), FrameAt(120, 5)});
  ASSERT_EQ(minutes.size(), 3u);
  EXPECT_EQ(minutes[0].frames, (std::vector<size_t>{1, 2, 0}));
  EXPECT_EQ(minutes[0].marks, platkit::history::kThinned);
  EXPECT_EQ(minutes[1].frames, (std::vector<size_t>{3}));
  EXPECT_EQ(minutes[1].marks, platkit::history::kThinned) << "samples before it were removed";
  EXPECT_EQ(minutes[2].marks, 0);
}

TEST(MinutesOf, ARestartEndsTheMinute) {
  SegmentReader::Frame end = FrameAt(10, 0);
  end.isEnd = true;
  SegmentReader::Frame afterBoot = FrameAt(30, 1);
  afterBoot.info.time.boot = 5 * kSecond;
  const auto minutes =
      MinutesOf({FrameAt(0, 1), end, FrameAt(20, 1, platkit::history::kRecorderStarted), FrameAt(25, 1), afterBoot});
  ASSERT_EQ(minutes.size(), 4u);
  EXPECT_TRUE(minutes[1].isEnd);
  EXPECT_EQ(minutes[2].frames.size(), 2u);
  EXPECT_EQ(minutes[2].marks, platkit::history::kRecorderStarted | platkit::history::kThinned);
}

TEST(MinutesOf, ATimeBefore1970) {
  SegmentReader::Frame before = FrameAt(0, 1), after = FrameAt(1, 1);
  before.info.time.wall = -kSecond;
  after.info.time.wall = kSecond;
  EXPECT_EQ(MinutesOf({before, after}).size(), 2u);
}

}  // namespace
}  // namespace nodal
