// A saved root folder of a host, filled from an input.
#ifndef TESTS_FUZZ_ROOT_FOLDER_H
#define TESTS_FUZZ_ROOT_FOLDER_H

#include <string>
#include <vector>

#include "tests/linux/archive.h"

namespace fuzz {

class RootFolder {
 public:
  // Creates an empty folder with this name in ScratchFolder().
  explicit RootFolder(const std::string &name);

  const std::string &path() const { return path_; }

  // Skips entries that lead out of the folder, because an input must not write anywhere else. Also skips entries that
  // cannot be created.
  void Put(const std::vector<platkit::ArchiveEntry> &entries) const;
  void Put(const platkit::ArchiveEntry &entry) const;

 private:
  std::string path_;
};

}  // namespace fuzz

#endif  // TESTS_FUZZ_ROOT_FOLDER_H
