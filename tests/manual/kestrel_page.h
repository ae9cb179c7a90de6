// Reads the reports, their options and their columns from kestrel(1).
#ifndef TESTS_MANUAL_KESTREL_PAGE_H
#define TESTS_MANUAL_KESTREL_PAGE_H

#include <map>
#include <string>
#include <vector>

namespace manual {

struct Column {
  std::string name;
  std::string meaning;
  std::string kind;  // "amount", "number", "text", "y or n"
  bool inTotal = false;
  bool alwaysShown = false;
};

struct ReportSection {
  std::string letters;  // letters of its options, sorted
  bool hasTotals = false;
  std::vector<Column> columns;
};

class KestrelPage {
 public:
  KestrelPage();

  // The reports listed in the description, and the sections about them.
  const std::vector<std::string> &listed() const { return listed_; }
  const std::map<std::string, ReportSection> &reports() const { return reports_; }

 private:
  void ReadReport(const std::vector<std::string> &lines, size_t &at);

  std::vector<std::string> listed_;
  std::map<std::string, ReportSection> reports_;
};

}  // namespace manual

#endif  // TESTS_MANUAL_KESTREL_PAGE_H
