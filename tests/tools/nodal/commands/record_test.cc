// nodal record, as a program.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tests/linux/saved_host.h"
#include "tests/tools/nodal/history/recorder_support.h"
#include "tests/tools/nodal/program.h"

namespace nodal {
namespace {

// The program as a process of its own, without a shell.
class Running {
 public:
  explicit Running(std::vector<std::string> words, const std::string &errors) {
    words.insert(words.begin(), NODAL_PROGRAM);
    std::vector<char *> argv;
    for (std::string &word : words)
      argv.push_back(word.data());
    argv.push_back(nullptr);
    pid_ = fork();
    if (pid_ != 0) return;
    if (std::freopen(errors.c_str(), "w", stderr) != nullptr) execv(argv[0], argv.data());
    _exit(127);
  }
  ~Running() {
    if (pid_ > 0) End(SIGKILL);
  }
  Running(const Running &) = delete;
  Running &operator=(const Running &) = delete;

  int End(int signal) {
    kill(pid_, signal);
    int status = 0;
    waitpid(std::exchange(pid_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  pid_t pid() const { return pid_; }

 private:
  pid_t pid_;
};

bool WaitFor(const std::function<bool()> &condition) {
  for (int i = 0; i < 600; ++i) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

class RecordTest : public testing::Test {
 protected:
  std::string Folder() const { return scratch_.Path("history"); }
  Outcome Record(const std::string &words) { return Nodal("record -d " + Folder() + " " + words); }
  size_t Samples() const { return SamplesIn(Folder()).size(); }
  uint64_t Bytes() const { return std::filesystem::exists(Folder()) ? SizeOf(SegmentsIn(Folder())) : 0; }

  Scratch scratch_;
};

TEST_F(RecordTest, RecordsANumberOfSamples) {
  const Outcome outcome = Record("--every 0.1 --count 3");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.err.starts_with("nodal: " + Folder() + ": 3 samples, ")) << outcome.err;
  EXPECT_EQ(Samples(), 3u);
}

TEST_F(RecordTest, RecordsASavedHost) {
  const platkit::SavedHost saved("v2.host");
  EXPECT_EQ(Nodal("--root " + saved.Path("") + " record -d " + Folder() + " --every 0.1 --count 2").status, 0);
  EXPECT_EQ(Samples(), 2u);
}

TEST_F(RecordTest, ChosenPaths) {
  EXPECT_EQ(Record("--count 1 --only /memory/memInfo --only /system/buddy").status, 0);
  const Outcome outcome = Record("--count 1 --only /memory/nothing");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("/memory/nothing"), std::string::npos) << outcome.err;
}

TEST_F(RecordTest, ASignalEndsItWithEverythingWritten) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    const uint64_t before = Bytes();
    Running recorder({"record", "-d", Folder(), "--every", "3600"}, scratch_.Path("errors"));
    ASSERT_TRUE(WaitFor([&] { return Bytes() > before; }));
    EXPECT_EQ(recorder.End(signal), 0);
    HistoryFolder folder;
    ASSERT_EQ(folder.Open(Folder().c_str()), HVC_OK);
    SegmentReader reader;
    ASSERT_EQ(reader.Open(folder.fd(), SegmentsIn(Folder()).rbegin()->first.c_str()), HVC_OK);
    EXPECT_TRUE(reader.frames().back().isEnd);
    EXPECT_TRUE(reader.damage().empty());
  }
}

TEST_F(RecordTest, ASecondRecorderSaysWhoRecords) {
  Running recorder({"record", "-d", Folder(), "--every", "3600"}, scratch_.Path("errors"));
  ASSERT_TRUE(WaitFor([&] {
    return std::filesystem::exists(Folder() + "/recorder.lock") && !Contents(Folder() + "/recorder.lock").empty();
  }));
  const Outcome outcome = Record("--count 1");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "nodal: " + Folder() + ": process " + std::to_string(recorder.pid()) + " already records to this folder\n");
}

TEST_F(RecordTest, AKilledRecorderLeavesWholeSamples) {
  for (int i = 0; i < 3; ++i) {
    Running recorder({"record", "-d", Folder(), "--every", "0.1"}, scratch_.Path("errors"));
    ASSERT_TRUE(WaitFor([&] { return std::filesystem::exists(Folder()) && !SegmentsIn(Folder()).empty(); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    recorder.End(SIGKILL);
  }
  EXPECT_EQ(Record("--count 1").status, 0);
  EXPECT_GE(Samples(), 2u);
}

TEST_F(RecordTest, ServesMetrics) {
  Running recorder({"record", "-d", Folder(), "--every", "3600", "--listen", "0"}, scratch_.Path("errors"));
  std::string address;
  ASSERT_TRUE(WaitFor([&] {
    if (!std::filesystem::exists(scratch_.Path("errors"))) return false;
    const std::string errors = Contents(scratch_.Path("errors"));
    const size_t start = errors.find("http://");
    if (start == std::string::npos || !errors.ends_with("\n")) return false;
    address = errors.substr(start + 7, errors.find("/metrics") - start - 7);
    return true;
  }));
  const std::string host = address.substr(0, address.find(':')), port = address.substr(address.find(':') + 1);
  const auto get = [&](const std::string &path) {
    return testing_support::Run({.program = "/bin/bash",
                                 .arguments = {"-c", "exec 3<>/dev/tcp/" + host + "/" + port + " && printf 'GET " +
                                                         path + " HTTP/1.0\\r\\n\\r\\n' >&3 && cat <&3"}})
        .output;
  };
  EXPECT_TRUE(WaitFor([&] { return get("/healthz").ends_with("\r\n\r\nok\n"); }));
  const std::string metrics = get("/metrics");
  EXPECT_NE(metrics.find("\r\nLast-Modified: "), std::string::npos);
  EXPECT_NE(metrics.find("\nkestrel_host_"), std::string::npos);
  EXPECT_TRUE(metrics.ends_with("# EOF\n"));
  EXPECT_EQ(recorder.End(SIGTERM), 0);
}

TEST_F(RecordTest, MalformedOptions) {
  const auto message = [&](const std::string &words) {
    const Outcome outcome = Record(words);
    EXPECT_EQ(outcome.status, 2) << words;
    return outcome.err;
  };
  for (const char *every : {"0", "0.01", "-5", "5s", "x", "nan", "1e9", "''"})
    EXPECT_EQ(message("--every " + std::string(every)), "nodal: --every " +
                                                            (std::string(every) == "''" ? "" : std::string(every)) +
                                                            ": expected a number of seconds from 0.1 to 3600\n");
  for (const char *keep : {"30", "x", "59s", "1w", "-1d", "99999999999d", "99999999999999999999d"})
    EXPECT_NE(message("--keep " + std::string(keep)).find("expected an age from 1m to 36500d"), std::string::npos);
  for (const char *size : {"x", "100", "1023K", "-1G", "1X", "99999999999999999999", "99999999T"})
    EXPECT_NE(message("--max-size " + std::string(size)).find("expected a size of at least 1M"), std::string::npos);
  for (const char *count : {"0", "-1", "x", "1K"})
    EXPECT_NE(message("--count " + std::string(count)).find("expected a number of at least 1"), std::string::npos);
  EXPECT_NE(message("--listen x").find("expected PORT or ADDRESS:PORT"), std::string::npos);
  const Outcome snapshot = Nodal("--cache " + kSample + " record --count 1 -d " + Folder());
  EXPECT_EQ(snapshot.status, 2);
  EXPECT_NE(snapshot.err.find("cannot record a snapshot, because it does not change"), std::string::npos);
}

}  // namespace
}  // namespace nodal
