#include "tests/stress/short_run.h"

#include <getopt.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

#include "platkit/linux/linux_source.h"
#include "platkit/source.h"
#include "tests/fuzz/program_state.h"
#include "tests/stress/library_answers.h"

// src/main/main.cc, compiled under another name.
int KestrelMain(int argc, char **argv);

namespace stress {
namespace {

constexpr uint64_t kTriesOfVaryingHost = 100;

// A stream into a buffer: capturing the output must not allocate.
class FixedText {
 public:
  FixedText() {
    file_ = fopencookie(this, "w", {.read = nullptr, .write = Write, .seek = nullptr, .close = nullptr});
    std::setvbuf(file_, buffer_.data(), _IOFBF, buffer_.size());
  }
  ~FixedText() { std::fclose(file_); }
  FixedText(const FixedText &) = delete;
  FixedText &operator=(const FixedText &) = delete;

  std::FILE *file() const { return file_; }
  void Clear() { size_ = 0; }
  std::string text() {
    std::fflush(file_);
    return {text_.data(), size_};
  }

 private:
  static ssize_t Write(void *stream, const char *bytes, size_t size) {
    auto *self = static_cast<FixedText *>(stream);
    if (size > self->text_.size() - self->size_) return 0;
    std::memcpy(self->text_.data() + self->size_, bytes, size);
    self->size_ += size;
    return static_cast<ssize_t>(size);
  }

  std::FILE *file_;
  size_t size_ = 0;
  std::array<char, 4096> buffer_;
  std::array<char, 1 << 20> text_;
};

uint64_t allocationsOfRun = 0;

int Call(std::vector<std::string> &words, Shortage shortage) {
  std::vector<char *> argv;
  std::ranges::transform(words, std::back_inserter(argv), [](std::string &word) { return word.data(); });
  argv.push_back(nullptr);
  BeginShortage(shortage);
  const int status = KestrelMain(static_cast<int>(words.size()), argv.data());
  allocationsOfRun = EndShortage();
  return status;
}

std::vector<std::string> WordsFor(const Host &host, const std::string &report) {
  std::vector<std::string> words = host.Words();
  words.insert(words.end(), {"-r", report, "-q"});
  return words;
}

// The tests of one report.
class ReportTest {
 public:
  ReportTest(Host &host, const std::string &report) : host_(host), words_(WordsFor(host, report)) {}

  void Run() {
    Learn();
    for (const bool lasts : {false, true}) {
      for (uint64_t k = 1; k <= allocations_ && !testing::Test::HasFailure(); k += step_)
        Try({.from = k, .lasts = lasts});
    }
    IgnoreAnswers();
  }

 private:
  // Runs the report without a shortage: without cached values, with them, and after they have expired.
  void Learn() {
    IgnoreAnswers();
    if (host_.IsConstant()) LearnAnswers();
    host_.Open();
    expected_ = RunKestrel(words_);
    allocations_ = AllocationsOfRun();
    for (int i = 0; i < 2; ++i) {
      ExpectRight("without a shortage");
      host_.Age();
    }
    step_ = host_.IsConstant() ? 1 : std::max<uint64_t>(1, allocations_ / kTriesOfVaryingHost);
    platkit::UseSource(nullptr);
  }

  void Try(Shortage shortage) {
    const std::string where =
        "allocation " + std::to_string(shortage.from) + (shortage.lasts ? " and all later ones" : "");
    const int64_t before = BlocksInUse();
    TryColdAndWarm(shortage, where);
    platkit::UseSource(nullptr);
    EXPECT_EQ(BlocksInUse(), before) << "leaked after " << where;
  }

  // The shortage occurs in the first run over the source, and in a run after the cached values have expired.
  void TryColdAndWarm(Shortage shortage, const std::string &where) {
    host_.Open();
    for (int i = 0; i < 2; ++i) {
      if (host_.IsConstant()) CheckAnswers();
      const Outcome run = RunKestrel(words_, shortage);
      if (host_.IsConstant()) ExpectFailedOrRight(run, where);
      EXPECT_TRUE(run.status == 0 || run.status == 1) << where << run;
      ExpectRight(where);
      host_.Age();
      ExpectRight(where + ", and the cached values have expired");
      host_.Age();
    }
  }

  void ExpectFailedOrRight(const Outcome &run, const std::string &where) const {
    EXPECT_EQ(WrongAnswer(), "") << where << run;
    // Some reports end without a message if the library refuses a list; tests/faults checks the effect of each refusal.
    const bool isExplained = run.errors != expected_.errors || RefusedCalls() > 0;
    EXPECT_TRUE(isExplained || run == expected_) << where << run << "expected: " << expected_;
  }

  void ExpectRight(const std::string &where) const {
    const Outcome run = RunKestrel(words_);
    EXPECT_EQ(run.status, expected_.status) << "after " << where << run;
    if (host_.IsConstant()) {
      EXPECT_EQ(run, expected_) << "after " << where;
    }
  }

  Host &host_;
  const std::vector<std::string> words_;
  Outcome expected_;
  uint64_t allocations_ = 0;
  uint64_t step_ = 1;
};

}  // namespace

std::ostream &operator<<(std::ostream &stream, const Outcome &outcome) {
  return stream << "\nexit status " << outcome.status << "\n--- stdout\n"
                << outcome.output << "--- stderr\n"
                << outcome.errors;
}

Outcome RunKestrel(const std::vector<std::string> &words, Shortage shortage) {
  static const fuzz::ProgramState atStart("kestrel");
  static FixedText output, errors;
  atStart.Restore();
  optind = 0;  // restarts getopt
  output.Clear();
  errors.Clear();
  std::vector<std::string> all = {"kestrel"};
  all.insert(all.end(), words.begin(), words.end());
  std::FILE *const savedOutput = std::exchange(stdout, output.file());
  std::FILE *const savedErrors = std::exchange(stderr, errors.file());
  const int status = Call(all, shortage);
  stdout = savedOutput;
  stderr = savedErrors;
  return {.status = status, .output = output.text(), .errors = errors.text()};
}

uint64_t AllocationsOfRun() { return allocationsOfRun; }

void SavedRoot::Open() {
  platkit::HostFiles files(files_.Path(""), reach_);
  files.UseClock(platkit::Clock([this] { return now_; }));
  platkit::UseSource(platkit::OpenLinuxHost(std::move(files)));
}

void RunningHost::Open() { platkit::UseSource(platkit::OpenLinuxHost("/")); }

void FailEachAllocation(Host &host, const std::string &report) { ReportTest(host, report).Run(); }

}  // namespace stress
