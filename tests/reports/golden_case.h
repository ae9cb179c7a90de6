// A golden run: a host, the arguments, and the complete results of kestrel.
//
//   host: branch
//   arguments: -r group-stats -u mb
//   exit status: 0
//   --- stdout
//   ...
//   --- stderr
//   ...
//
// The host is a file in hosts/ or a sample. It is read as a snapshot. '...' quotes blanks in an argument. Times in the
// output are replaced by <time>.
#ifndef TESTS_REPORTS_GOLDEN_CASE_H
#define TESTS_REPORTS_GOLDEN_CASE_H

#include <filesystem>
#include <string>
#include <vector>

namespace reports {

struct GoldenCase {
  std::string host;
  std::string arguments;
  int exitStatus = 0;
  std::string output;
  std::string errors;
};

// Throws if the file does not have this form.
GoldenCase ReadCase(const std::filesystem::path &file);

std::string Written(const GoldenCase &golden);

// All cases in a folder, sorted by name.
std::vector<std::filesystem::path> FindCases(const std::filesystem::path &folder);

}  // namespace reports

#endif  // TESTS_REPORTS_GOLDEN_CASE_H
