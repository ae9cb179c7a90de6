// Runs a target over files and over all files in folders, so that tests with any compiler repeat the earlier findings.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/fuzz/target.h"
#include "tests/support/scratch.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesAt(const fs::path &path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const auto &entry : fs::directory_iterator(path))
    files.push_back(entry.path());
  std::ranges::sort(files);
  return files;
}

int Replay(const std::vector<fs::path> &paths) {
  size_t count = 0;
  for (const fs::path &path : paths) {
    for (const fs::path &file : FilesAt(path)) {
      // If the target fails, the last of these lines names the input.
      std::printf("%s\n", file.c_str());
      std::fflush(stdout);
      const std::string input = testing_support::ReadFile(file);
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(input.data()), input.size());
      ++count;
    }
  }
  std::printf("%zu inputs\n", count);
  return count == 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
  try {
    return Replay({argv + 1, argv + argc});
  } catch (const std::exception &failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return EXIT_FAILURE;
  }
}
