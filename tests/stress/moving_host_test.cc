// Runs every report on a host whose processes and control groups start and end all the time.
//
// A name determines the figures of its process or group, so a row that mixes two owners is detected.
#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <regex>
#include <thread>

#include "gtest/gtest.h"
#include "platkit/linux/kernel/cgroup_mount.h"
#include "tests/support/process.h"
#include "tests/support/report_names.h"
#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace stress {
namespace {

using testing_support::Outcome;
using testing_support::ScratchDirectory;
using namespace std::chrono_literals;

constexpr auto kTime = 3s;
constexpr int kStepMB = 4;  // more than the overhead of a load
constexpr int kMostMB = 16;

const std::vector<std::string> &AllReports() {
  static const std::vector<std::string> names = testing_support::ReportNames(KESTREL_PROGRAM);
  return names;
}

// The allowed messages about groups that vanished while they were read. Other getters print no message in this case.
const std::regex kVanished(
    "(Kestrel_GroupGet(Name|Tag|GroupLeaderID)\\(\\) failure, error code: 195887107"
    "|KestrelAsyncRemap(ReportCallback(Int)?|GetStats):[0-9]+ failure: Not found)");

bool WriteText(const std::string &path, const std::string &text) {
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  close(fd);
  return written;
}

// True if the test has its own PID namespace, in which it may reuse PIDs at once.
bool HasOwnProcesses() { return getpid() == 1; }

// Starts and ends processes until it is destroyed.
class Churn {
 public:
  virtual ~Churn() = default;

 protected:
  // The constructor of a derived class calls Start, and its destructor calls Stop.
  template <typename Round>
  void Start(Round round) {
    thread_ = std::thread([this, round] {
      for (int i = 0; !stop_; ++i)
        round(i);
    });
  }
  void Stop() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
  }

  static pid_t StartLoad(int megabytes, std::chrono::microseconds time, const std::string &group = "") {
    std::string words[] = {LOAD_PROGRAM, std::to_string(megabytes), std::to_string(time.count()), group};
    char *arguments[] = {words[0].data(), words[1].data(), words[2].data(), group.empty() ? nullptr : words[3].data(),
                         nullptr};
    pid_t child = -1;
    return posix_spawn(&child, LOAD_PROGRAM, nullptr, nullptr, arguments, environ) == 0 ? child : -1;
  }
  static void Await(pid_t child) {
    while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
  }

 private:
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

int SizeOf(int round) { return round * 7 % (kMostMB / kStepMB) * kStepMB + kStepMB; }

// Processes that live for some milliseconds. Each one reuses the PID of its predecessor if possible.
class ProcessChurn : public Churn {
 public:
  ProcessChurn() {
    Start([this](int round) {
      pid_t &place = loads_[static_cast<size_t>(round) % std::size(loads_)];
      Await(place);
      if (HasOwnProcesses() && place > 0) WriteText("/proc/sys/kernel/ns_last_pid", std::to_string(place - 1));
      place = StartLoad(SizeOf(round), std::chrono::milliseconds(round % 4 * 6));
    });
  }
  ~ProcessChurn() override {
    Stop();
    for (const pid_t load : loads_)
      Await(load);
  }

 private:
  pid_t loads_[13] = {};  // not a multiple of the number of sizes, so that the size in a slot changes
};

// Control groups with a limit, each of which contains a load that is smaller than the limit.
class GroupChurn : public Churn {
 public:
  explicit GroupChurn(const std::string &top) : top_(top) {
    Start([this](int round) {
      const int megabytes = SizeOf(round);
      const std::string folder = top_ + "/limit-" + std::to_string(2 * megabytes);
      if (mkdir(folder.c_str(), 0755) != 0) return;
      for (const char *file : {"/memory.limit_in_bytes", "/memory.max"})
        WriteText(folder + file, std::to_string(2 * megabytes) + "M");
      Await(StartLoad(megabytes, std::chrono::milliseconds(round % 3 * 4), folder + "/cgroup.procs"));
      // Memory of an ended process may be released later.
      for (int i = 0; i < 1000 && rmdir(folder.c_str()) != 0 && errno == EBUSY; ++i)
        usleep(100);
    });
  }
  ~GroupChurn() override { Stop(); }

 private:
  const std::string top_;
};

// A control group for the groups of the test.
class OwnGroup {
 public:
  OwnGroup() {
    platkit::HostFiles files("/", platkit::Reach::kHost);
    const platkit::CgroupMount mount = platkit::FindCgroupMount(files);
    if (mount.memoryFiles == platkit::CgroupVersion::kNone) return;
    const std::string folder = "/" + mount.top + "/kestrel-test-" + std::to_string(arc4random());
    if (mkdir(folder.c_str(), 0755) != 0) return;
    folder_ = folder;
    WriteText(folder_ + "/cgroup.subtree_control", "+memory");
  }
  ~OwnGroup() {
    if (!folder_.empty()) rmdir(folder_.c_str());
  }
  OwnGroup(const OwnGroup &) = delete;
  OwnGroup &operator=(const OwnGroup &) = delete;

  const std::string &folder() const { return folder_; }

  // True if groups below this one can have limits.
  bool IsUsable() const {
    const std::string probe = folder_ + "/probe";
    if (folder_.empty() || mkdir(probe.c_str(), 0755) != 0) return false;
    const bool limits = access((probe + "/memory.max").c_str(), W_OK) == 0 ||
                        access((probe + "/memory.limit_in_bytes").c_str(), W_OK) == 0;
    return rmdir(probe.c_str()) == 0 && limits;
  }

 private:
  std::string folder_;
};

// A row of CSV: column name -> field.
using Row = std::map<std::string, std::string>;

std::vector<std::string> Cells(const std::string &line) {
  std::vector<std::string> cells(1);
  for (const char c : line) {
    if (c == ',') {
      cells.emplace_back();
    } else {
      cells.back() += c;
    }
  }
  return cells;
}

std::vector<Row> Rows(const std::string &csv) {
  std::vector<Row> rows;
  std::vector<std::string> names;
  for (const std::string &line : testing_support::Lines(csv)) {
    const std::vector<std::string> cells = Cells(line);
    if (names.empty()) {
      names = cells;
      continue;
    }
    Row row;
    for (size_t i = 0; i < std::min(names.size(), cells.size()); ++i)
      row[names[i]] = cells[i];
    rows.push_back(row);
  }
  return rows;
}

// Checks the rows whose names determine their figures, and counts them.
class RowCheck {
 public:
  void Check(const std::string &csv) {
    for (const Row &row : Rows(csv)) {
      std::smatch number;
      const auto name = row.find("name");
      if (name == row.end()) continue;
      if (std::regex_match(name->second, number, std::regex("load-([0-9]+)"))) CheckLoad(row, std::stoll(number[1]));
      if (std::regex_match(name->second, number, std::regex("limit-([0-9]+)"))) CheckLimit(row, std::stoll(number[1]));
    }
  }

  int loads() const { return loads_; }
  int limited() const { return limited_; }

 private:
  // Checks the columns of group-stats and uw-stats. A row has only the columns of its report.
  void CheckLoad(const Row &row, int64_t megabytes) {
    ++loads_;
    for (const char *column : {"memSize", "consumed", "mapped", "memBStore"}) {
      const auto cell = row.find(column);
      if (cell == row.end()) continue;
      const int64_t kb = std::stoll(cell->second);
      EXPECT_TRUE(kb >= megabytes << 10 && kb < (megabytes + kStepMB) << 10) << Shown(row, column);
    }
    if (row.contains("memSizeLimit")) {
      EXPECT_EQ(row.at("memSizeLimit"), std::to_string((megabytes + 1024) << 10)) << Shown(row, "memSizeLimit");
    }
    if (row.contains("pinned")) {
      const int64_t kb = std::stoll(row.at("pinned"));
      EXPECT_TRUE(kb == 0 || kb == megabytes << 10) << Shown(row, "pinned");
    }
  }

  void CheckLimit(const Row &row, int64_t megabytes) {
    ++limited_;
    for (const char *column : {"max", "bMax"}) {
      const auto cell = row.find(column);
      const bool isSet = cell->second != "-1" && cell->second != "18446744073709551615";
      EXPECT_TRUE(!isSet || cell->second == std::to_string(megabytes << 10)) << Shown(row, column);
    }
    const std::string &consumed = row.at("consumed");
    if (consumed != "18446744073709551615") {
      EXPECT_LE(std::stoll(consumed), megabytes << 10) << Shown(row, "consumed");
    }
  }

  static std::string Shown(const Row &row, const char *column) {
    std::string shown = std::string(column) + " of";
    for (const auto &[name, cell] : row)
      shown.append(" ").append(name).append("=").append(cell);
    return shown;
  }

  int loads_ = 0;
  int limited_ = 0;
};

class MovingHost : public testing::Test {
 protected:
  void SetUp() override {
    if (access("/proc/self/status", R_OK) != 0) GTEST_SKIP() << "/proc is not mounted here";
  }

  Outcome Report(const std::string &report, const std::string &cache = "") const {
    std::vector<std::string> words = {"-r", report, "-q"};
    if (!cache.empty()) words.insert(words.begin(), {"-c", cache});
    return testing_support::Run(
        {.program = KESTREL_PROGRAM, .arguments = words, .directory = scratch_.path().string()});
  }

  // Records the outcome of each report while nothing changes.
  void ReadAtRest() {
    for (const std::string &report : AllReports())
      atRest_[report] = Report(report);
  }

  // Checks a report of the host, or of a snapshot of the host.
  void CheckReport(const std::string &report, const std::string &cache = "") {
    const Outcome run = Report(report, cache);
    const Outcome &rest = atRest_.at(report);
    EXPECT_EQ(run.signal, 0) << report;
    EXPECT_EQ(run.exitStatus, rest.exitStatus) << report << ": " << run.errors;
    for (const std::string &line : testing_support::Lines(run.errors)) {
      EXPECT_TRUE(std::regex_match(line, kVanished) || rest.errors.find(line) != std::string::npos)
          << report << ": " << line;
    }
    rows_.Check(run.output);
  }

  void CheckCapture() {
    const std::string path = scratch_.File("moving.nodal");
    const Outcome capture = testing_support::Run({.program = NODAL_PROGRAM, .arguments = {"capture", "-o", path}});
    EXPECT_EQ(capture.exitStatus, 0) << capture;
    EXPECT_EQ(testing_support::Lines(capture.errors).size(), 1u) << capture;
    const Outcome verify = testing_support::Run({.program = NODAL_PROGRAM, .arguments = {"verify", path}});
    EXPECT_EQ(verify.exitStatus, 0) << verify;
    for (const char *report : {"group-stats", "uw-stats"})
      CheckReport(report, path);
  }

  // Repeats all reports and a capture until the time is over, at least once. On a slow machine, continues until some
  // names have been checked.
  void CheckAll() {
    const auto end = std::chrono::steady_clock::now() + kTime;
    const auto isOver = [&] {
      const auto now = std::chrono::steady_clock::now();
      return HasFailure() || now >= end + 10 * kTime || (now >= end && rows_.loads() + rows_.limited() > 0);
    };
    for (const std::string &report : AllReports())
      CheckReport(report);
    CheckCapture();
    while (!isOver()) {
      for (size_t i = 0; i < AllReports().size() && !isOver(); ++i) {
        CheckReport(AllReports()[i]);
        // Most rows that can be checked are in these reports.
        CheckReport("group-stats");
        CheckReport("uw-stats");
      }
      if (!isOver()) CheckCapture();
    }
  }

  const ScratchDirectory scratch_;
  std::map<std::string, Outcome> atRest_;
  RowCheck rows_;
};

TEST_F(MovingHost, Processes) {
  ReadAtRest();
  {
    const ProcessChurn one, two;
    CheckAll();
  }
  RecordProperty("rows", rows_.loads());
  EXPECT_GT(rows_.loads(), 0) << "none of them was met";
}

TEST_F(MovingHost, ControlGroups) {
  const OwnGroup own;
  if (!own.IsUsable()) GTEST_SKIP() << "control groups with limits cannot be made here";
  ReadAtRest();
  {
    const GroupChurn one(own.folder());
    CheckAll();
  }
  RecordProperty("rows", rows_.limited());
  EXPECT_GT(rows_.limited(), 0) << "none of them was met";
}

// The exit status of a child that could not enter its own namespace; test programs never use it.
constexpr int kNoNamespace = 111;

[[noreturn]] void EndWithoutNamespace(const char *what) {
  std::fprintf(stderr, "Testing among the host's processes, since %s failed: %s\n", what, std::strerror(errno));
  _exit(kNoNamespace);
}

// The exit status of a child. Reports a signal that ended the child as a failure.
int StatusOf(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno == EINTR) continue;
    std::perror("waitpid");
    return 1;
  }
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  std::fprintf(stderr, "The tests were ended by a signal: %s\n", strsignal(WTERMSIG(status)));
  return 1;
}

// Continues in a child with its own PID namespace and /proc, and exits with its status. If this is not possible, prints
// why and continues in this process.
void TakeOwnProcesses() {
  const pid_t outer = fork();
  if (outer < 0) {
    std::perror("Testing among the host's processes, since fork failed");
    return;
  }
  if (outer > 0) {
    const int status = StatusOf(outer);
    if (status == kNoNamespace) return;
    _exit(status);
  }
  if (unshare(CLONE_NEWPID | CLONE_NEWNS) != 0) EndWithoutNamespace("unshare");
  const pid_t inner = fork();
  if (inner < 0) EndWithoutNamespace("fork");
  if (inner > 0) _exit(StatusOf(inner));
  // Mounts on a private /proc do not propagate to other namespaces. In a chroot, / may not be a mount point.
  if (mount(nullptr, "/proc", nullptr, MS_PRIVATE, nullptr) != 0) EndWithoutNamespace("making /proc private");
  if (mount("proc", "/proc", "proc", 0, nullptr) != 0) EndWithoutNamespace("mounting /proc");
}

}  // namespace
}  // namespace stress

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  if (!GTEST_FLAG_GET(list_tests)) stress::TakeOwnProcesses();
  return RUN_ALL_TESTS();
}
