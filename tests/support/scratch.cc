#include "tests/support/scratch.h"

#include <stdlib.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

namespace testing_support {

ScratchDirectory::ScratchDirectory() {
  std::string name = (std::filesystem::temp_directory_path() / "kestrel-test.XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
  path_ = name;
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string ReadFile(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream contents;
  if (!file || (file.peek() != EOF && !(contents << file.rdbuf()))) {
    throw std::runtime_error("cannot read " + path.string());
  }
  return contents.str();
}

void WriteFile(const std::filesystem::path &path, const std::string &contents) {
  // Some file systems wait for the disk when a file is truncated and rewritten, but not for a new file.
  std::filesystem::remove(path);
  std::ofstream file(path, std::ios::binary);
  file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace testing_support
