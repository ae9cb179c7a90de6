// What targets do with the commands of nodal.
#ifndef TESTS_FUZZ_NODAL_H
#define TESTS_FUZZ_NODAL_H

#include <csignal>
#include <functional>
#include <string>
#include <string_view>

namespace fuzz {

// A file in memory, which has a name as long as it lives.
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

// A folder of the process's own below TMPDIR, which is gone with the process.
const std::string &ScratchFolder();

// Runs a command. True if it did not end with a failure of its own; any other exception is for nobody to catch.
// `output`, if given, gets what it printed.
bool Succeeds(const std::function<void()> &command, std::string *output = nullptr);

// Whether a snapshot opens and has no problem. What is told of it may be shown.
bool IsSound(const std::string &snapshot, std::string *problems = nullptr);

// Dumps the snapshot and builds another of the dump, which must be the same, byte for byte.
void CheckRoundTrip(const std::string &snapshot);

// While it lives, the process's working folder is another one.
class WorkingFolder {
 public:
  explicit WorkingFolder(const std::string &path);
  ~WorkingFolder();
  WorkingFolder(const WorkingFolder &) = delete;
  WorkingFolder &operator=(const WorkingFolder &) = delete;

 private:
  int saved_;
};

// A capture takes the signals that end a program into its own hands. They are given back.
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
