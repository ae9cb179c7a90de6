// A folder for the files of one test.
#ifndef TESTS_PLATKIT_SCRATCH_H
#define TESTS_PLATKIT_SCRATCH_H

#include <string>
#include <vector>

#include "tests/support/scratch.h"

class Scratch : public testing_support::ScratchDirectory {
 public:
  std::string folder() const { return path().string(); }
  std::string Path(const std::string &name) const { return File(name); }

  std::string Write(const std::string &name, const std::string &bytes) const {
    testing_support::WriteFile(Path(name), bytes);
    return Path(name);
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(path()))
      names.push_back(entry.path().filename());
    return names;
  }
};

inline std::string Contents(const std::string &path) { return testing_support::ReadFile(path); }

#endif  // TESTS_PLATKIT_SCRATCH_H
