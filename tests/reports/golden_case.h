// A golden run: a host, the arguments of kestrel, and its expected output, messages and exit status.
//
//   host: branch
//   arguments: -r group-stats -u mb
//   exit status: 0
//   --- stdout
//   ...
//   --- stderr
//   ...
//
// The host names a JSON file in hosts/ or samples/, from which a snapshot is built. An argument that contains blanks is
// enclosed in single quotes. <time> stands for the times in the output.
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

// Throws if the file does not have the form above.
GoldenCase ReadCase(const std::filesystem::path &file);

std::string Written(const GoldenCase &golden);

// All cases in a folder, sorted by name.
std::vector<std::filesystem::path> FindCases(const std::filesystem::path &folder);

}  // namespace reports

#endif  // TESTS_REPORTS_GOLDEN_CASE_H
