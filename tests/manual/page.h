// The manual page as a reader takes it: its sections, the columns that it tells of, and its examples.
#ifndef TESTS_MANUAL_PAGE_H
#define TESTS_MANUAL_PAGE_H

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
  std::string letters;  // of its options, in the order of the alphabet
  bool hasTotals = false;
  std::vector<Column> columns;
};

struct Example {
  std::string command;
  std::string output;
};

class Page {
 public:
  // Reads the source of a page; throws if it cannot be read.
  explicit Page(const std::string &file);

  // The reports that the description lists, and the sections about them.
  const std::vector<std::string> &listed() const { return listed_; }
  const std::map<std::string, ReportSection> &reports() const { return reports_; }
  const std::vector<Example> &examples() const { return examples_; }

 private:
  void ReadExample(const std::vector<std::string> &lines, size_t &at);
  void ReadReport(const std::vector<std::string> &lines, size_t &at);

  std::vector<std::string> listed_;
  std::map<std::string, ReportSection> reports_;
  std::vector<Example> examples_;
};

}  // namespace manual

#endif  // TESTS_MANUAL_PAGE_H
