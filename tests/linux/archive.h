// Reads saved hosts from text files. README.md describes the format.
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
  std::string content;  // of a file; for a link, its target
};

std::vector<ArchiveEntry> ReadArchive(std::istream &in);

}  // namespace platkit

#endif  // TESTS_LINUX_ARCHIVE_H
