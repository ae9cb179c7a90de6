#include "tests/linux/archive.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace platkit {
namespace {

std::string BytesOfHex(const std::string &line) {
  std::string digits;
  std::string bytes;
  std::copy_if(line.begin(), line.end(), std::back_inserter(digits), [](char c) { return c != ' '; });
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    unsigned char byte = 0;
    std::from_chars(&digits[i], &digits[i] + 2, byte, 16);
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

// Returns the contents that a line of an entry adds to its file.
std::string Content(const std::string &kind, const std::string &line) {
  if (kind == "Hex") return BytesOfHex(line);
  return line + (kind == "Words" ? '\0' : '\n');
}

}  // namespace

std::vector<ArchiveEntry> ReadArchive(std::istream &in) {
  using enum ArchiveEntry::Kind;
  std::vector<ArchiveEntry> entries;
  std::string kind;  // kind of the current entry
  size_t file = 0;
  for (std::string line; std::getline(in, line);) {
    const size_t colon = line.find(": ");
    const std::string word = line.substr(0, colon);
    const std::string path = colon == std::string::npos ? "" : line.substr(colon + 2);
    if (word == "Folder") {
      entries.push_back({kFolder, path, ""});
    } else if (word == "Link") {
      const size_t arrow = std::min(path.find(" -> "), path.size());
      entries.push_back({kLink, path.substr(0, arrow), path.substr(std::min(arrow + 4, path.size()))});
    } else if (word == "File" || word == "Words" || word == "Hex") {
      kind = word;
      file = entries.size();
      entries.push_back({kFile, path, ""});
    } else if (!kind.empty()) {
      entries[file].content += Content(kind, line);
    }
  }
  return entries;
}

}  // namespace platkit
