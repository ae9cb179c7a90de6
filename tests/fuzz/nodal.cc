#include "tests/fuzz/nodal.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>

#include "tests/fuzz/captured_output.h"
#include "tests/fuzz/target.h"
#include "tests/support/scratch.h"
#include "tools/nodal/snapshot/build.h"
#include "tools/nodal/snapshot/dump.h"
#include "tools/nodal/snapshot/verify.h"
#include "tools/nodal/support/output.h"

namespace fuzz {
namespace {

namespace fs = std::filesystem;

class Folder {
 public:
  Folder() {
    std::string pattern = fs::temp_directory_path() / "fuzz-XXXXXX";
    REQUIRE(mkdtemp(pattern.data()) != nullptr);
    path = pattern;
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
  Folder(const Folder &) = delete;
  Folder &operator=(const Folder &) = delete;

  std::string path;
};

}  // namespace

MemoryFile::MemoryFile(std::string_view content) : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
  REQUIRE(descriptor_ >= 0);
  REQUIRE(write(descriptor_, content.data(), content.size()) == static_cast<ssize_t>(content.size()));
  path_ = "/proc/self/fd/" + std::to_string(descriptor_);
}

MemoryFile::~MemoryFile() { close(descriptor_); }

const std::string &ScratchFolder() {
  static const Folder folder;
  return folder.path;
}

bool Succeeds(const std::function<void()> &command, std::string *output) {
  CapturedOutput captured;
  try {
    command();
  } catch (const nodal::Failure &) {
    return false;
  }
  if (output != nullptr) *output = captured.output.Take();
  return true;
}

bool IsSound(const std::string &snapshot, std::string *problems) {
  bool isSound = false;
  std::string output;
  if (!Succeeds([&] { isSound = nodal::VerifySnapshot(snapshot); }, &output)) return false;
  REQUIRE(IsFitForTerminal(output));
  if (problems != nullptr) *problems = output.substr(0, output.rfind(snapshot));
  return isSound;
}

void CheckRoundTrip(const std::string &snapshot) {
  const std::string again = ScratchFolder() + "/again.nodal";
  std::string dump;
  REQUIRE(Succeeds([&] { nodal::DumpSnapshot(snapshot); }, &dump));
  REQUIRE(Succeeds([&] { nodal::BuildSnapshot(MemoryFile(dump).path(), again); }));
  REQUIRE(testing_support::ReadFile(again) == testing_support::ReadFile(snapshot));
}

WorkingFolder::WorkingFolder(const std::string &path) : saved_(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
  REQUIRE(saved_ >= 0 && chdir(path.c_str()) == 0);
}

WorkingFolder::~WorkingFolder() {
  REQUIRE(fchdir(saved_) == 0);
  close(saved_);
}

KeptSignals::KeptSignals() {
  for (size_t i = 0; i < std::size(kSignals); ++i)
    sigaction(kSignals[i], nullptr, &saved_[i]);
}

KeptSignals::~KeptSignals() {
  for (size_t i = 0; i < std::size(kSignals); ++i)
    sigaction(kSignals[i], &saved_[i], nullptr);
}

}  // namespace fuzz
