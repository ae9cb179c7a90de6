// Runs the commands of nodal for the fuzz targets.
#ifndef TESTS_FUZZ_NODAL_H
#define TESTS_FUZZ_NODAL_H

#include <csignal>
#include <functional>
#include <string>
#include <string_view>

namespace fuzz {

// A file in memory, with a path that is valid until the object is destroyed.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view content);
  ~MemoryFile();
  MemoryFile(const MemoryFile &) = delete;
  MemoryFile &operator=(const MemoryFile &) = delete;

  const std::string &path() const { return path_; }

 private:
  int descriptor_;
  std::string path_;
};

// A private folder below TMPDIR, which is removed when the process exits.
const std::string &ScratchFolder();

// Runs a command and stores its output in `output` unless that is null. Returns false if the command throws a Failure;
// any other exception is a bug and is not caught.
bool Succeeds(const std::function<void()> &command, std::string *output = nullptr);

// Whether a snapshot opens and has no problem. Checks that the printed problems are safe for a terminal.
bool IsSound(const std::string &snapshot, std::string *problems = nullptr);

// Dumps the snapshot, builds a snapshot from the dump, and checks that both have the same bytes.
void CheckRoundTrip(const std::string &snapshot);

// Changes the working directory of the process until it is destroyed.
class WorkingFolder {
 public:
  explicit WorkingFolder(const std::string &path);
  ~WorkingFolder();
  WorkingFolder(const WorkingFolder &) = delete;
  WorkingFolder &operator=(const WorkingFolder &) = delete;

 private:
  int saved_;
};

// Restores the signal handlers that a capture replaces.
class KeptSignals {
 public:
  KeptSignals();
  ~KeptSignals();
  KeptSignals(const KeptSignals &) = delete;
  KeptSignals &operator=(const KeptSignals &) = delete;

 private:
  static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
  struct sigaction saved_[3];
};

}  // namespace fuzz

#endif  // TESTS_FUZZ_NODAL_H
