// A recorder that is killed while it records, thins and removes. --gtest_repeat=100 kills it hundreds of times.
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <set>

#include "tests/tools/nodal/history/recorder_support.h"
#include "tools/nodal/history/verify_history.h"

namespace nodal {
namespace {

// A sample, by its number.
struct Written {
  int64_t wall;
  uint32_t run;
  bool isWritten;
};

// What the recorder's process shares with the test.
struct Log {
  static constexpr size_t kMax = 50'000;

  std::atomic<uint64_t> taken;
  std::atomic<uint64_t> written;  // all samples before this one are written
  Written samples[kMax];
};

class SharedLog {
 public:
  SharedLog()
      : log_(
            static_cast<Log *>(mmap(nullptr, sizeof(Log), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
  }
  ~SharedLog() { munmap(log_, sizeof(Log)); }
  SharedLog(const SharedLog &) = delete;
  SharedLog &operator=(const SharedLog &) = delete;

  Log *operator->() const { return log_; }
  Log &operator*() const { return *log_; }

 private:
  Log *log_;
};

constexpr int kEntries = 4;

uint64_t AvailableIn(uint64_t number) { return number * 7919 % 100'003; }

// A payload that cannot be compressed, so that each frame takes several pages of its file.
std::string PayloadOf(uint64_t number, int entry) {
  std::minstd_rand random(static_cast<uint32_t>(number * kEntries + static_cast<uint64_t>(entry) + 1));
  std::string payload = std::to_string(number) + " ";
  while (payload.size() < 1500)
    payload += static_cast<char>(random() >> 8);
  return payload;
}

// Never waits. Each look at the clock takes a second, so a tenth of the interval is enough for a few steps of thinning.
class HurriedPace : public Pace {
 public:
  HurriedPace(Log &log, const SampleTime &start) : log_(log), now_(start) {}

  SampleTime Now() override {
    Advance(kSecond);
    return now_;
  }
  bool WaitUntil(int64_t time) override {
    log_.written = log_.taken.load();
    Advance(std::max<int64_t>(time - now_.monotonic, 0));
    return log_.taken < Log::kMax;
  }
  int64_t wall() const { return now_.wall; }

 private:
  void Advance(int64_t by) {
    now_.wall += by;
    now_.boot += by;
    now_.monotonic += by;
  }

  Log &log_;
  SampleTime now_;
};

class LoggedHost : public Sampled {
 public:
  LoggedHost(Log &log, const HurriedPace &pace, uint32_t run) : log_(log), pace_(pace), run_(run) {}

  void Take(Sample &sample, platkit::history::HostHeader &host, uint64_t &availableBytes) override {
    const uint64_t number = log_.taken;
    for (int i = 0; i < kEntries; ++i) {
      const std::string payload = PayloadOf(number, i);
      sample.Add("/sched/groups/" + std::to_string(1000 + i) + "/groupName", platkit::history::ValueType::kRecord,
                 std::as_bytes(std::span(payload)));
    }
    host.definitions = platkit::OwnDefinitions();
    host.host = "alpha";
    host.kernel = "6.1.0";
    availableBytes = AvailableIn(number);
    log_.samples[number] = {.wall = pace_.wall(), .run = run_, .isWritten = true};
    ++log_.taken;
  }

 private:
  Log &log_;
  const HurriedPace &pace_;
  uint32_t run_;
};

class KilledRecorder : public testing::Test {
 protected:
  KilledRecorder() {
    options_.interval = 20 * kSecond;
    options_.limits.unthinned = 0;
  }

  // Records in another process, and kills it. It starts up to two hours after the last one was killed, so it has to
  // thin the segments of that one.
  void RecordAndKill() {
    const pid_t pid = fork();
    if (pid == 0) RecordUntilKilled();
    ASSERT_GT(pid, 0);
    usleep(static_cast<useconds_t>(random_() % 60'000));
    kill(pid, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the recorder ended";
    if (std::filesystem::exists(options_.folder + "/" + SegmentThinner::kTemporary)) ++killsWhileThinning_;
    ++run_;
    if (log_->taken == 0) return;
    const int64_t pause = static_cast<int64_t>(random_() % 7200) * kSecond;
    const int64_t passed = log_->samples[log_->taken - 1].wall - start_.wall + options_.interval + pause;
    start_.wall += passed;
    start_.boot += passed;
    start_.monotonic += passed;
  }

  [[noreturn]] void RecordUntilKilled() {
    try {
      HurriedPace pace(*log_, start_);
      LoggedHost host(*log_, pace, run_);
      Recorder(options_, host, pace).Run();
    } catch (const std::exception &failure) {
      std::fprintf(stderr, "%s\n", failure.what());
    }
    _exit(1);
  }

  // Expects that the history has each sample that must be there, and no wrong one.
  void CheckHistory() {
    if (!std::filesystem::exists(options_.folder)) return;
    ReadSamples();
    CheckLastSample();
    CheckMinutes();
    testing::internal::CaptureStdout();
    const bool isWhole = SegmentsIn(options_.folder).empty() || VerifyHistory(options_.folder);
    const std::string report = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(isWhole) << report;
  }

  // All samples of the history, each of which must be as it was taken.
  void ReadSamples() {
    present_.clear();
    HistoryFolder folder;
    ASSERT_EQ(folder.Open(options_.folder.c_str()), HVC_OK);
    std::vector<SegmentName> names;
    ASSERT_EQ(folder.List(names), HVC_OK);
    segments_ = {names.begin(), names.end()};
    for (const SegmentName &name : names) {
      SegmentReader reader;
      ASSERT_EQ(reader.Open(folder.fd(), name.text().c_str()), HVC_OK) << name.text();
      for (size_t i = 0; i < reader.frames().size(); ++i) {
        Sample sample;
        ASSERT_EQ(reader.Read(i, sample), HVC_OK) << name.text() << " " << i;
        CheckSample(reader.frames()[i].info, sample);
      }
    }
  }

  void CheckSample(const platkit::history::SampleInfo &info, const Sample &sample) {
    ASSERT_EQ(sample.size(), static_cast<size_t>(kEntries));
    const auto *text = reinterpret_cast<const char *>(sample[0].payload.data());
    const uint64_t number = std::stoull(std::string(text, std::strspn(text, "0123456789")));
    ASSERT_LT(number, log_->taken);
    EXPECT_TRUE(present_.insert(number).second) << number << " is there twice";
    EXPECT_EQ(info.time.wall, log_->samples[number].wall) << number;
    EXPECT_EQ(info.availableBytes, AvailableIn(number)) << number;
    for (int i = 0; i < kEntries; ++i) {
      const auto &payload = sample[static_cast<size_t>(i)].payload;
      ASSERT_EQ(std::string(reinterpret_cast<const char *>(payload.data()), payload.size()), PayloadOf(number, i));
    }
  }

  // Only the sample that was being written may be lost.
  void CheckLastSample() {
    ASSERT_LE(log_->taken - log_->written, 1u);
    if (log_->taken == log_->written) return;
    const uint64_t last = log_->taken - 1;
    log_->samples[last].isWritten = present_.contains(last);
    log_->written = log_->taken.load();
  }

  // Each minute of a run has all its samples, or the one with the least memory available.
  void CheckMinutes() {
    std::map<std::pair<int64_t, uint32_t>, std::vector<uint64_t>> minutes;
    for (uint64_t i = 0; i < log_->taken; ++i) {
      if (log_->samples[i].isWritten) minutes[{log_->samples[i].wall / kMinute, log_->samples[i].run}].push_back(i);
    }
    for (const auto &[minute, samples] : minutes) {
      const SegmentName segment = SegmentName::At(minute.first * kMinute);
      if (!segments_.contains(segment)) {
        EXPECT_TRUE(MayBeRemoved(segment)) << segment.text();
        continue;
      }
      const auto least = std::ranges::min_element(samples, {}, AvailableIn);
      const auto count = std::ranges::count_if(samples, [&](uint64_t number) { return present_.contains(number); });
      const bool isWhole = count == std::ssize(samples);
      const bool isThinned = count == 1 && present_.contains(*least);
      EXPECT_TRUE(isWhole || isThinned) << count << " samples from " << samples[0] << " to " << samples.back();
    }
  }

  bool MayBeRemoved(const SegmentName &segment) const {
    // The oldest segments are removed while all have too many bytes.
    const bool isOld = segments_.empty() || segment < *segments_.begin();
    if (options_.limits.bytes < kUnlimited) return isOld;
    const int64_t age = log_->samples[log_->taken - 1].wall - (segment.hour() + 1) * kHour;
    return isOld && age > options_.limits.age;
  }

  void KillOften() {
    constexpr int kKills = 6;
    for (int i = 0; i < kKills && !HasFailure(); ++i) {
      RecordAndKill();
      CheckHistory();
    }
    RecordProperty("kills", kKills);
    RecordProperty("killsWhileThinning", killsWhileThinning_);
    RecordProperty("samples", static_cast<int>(log_->taken));
    RecordProperty("samplesInHistory", static_cast<int>(present_.size()));
  }

  static constexpr uint64_t kUnlimited = uint64_t{1} << 40;

  Scratch scratch_;
  RecorderOptions options_{.folder = scratch_.Path("history")};
  SharedLog log_;
  SampleTime start_ = {.wall = kNewYear, .boot = kHour, .monotonic = kHour};
  uint32_t run_ = 0;
  int killsWhileThinning_ = 0;
  std::set<uint64_t> present_;
  std::set<SegmentName> segments_;
  std::random_device random_;
};

TEST_F(KilledRecorder, KeepsEachSampleOfItsAge) {
  options_.limits.bytes = kUnlimited;
  options_.limits.age = 4 * kHour;
  KillOften();
}

TEST_F(KilledRecorder, KeepsTheNewestSamplesOfItsSize) {
  options_.limits.bytes = 1'300'000;  // more than an hour takes
  KillOften();
}

}  // namespace
}  // namespace nodal
