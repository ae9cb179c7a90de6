// A manual page, as its reader sees it.
#ifndef TESTS_MANUAL_PAGE_H
#define TESTS_MANUAL_PAGE_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace manual {

// What a text of the source prints, without the escapes of its language.
std::string Printed(std::string_view source);

// The page of that file name, such as nodal.1. Throws if it cannot be read.
class Page {
 public:
  explicit Page(const std::string &name);

  // Of the source.
  const std::vector<std::string> &lines() const { return lines_; }

  // What stands in the source, without escapes.
  std::string Text() const;

  // The text of each block that stands word for word.
  std::vector<std::string> Examples() const;

  // The subsections of a section.
  std::set<std::string> Subsections(std::string_view section) const;

 private:
  std::vector<std::string> lines_;
};

// All that the expression finds in the text: its first group.
std::set<std::string> FindAll(const std::string &text, const std::string &expression);

}  // namespace manual

#endif  // TESTS_MANUAL_PAGE_H
