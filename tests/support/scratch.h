// A temporary directory for a test, and functions for whole files.
#ifndef TESTS_SUPPORT_SCRATCH_H
#define TESTS_SUPPORT_SCRATCH_H

#include <filesystem>
#include <string>

namespace testing_support {

// An empty directory, removed with its contents by the destructor.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory &) = delete;
  ScratchDirectory &operator=(const ScratchDirectory &) = delete;

  const std::filesystem::path &path() const { return path_; }
  std::string File(const std::string &name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// Both throw if the file cannot be read or written completely.
std::string ReadFile(const std::filesystem::path &path);
void WriteFile(const std::filesystem::path &path, const std::string &contents);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_SCRATCH_H
