#include "tools/nodal/support/output_file.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/tools/nodal/program.h"
#include "tools/nodal/support/output.h"

namespace {

using platkit::Readers;

class OutputFile : public testing::Test {
 protected:
  mode_t ModeOf(const std::string &name) const {
    struct stat info = {};
    EXPECT_EQ(stat(scratch_.Path(name).c_str(), &info), 0) << name;
    return info.st_mode & 07777;
  }

  Scratch scratch_;
};

[[noreturn]] void WriteInterrupted(const std::string &path) {
  try {
    nodal::WriteFile(path, Readers::kOwner, [](int fd) {
      if (write(fd, "newer", 5) != 5) _exit(2);
      raise(SIGTERM);
      return HVC_OK;
    });
  } catch (const nodal::Failure &failure) {
    nodal::Complain(failure.what());
    _exit(1);
  }
  _exit(0);
}

TEST_F(OutputFile, ASignalLeavesTheOlderFile) {
  const std::string path = scratch_.Write("file", "older");
  EXPECT_EXIT(WriteInterrupted(path), testing::ExitedWithCode(1), "interrupted by a signal: Terminated");
  EXPECT_EQ(Contents(path), "older");
  EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"file"});
}

// If root followed the link, it would overwrite a file that another user chose.
TEST_F(OutputFile, MetricsReplaceAPlantedLink) {
  const std::string victim = scratch_.Write("victim", "precious");
  std::filesystem::create_symlink(victim, scratch_.Path("host.prom"));
  const Outcome outcome = Nodal("metrics --only host --cache " + kSample + " -o " + scratch_.Path("host.prom"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(Contents(victim), "precious");
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(scratch_.Path("host.prom"))));
}

TEST_F(OutputFile, SnapshotsAreForTheirOwnerAndMetricsForEveryone) {
  const std::string umask = "--version >/dev/null; umask 022; " + kNodal + " ";
  EXPECT_EQ(Nodal(umask + "capture --cache " + kSample + " -o " + scratch_.Path("captured")).status, 0);
  EXPECT_EQ(Nodal(umask + "dump " + kSample + " | " + kNodal + " build - -o " + scratch_.Path("built")).status, 0);
  EXPECT_EQ(Nodal(umask + "metrics --cache " + kSample + " -o " + scratch_.Path("host.prom")).status, 0);
  EXPECT_EQ(ModeOf("captured"), 0600u);
  EXPECT_EQ(ModeOf("built"), 0600u);
  EXPECT_EQ(ModeOf("host.prom"), 0644u);
}

TEST_F(OutputFile, ALongNameIsNoReasonToFail) {
  const std::string path = scratch_.Path(std::string(250, 'x'));
  EXPECT_EQ(Nodal("capture --cache " + kSample + " -o " + path).status, 0);
  EXPECT_TRUE(std::filesystem::exists(path));
}

}  // namespace
