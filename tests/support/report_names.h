// The reports that kestrel has.
#ifndef TESTS_SUPPORT_REPORT_NAMES_H
#define TESTS_SUPPORT_REPORT_NAMES_H

#include <string>
#include <vector>

namespace testing_support {

// The names of all reports, from the program's usage text.
std::vector<std::string> ReportNames(const std::string &kestrel);

// The reports that read saved hosts: all but dcpmm-stats.
std::vector<std::string> SavedHostReportNames(const std::string &kestrel);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_REPORT_NAMES_H
