// A manual page, as its reader sees it.
#ifndef TESTS_PAGES_PAGE_H
#define TESTS_PAGES_PAGE_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace pages_test {

// The page of that file name, such as nodal.1, without the escapes of its language.
class Page {
 public:
  explicit Page(const std::string &name);

  // The text of each block that stands word for word.
  std::vector<std::string> Examples() const;

  // The subsections of a section.
  std::set<std::string> Subsections(std::string_view section) const;

  const std::string &text() const { return text_; }

 private:
  std::string text_;
};

// All that the expression finds in the text: its first group.
std::set<std::string> FindAll(const std::string &text, const std::string &expression);

}  // namespace pages_test

#endif  // TESTS_PAGES_PAGE_H
