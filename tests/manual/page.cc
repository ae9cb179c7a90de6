#include "tests/manual/page.h"

#include <algorithm>
#include <regex>
#include <utility>

#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace manual {

std::string Printed(std::string_view source) {
  static constexpr std::pair<std::string_view, std::string_view> kEscapes[] = {
      {"\\-", "-"}, {"\\e", "\\"}, {"\\(aq", "'"}, {"\\(ga", "`"}, {"\\(ha", "^"}, {"\\(ti", "~"}, {"\\ ", " "},
      {"\\&", ""},  {"\\:", ""},   {"\\fB", ""},   {"\\fI", ""},   {"\\fR", ""},   {"\\fP", ""}};
  std::string printed;
  while (!source.empty()) {
    const auto *escape =
        std::ranges::find_if(kEscapes, [&](const auto &candidate) { return source.starts_with(candidate.first); });
    const bool isEscape = escape != std::end(kEscapes);
    printed += isEscape ? escape->second : source.substr(0, 1);
    source.remove_prefix(isEscape ? escape->first.size() : 1);
  }
  return printed;
}

Page::Page(const std::string &name)
    : lines_(testing_support::Lines(
          testing_support::ReadFile(std::string(BUILD_FOLDER "/man/man") + name.back() + "/" + name))) {}

std::string Page::Text() const {
  std::string text;
  for (const std::string &line : lines_)
    text += Printed(line) + "\n";
  return text;
}

std::vector<std::string> Page::Examples() const {
  std::vector<std::string> examples;
  bool inExample = false;
  for (const std::string &line : lines_) {
    if (line == ".EX") {
      inExample = true;
      examples.emplace_back();
    } else if (line == ".EE") {
      inExample = false;
    } else if (inExample) {
      examples.back() += Printed(line) + "\n";
    }
  }
  return examples;
}

std::set<std::string> Page::Subsections(std::string_view section) const {
  std::set<std::string> names;
  bool inSection = false;
  for (const std::string &line : lines_) {
    if (line.starts_with(".SH ")) inSection = line.substr(4) == section;
    if (inSection && line.starts_with(".SS ")) names.insert(Printed(line.substr(4)));
  }
  return names;
}

std::set<std::string> FindAll(const std::string &text, const std::string &expression) {
  const std::regex pattern(expression);
  std::set<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
    found.insert((*match)[1]);
  return found;
}

}  // namespace manual
