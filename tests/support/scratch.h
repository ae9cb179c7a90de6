// A directory of a test's own, and whole files in it.
#ifndef TESTS_SUPPORT_SCRATCH_H
#define TESTS_SUPPORT_SCRATCH_H

#include <filesystem>
#include <string>

namespace testing_support {

// An empty directory that goes with the object, contents included.
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

// Both throw if the file cannot be read or written whole.
std::string ReadFile(const std::filesystem::path &path);
void WriteFile(const std::filesystem::path &path, const std::string &contents);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_SCRATCH_H
