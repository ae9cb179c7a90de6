#include "tests/fuzz/kestrel.h"

#include <getopt.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iterator>
#include <map>
#include <thread>

#include "platkit/node_ref.h"
#include "platkit/path.h"
#include "platkit/snapshot/snapshot_file.h"
#include "src/dcpmm/sockets.h"
#include "src/table/options.h"
#include "tests/fuzz/captured_output.h"
#include "tests/fuzz/program_state.h"
#include "tests/fuzz/target.h"

// src/main/main.cc, compiled under another name.
int KestrelMain(int argc, char **argv);

namespace fuzz {
namespace {

using platkit::snapshot::SnapshotFile;
using platkit::snapshot::Value;

constexpr int kMostPeriods = 3;

// The size of a PCI configuration space. With this limit on file sizes, the program can still write all registers.
constexpr rlim_t kMaxFileBytes = 4096;

// The output of kestrel while it runs in this thread; null in other threads. There, sleep() really sleeps.
thread_local TextStream *kestrelOutput = nullptr;
OutputTo outputTo = OutputTo::kTerminal;
int periods = 0;

void LimitFiles(rlim_t size) {
  rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = std::min(size, limit.rlim_max);
  setrlimit(RLIMIT_FSIZE, &limit);
}

// Whether a walk over the groups takes too many visits for fuzzing. In a cycle of groups, the visits multiply with each
// level; circle_test covers cycles in less time.
bool IsLongWalk(SnapshotFile &file) {
  constexpr uint64_t kMostVisits = 10'000;
  struct Group {
    std::vector<int64_t> members;
    uint64_t visits = 1;  // of a walk that starts here, for the levels counted so far
  };
  std::map<int64_t, Group> groups;
  SnapshotFile::Cursor cursor(file);
  const platkit::Node &lists = platkit::nodes::sched_groups_members_groups;
  for (Value value; cursor.Next() == HVC_OK;) {
    const platkit::PathTarget target = platkit::ParsePath(cursor.key());
    if (target.node != &lists || cursor.Read(value) != HVC_OK) continue;
    std::vector<int64_t> &members = groups[target.arguments[0].integer].members;
    members.resize(value.payload.size() / sizeof(int64_t));
    if (!members.empty()) std::memcpy(members.data(), value.payload.data(), members.size() * sizeof(int64_t));
  }
  for (uint32_t level = 1; level < kestrel::kMaxLevels; ++level) {
    std::map<int64_t, uint64_t> visits;
    for (const auto &[id, group] : groups) {
      uint64_t &sum = visits[id] = 1;
      for (const int64_t member : group.members)
        sum += groups.contains(member) ? groups[member].visits : 1;
      if (sum > kMostVisits) return true;
    }
    for (const auto &[id, sum] : visits)
      groups[id].visits = sum;
  }
  return false;
}

// Replaces control characters, because kestrel's messages repeat its arguments unchanged.
std::string WithoutControls(std::string word) {
  std::ranges::replace_if(
      word, [](unsigned char c) { return c < 0x20 || c >= 0x7f; }, '?');
  return word;
}

}  // namespace

Outcome RunKestrel(std::span<const std::string> words, OutputTo output) {
  static const ProgramState atStart("kestrel");
  atStart.Restore();
  isBusListEmpty = 1;
  optind = 0;  // restarts getopt
  std::signal(SIGXFSZ, SIG_IGN);

  std::vector<std::string> all = {"kestrel"};
  all.insert(all.end(), words.begin(), words.end());
  std::vector<char *> argv;
  std::ranges::transform(all, std::back_inserter(argv), [](std::string &word) { return word.data(); });
  argv.push_back(nullptr);

  CapturedOutput captured;
  kestrelOutput = &captured.output;
  outputTo = output;
  periods = 0;
  Outcome outcome = {.status = KestrelMain(static_cast<int>(all.size()), argv.data()), .output = {}, .errors = {}};
  kestrelOutput = nullptr;
  if (periods >= kMostPeriods) LimitFiles(RLIM_INFINITY);
  outcome.output = captured.output.Take();
  outcome.errors = captured.errors.Take();
  return outcome;
}

std::vector<std::string> WordsOf(std::string_view text, char separator) {
  std::vector<std::string> words;
  while (!text.empty()) {
    const size_t end = std::min(text.find(separator), text.size());
    std::string word(text.substr(0, end));
    word.resize(std::min(word.find('\0'), word.size()));
    words.push_back(std::move(word));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return words;
}

std::string WithoutFolders(std::string word) {
  std::ranges::replace(word, '/', '_');
  return word;
}

void ReportOnSnapshot(const std::string &path) {
  std::vector<std::string> words = {"--force", "-c", path};
  {
    SnapshotFile file;
    if (file.Open(path.c_str()) == HVC_OK) {
      if (IsLongWalk(file)) return;
      for (const std::string &word : WordsOf(file.header().host, ' '))
        words.push_back(WithoutControls(WithoutFolders(word)));
    }
  }
  const Outcome outcome = RunKestrel(words);
  REQUIRE(outcome.status == 0 || outcome.status == 1);
  REQUIRE(IsFitForTerminal(outcome.output));
  REQUIRE(IsFitForTerminal(outcome.errors));
}

}  // namespace fuzz

extern "C" {

int isatty(int) noexcept {
  return fuzz::kestrelOutput != nullptr && fuzz::outputTo == fuzz::OutputTo::kTerminal ? 1 : 0;
}

unsigned sleep(unsigned seconds) {
  if (fuzz::kestrelOutput == nullptr) {
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
  } else if (++fuzz::periods == fuzz::kMostPeriods) {
    fuzz::kestrelOutput->Break();
    fuzz::LimitFiles(fuzz::kMaxFileBytes);
  }
  return 0;
}

}  // extern "C"
