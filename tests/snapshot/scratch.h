// A folder for one test, and the files in it.
#ifndef TESTS_SNAPSHOT_SCRATCH_H
#define TESTS_SNAPSHOT_SCRATCH_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

class Scratch {
 public:
  Scratch() {
    std::string pattern = (std::filesystem::temp_directory_path() / "snapshot-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no folder " << pattern;
    folder_ = pattern;
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;

  std::string folder() const { return folder_; }
  std::string Path(const std::string &name) const { return folder_ + "/" + name; }

  std::string Write(const std::string &name, const std::string &bytes) const {
    // Some file systems wait for the disk when a file is emptied and written again, but not for a new one.
    std::filesystem::remove(Path(name));
    std::ofstream(Path(name), std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return Path(name);
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder_))
      names.push_back(entry.path().filename());
    return names;
  }

 private:
  std::string folder_;
};

inline std::string Contents(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

#endif  // TESTS_SNAPSHOT_SCRATCH_H
