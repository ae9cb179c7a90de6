// Saved hosts as text files; README.md tells their form.
#ifndef TESTS_LINUX_ARCHIVE_H
#define TESTS_LINUX_ARCHIVE_H

#include <istream>
#include <string>
#include <vector>

namespace platkit {

struct ArchiveEntry {
  enum class Kind { kFile, kFolder, kLink };

  Kind kind;
  std::string path;
  std::string content;  // of a file; of a link, where it leads
};

std::vector<ArchiveEntry> ReadArchive(std::istream &in);

}  // namespace platkit

#endif  // TESTS_LINUX_ARCHIVE_H
