// A folder that stands for a host's root folder, filled from an input.
#ifndef TESTS_FUZZ_ROOT_FOLDER_H
#define TESTS_FUZZ_ROOT_FOLDER_H

#include <string>
#include <vector>

#include "tests/linux/archive.h"

namespace fuzz {

class RootFolder {
 public:
  // An empty folder of that name in the process's scratch folder.
  explicit RootFolder(const std::string &name);

  const std::string &path() const { return path_; }

  // Entries that lead out of the folder, or cannot be made, are passed over: an input must not write to the machine
  // that it is tried on.
  void Put(const std::vector<platkit::ArchiveEntry> &entries) const;
  void Put(const platkit::ArchiveEntry &entry) const;

 private:
  std::string path_;
};

}  // namespace fuzz

#endif  // TESTS_FUZZ_ROOT_FOLDER_H
