#include "tools/nodal/history/recorder.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/tools/nodal/history/recorder_support.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

class RecorderTest : public testing::Test {
 protected:
  RecorderTest() : options_{.folder = scratch_.Path("history")} {}

  void Record(uint64_t count) {
    options_.count = count;
    Recorder(options_, host_, pace_).Run();
  }
  std::vector<std::string> Numbers() const {
    std::vector<std::string> numbers;
    for (const RecordedSample &sample : SamplesIn(options_.folder))
      numbers.push_back(sample.number);
    return numbers;
  }
  std::string MessageOf(const std::function<void()> &action) {
    try {
      action();
    } catch (const Failure &failure) {
      return failure.what();
    }
    return "";
  }

  Scratch scratch_;
  RecorderOptions options_;
  FakeHost host_;
  FakePace pace_;
};

TEST_F(RecorderTest, TakesASampleAtEachInterval) {
  Record(3);
  const std::vector<RecordedSample> samples = SamplesIn(options_.folder);
  ASSERT_EQ(samples.size(), 3u);
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(samples[i].number, std::to_string(i));
    EXPECT_EQ(samples[i].info.time.wall, kNewYear + static_cast<int64_t>(i) * 5 * kSecond);
    EXPECT_EQ(samples[i].info.availableBytes, i);
    EXPECT_EQ(samples[i].info.marks, i == 0 ? platkit::history::kRecorderStarted : 0);
  }
}

TEST_F(RecorderTest, OverdueSamplesAreLeftOut) {
  pace_.beforeWait = [](FakePace &pace) { pace.Advance(12 * kSecond); };
  Record(3);
  const std::vector<RecordedSample> samples = SamplesIn(options_.folder);
  ASSERT_EQ(samples.size(), 3u);
  for (size_t i = 1; i < 3; ++i)
    EXPECT_EQ(samples[i].info.time.wall - samples[i - 1].info.time.wall, 12 * kSecond);
}

TEST_F(RecorderTest, EachHourHasASegment) {
  options_.interval = 20 * kMinute;
  Record(7);
  EXPECT_EQ(SegmentsIn(options_.folder).size(), 3u);
  EXPECT_EQ(Numbers(), (std::vector<std::string>{"0", "1", "2", "3", "4", "5", "6"}));
}

TEST_F(RecorderTest, ASecondRunContinues) {
  Record(2);
  pace_.Advance(kMinute);
  Record(2);
  EXPECT_EQ(Numbers(), (std::vector<std::string>{"0", "1", "2", "3"}));
  const std::vector<RecordedSample> samples = SamplesIn(options_.folder);
  EXPECT_EQ(samples[2].info.marks, platkit::history::kRecorderStarted);
}

TEST_F(RecorderTest, TheHistoryIsPrivate) {
  umask(0);
  Record(1);
  umask(022);
  struct stat about;
  ASSERT_EQ(stat(options_.folder.c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 07777, 0700u);
  for (const auto &entry : std::filesystem::directory_iterator(options_.folder)) {
    ASSERT_EQ(stat(entry.path().c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 07777, 0600u) << entry.path();
  }
}

TEST_F(RecorderTest, FoldersAboveAreCreated) {
  options_.folder = scratch_.Path("a/b/c/");
  Record(1);
  EXPECT_EQ(SamplesIn(options_.folder).size(), 1u);
}

TEST_F(RecorderTest, AFolderKeepsItsMode) {
  ASSERT_EQ(mkdir(options_.folder.c_str(), 0750), 0);
  Record(1);
  struct stat about;
  ASSERT_EQ(stat(options_.folder.c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 07777, 0750u);
}

TEST_F(RecorderTest, AFolderThatOthersMayChangeIsRefused) {
  ASSERT_EQ(mkdir(options_.folder.c_str(), 0700), 0);
  for (const mode_t mode : {0770u, 0702u, 01777u}) {
    ASSERT_EQ(chmod(options_.folder.c_str(), mode), 0);
    EXPECT_EQ(MessageOf([&] { Record(1); }), options_.folder + ": other users may write to the folder (use chmod 700)");
  }
  ASSERT_EQ(chmod(options_.folder.c_str(), 0700), 0);
  if (geteuid() != 0) return;
  ASSERT_EQ(chown(options_.folder.c_str(), 65534, 65534), 0);
  EXPECT_EQ(MessageOf([&] { Record(1); }), options_.folder + ": the folder belongs to another user");
}

TEST_F(RecorderTest, WhatIsNoFolderIsRefused) {
  scratch_.Write("history", "text");
  EXPECT_NE(MessageOf([&] { Record(1); }), "");
  options_.folder = "";
  EXPECT_EQ(MessageOf([&] { Record(1); }), "--directory: the name of the folder is empty");
}

TEST_F(RecorderTest, ASecondRecorderIsTurnedAway) {
  const std::string expected =
      options_.folder + ": process " + std::to_string(getpid()) + " already records to this folder";
  options_.count = 1;
  Recorder first(options_, host_, pace_);
  EXPECT_EQ(MessageOf([&] { Recorder(options_, host_, pace_); }), expected);
  first.Run();
  EXPECT_EQ(MessageOf([&] { Recorder(options_, host_, pace_); }), expected) << "until the first one is destroyed";
}

TEST_F(RecorderTest, TheLockOfAnEndedRecorderDoesNotMatter) {
  ASSERT_EQ(mkdir(options_.folder.c_str(), 0700), 0);
  scratch_.Write("history/recorder.lock", "1\n");
  Record(1);
  EXPECT_EQ(Numbers().size(), 1u);
}

TEST_F(RecorderTest, LinksAreNotFollowed) {
  ASSERT_EQ(mkdir(options_.folder.c_str(), 0700), 0);
  const std::string target = scratch_.Write("target", "text");
  ASSERT_EQ(symlink(target.c_str(), (options_.folder + "/recorder.lock").c_str()), 0);
  EXPECT_NE(MessageOf([&] { Record(1); }), "");
  ASSERT_EQ(unlink((options_.folder + "/recorder.lock").c_str()), 0);
  ASSERT_EQ(symlink(target.c_str(), (options_.folder + "/" + SegmentName::At(kNewYear).text()).c_str()), 0);
  Record(1);
  EXPECT_EQ(Contents(target), "text");
}

TEST_F(RecorderTest, AFileThatIsNoSegmentIsPutAside) {
  ASSERT_EQ(mkdir(options_.folder.c_str(), 0700), 0);
  const std::string name = "history/" + SegmentName::At(kNewYear).text();
  scratch_.Write(name, std::string(10'000, 'x'));
  Record(2);
  EXPECT_EQ(Numbers(), (std::vector<std::string>{"0", "1"}));
  EXPECT_EQ(Contents(scratch_.Path(name + ".damaged")), std::string(10'000, 'x'));
}

TEST_F(RecorderTest, EachFileThatIsPutAsideStays) {
  ASSERT_EQ(mkdir(options_.folder.c_str(), 0700), 0);
  const std::string name = "history/" + SegmentName::At(kNewYear).text();
  for (const char letter : {'x', 'y', 'z'}) {
    std::filesystem::remove(scratch_.Path(name));
    scratch_.Write(name, std::string(10'000, letter));
    Record(1);
  }
  EXPECT_EQ(Contents(scratch_.Path(name + ".damaged")), std::string(10'000, 'x'));
  EXPECT_EQ(Contents(scratch_.Path(name + ".damaged.2")), std::string(10'000, 'y'));
  EXPECT_EQ(Contents(scratch_.Path(name + ".damaged.3")), std::string(10'000, 'z'));
  EXPECT_EQ(Numbers(), std::vector<std::string>{"2"});
}

// The clocks.

TEST_F(RecorderTest, AClockThatIsSetBack) {
  options_.interval = 20 * kMinute;
  int waits = 0;
  pace_.beforeWait = [&](FakePace &pace) {
    if (++waits == 5) pace.now.wall -= 90 * kMinute;
  };
  Record(10);
  EXPECT_EQ(Numbers().size(), 10u);
}

TEST_F(RecorderTest, AClockThatIsSetToAWrongYear) {
  options_.interval = 20 * kMinute;
  int waits = 0;
  pace_.beforeWait = [&](FakePace &pace) {
    if (++waits == 5) pace.now.wall += 50 * 365 * kDay;
    if (waits == 20) pace.now.wall -= 50 * 365 * kDay;
  };
  Record(30);
  EXPECT_EQ(Numbers().size(), 30u) << "nobody knows yet which year is right";
  Record(80);
  EXPECT_EQ(Numbers().size(), 95u) << "after a day, those of the wrong year are too old";
}

TEST_F(RecorderTest, AClockThatIsSetBackByYearsRemovesNothing) {
  options_.interval = 20 * kMinute;
  int waits = 0;
  pace_.beforeWait = [&](FakePace &pace) {
    if (++waits == 5) pace.now.wall -= 5 * 365 * kDay;
  };
  Record(10);
  EXPECT_EQ(Numbers().size(), 10u);
}

TEST_F(RecorderTest, StartsTwiceWithAWrongYear) {
  options_.interval = 20 * kMinute;  // so long that no sample is thinned
  Record(3);
  pace_.now.wall += 20 * 365 * kDay;
  Record(1);
  Record(1);
  EXPECT_EQ(Numbers(), (std::vector<std::string>{"0", "1", "2", "3", "4"}));
}

TEST_F(RecorderTest, AFileOfTheLastYearThatANameCanHave) {
  Record(3);
  namespace fs = std::filesystem;
  const fs::path folder = options_.folder;
  fs::copy_file(folder / SegmentName::At(pace_.now.wall).text(), folder / "2262-04-11T23Z.history");
  Record(1);
  EXPECT_EQ(Numbers().size(), 7u);
}

TEST_F(RecorderTest, AClockBefore1970) {
  pace_.now.wall = -5 * kDay;
  Record(3);
  EXPECT_EQ(Numbers().size(), 3u);
}

TEST_F(RecorderTest, TheMachineSleeps) {
  int waits = 0;
  pace_.beforeWait = [&](FakePace &pace) {
    if (++waits != 3) return;
    pace.now.wall += 8 * kHour;
    pace.now.boot += 8 * kHour;
  };
  Record(5);
  const std::vector<RecordedSample> samples = SamplesIn(options_.folder);
  ASSERT_EQ(samples.size(), 5u);
  EXPECT_GT(samples[2].info.time.boot - samples[1].info.time.boot, 8 * kHour);
  EXPECT_EQ(samples[2].info.time.monotonic - samples[1].info.time.monotonic, 5 * kSecond);
}

TEST_F(RecorderTest, TheMachineIsBootedAgain) {
  Record(2);
  pace_.now.boot = pace_.now.monotonic = kMinute;
  pace_.now.wall += 10 * kMinute;
  Record(2);
  EXPECT_EQ(Numbers(), (std::vector<std::string>{"0", "1", "2", "3"}));
}

// Full disks. A limit on file sizes simulates a full disk; another test fills a real one.

class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {.rlim_cur = bytes, .rlim_max = before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
  FileSizeLimit(const FileSizeLimit &) = delete;
  FileSizeLimit &operator=(const FileSizeLimit &) = delete;

 private:
  rlimit before_;
};

TEST_F(RecorderTest, SamplesOnAFullDiskAreLostAndToldOnce) {
  std::unique_ptr<FileSizeLimit> full;
  host_.payloadBytes = 1000;
  int waits = 0;
  pace_.beforeWait = [&](FakePace &) {
    ++waits;
    if (waits == 3) full = std::make_unique<FileSizeLimit>(4000);  // more than the messages need
    if (waits == 6) full.reset();
  };
  testing::internal::CaptureStderr();
  Record(8);
  const std::string messages = testing::internal::GetCapturedStderr();
  EXPECT_EQ(Numbers(), (std::vector<std::string>{"0", "1", "5", "6", "7"}));
  EXPECT_EQ(std::ranges::count(messages, '\n'), 2) << messages;
  EXPECT_NE(messages.find("samples are lost until writing succeeds again"), std::string::npos) << messages;
  EXPECT_NE(messages.find("recording again; 3 samples lost"), std::string::npos) << messages;
}

class Mounted {
 public:
  explicit Mounted(const std::string &folder) : folder_(folder) {}
  ~Mounted() { umount2(folder_.c_str(), MNT_DETACH); }
  Mounted(const Mounted &) = delete;
  Mounted &operator=(const Mounted &) = delete;

 private:
  std::string folder_;
};

TEST_F(RecorderTest, AFullFileSystem) {
  ASSERT_EQ(mkdir(options_.folder.c_str(), 0700), 0);
  if (mount("none", options_.folder.c_str(), "tmpfs", 0, "size=256k,mode=0700") != 0)
    GTEST_SKIP() << "file systems cannot be mounted here";
  const Mounted mounted(options_.folder);
  const std::string ballast = options_.folder + "/ballast";
  host_.payloadBytes = 2000;
  int waits = 0;
  pace_.beforeWait = [&](FakePace &) {
    ++waits;
    if (waits == 5) std::ofstream(ballast) << std::string(1 << 20, 'x');
    if (waits == 10) std::filesystem::remove(ballast);
  };
  testing::internal::CaptureStderr();
  options_.interval = 10 * kMinute;
  Record(15);
  testing::internal::GetCapturedStderr();
  const std::vector<std::string> numbers = Numbers();
  const std::vector<std::string> last = {"9", "10", "11", "12", "13", "14"};
  EXPECT_GE(numbers.size(), 10u);
  EXPECT_LT(numbers.size(), 15u);
  EXPECT_TRUE(std::ranges::equal(std::span(numbers).last(6), last));
}

// Limits.

TEST_F(RecorderTest, TheSizeIsBoundedAfterEachSample) {
  options_.interval = 5 * kMinute;
  options_.limits.bytes = 100'000;
  host_.entries = 20;
  host_.payloadBytes = 500;
  uint64_t largest = 0;
  pace_.beforeWait = [&](FakePace &) {
    if (std::filesystem::exists(options_.folder)) largest = std::max(largest, SizeOf(SegmentsIn(options_.folder)));
  };
  Record(24 * 12);
  EXPECT_LE(largest, 100'000u);
  EXPECT_FALSE(Numbers().empty());
  EXPECT_EQ(Numbers().back(), std::to_string(24 * 12 - 1));
}

TEST_F(RecorderTest, ASegmentThatAloneIsTooLargeBeginsAgain) {
  options_.interval = kSecond;
  options_.limits.bytes = 5'000;
  uint64_t largest = 0;
  pace_.beforeWait = [&](FakePace &) {
    if (std::filesystem::exists(options_.folder)) largest = std::max(largest, SizeOf(SegmentsIn(options_.folder)));
  };
  Record(500);
  EXPECT_LE(largest, 5'000u);
  EXPECT_EQ(Numbers().back(), "499");
}

}  // namespace
}  // namespace nodal
