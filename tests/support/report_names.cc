#include "tests/support/report_names.h"

#include "tests/support/process.h"
#include "tests/support/text.h"

namespace testing_support {

std::vector<std::string> ReportNames(const std::string &kestrel) {
  std::vector<std::string> names;
  bool inList = false;
  for (const std::string &line : Lines(Run({.program = kestrel, .arguments = {"-h"}}).output)) {
    if (line.empty()) inList = false;
    if (inList) names.push_back(Words(line).front());
    if (line == "   Supported report types:") inList = true;
  }
  return names;
}

std::vector<std::string> SavedHostReportNames(const std::string &kestrel) {
  std::vector<std::string> names = ReportNames(kestrel);
  std::erase(names, "dcpmm-stats");
  return names;
}

}  // namespace testing_support
