// Reads manual pages.
#ifndef TESTS_MANUAL_PAGE_H
#define TESTS_MANUAL_PAGE_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace manual {

// Replaces each roff escape by what it prints. A change of the font prints nothing.
std::string Printed(std::string_view source);

// A manual page, such as "nodal.1". The constructor throws if the page cannot be read.
class Page {
 public:
  explicit Page(const std::string &name);

  // The lines of the roff source.
  const std::vector<std::string> &lines() const { return lines_; }

  // The source without escapes.
  std::string Text() const;

  // The text of each example (.EX).
  std::vector<std::string> Examples() const;

  // The subsections of a section.
  std::set<std::string> Subsections(std::string_view section) const;

 private:
  std::vector<std::string> lines_;
};

// The first group of each match of the expression in the text.
std::set<std::string> FindAll(const std::string &text, const std::string &expression);

}  // namespace manual

#endif  // TESTS_MANUAL_PAGE_H
