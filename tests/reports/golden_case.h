// A golden run: a host, the words on the command line, and all that kestrel must leave behind.
//
//   host: branch
//   arguments: -r group-stats -u mb
//   exit status: 0
//   --- stdout
//   ...
//   --- stderr
//   ...
//
// The host is a file of hosts/ or of the samples, read from a snapshot. '...' keeps blanks in an argument together.
// Times in the output are written as <time>.
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

// Throws if the file is not in the form above.
GoldenCase ReadCase(const std::filesystem::path &file);

std::string Written(const GoldenCase &golden);

// All cases of a folder, in the order of their names.
std::vector<std::filesystem::path> FindCases(const std::filesystem::path &folder);

}  // namespace reports

#endif  // TESTS_REPORTS_GOLDEN_CASE_H
