// Reports of a snapshot that another process truncates or overwrites. kestrel ends with an exit status, never by a
// signal.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <thread>

#include "tests/stress/large_host.h"
#include "tests/support/process.h"
#include "tests/support/text.h"

namespace stress {
namespace {

using testing_support::Outcome;

constexpr int kGroups = 3000;  // their rows exceed the capacity of a pipe

std::string WriteHost(LargeHost &host) {
  std::vector<int64_t> members;
  for (int64_t id = 1; id < kGroups; ++id) {
    host.AddGroup(id, {});
    members.push_back(id);
  }
  host.AddGroup(0, members);
  return host.Write();
}

// Runs group-stats, and truncates the snapshot while kestrel waits for a reader of its output.
Outcome RunAndTruncate(const std::string &snapshot, off_t size) {
  const std::string errors = snapshot + ".errors";
  const std::string command =
      "exec " + testing_support::Quoted(KESTREL_PROGRAM) + " -c " + snapshot + " -r group-stats -q 2> " + errors;
  Outcome outcome;
  std::FILE *output = popen(command.c_str(), "re");
  EXPECT_NE(output, nullptr);
  outcome.output += static_cast<char>(std::fgetc(output));
  EXPECT_EQ(truncate(snapshot.c_str(), size), 0);
  for (int c; (c = std::fgetc(output)) != EOF;)
    outcome.output += static_cast<char>(c);
  const int status = pclose(output);
  if (WIFEXITED(status)) outcome.exitStatus = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
  outcome.errors = testing_support::ReadFile(errors);
  return outcome;
}

TEST(ChangingFile, TruncatedDuringAReport) {
  for (const off_t size : {0, 2048, 100'000}) {
    LargeHost host;
    const Outcome run = RunAndTruncate(WriteHost(host), size);
    EXPECT_EQ(run.signal, 0);
    EXPECT_TRUE(run.exitStatus == 0 || run.exitStatus == 1) << run.exitStatus;
    EXPECT_NE(run.errors.find("Snapshot is damaged"), std::string::npos) << run.errors.substr(0, 1000);
    EXPECT_GT(run.output.size(), 10'000u) << "the report had begun";
  }
}

TEST(ChangingFile, ChangedAllTheTime) {
  LargeHost host;
  const std::string path = WriteHost(host);
  const std::string whole = testing_support::ReadFile(path);
  std::atomic<bool> isDone = false;
  std::thread changes([&] {
    const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    uint32_t state = 1;
    const auto random = [&state] { return state = state * 1664525 + 1013904223, state >> 4; };
    while (!isDone) {
      const auto position = static_cast<off_t>(random() % whole.size());
      const bool isTruncated = random() % 4 == 0;
      EXPECT_EQ(isTruncated ? ftruncate(fd, position) : 0, 0);
      EXPECT_EQ(pwrite(fd, "\xff", 1, position), 1);
      usleep(random() % 2000);
      EXPECT_EQ(pwrite(fd, whole.data(), whole.size(), 0), static_cast<ssize_t>(whole.size()));
      usleep(random() % 2000);
    }
    close(fd);
  });
  int read = 0;
  for (int i = 0; i < 200; ++i) {
    const Outcome kestrel =
        testing_support::Run({.program = KESTREL_PROGRAM, .arguments = {"-c", path, "-r", "group-stats", "-q"}});
    EXPECT_TRUE(kestrel.exitStatus == 0 || kestrel.exitStatus == 1) << "signal " << kestrel.signal;
    if (kestrel.output.size() > 10'000) ++read;
    const Outcome nodal =
        testing_support::Run({.program = NODAL_PROGRAM, .arguments = {i % 2 == 0 ? "verify" : "dump", path}});
    EXPECT_TRUE(nodal.exitStatus == 0 || nodal.exitStatus == 1) << "signal " << nodal.signal;
  }
  isDone = true;
  changes.join();
  EXPECT_GT(read, 0);
}

}  // namespace
}  // namespace stress
