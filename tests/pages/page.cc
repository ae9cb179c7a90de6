#include "tests/pages/page.h"

#include <regex>
#include <utility>

#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace pages_test {
namespace {

std::string WithoutEscapes(std::string_view text) {
  constexpr std::pair<std::string_view, std::string_view> kEscapes[] = {
      {"\\-", "-"}, {"\\e", "\\"}, {"\\(aq", "'"}, {"\\(ga", "`"}, {"\\(ha", "^"}, {"\\(ti", "~"},
      {"\\&", ""},  {"\\:", ""},   {"\\fB", ""},   {"\\fI", ""},   {"\\fR", ""}};
  std::string plain;
  while (!text.empty()) {
    const std::pair<std::string_view, std::string_view> *escape = nullptr;
    for (const auto &candidate : kEscapes) {
      if (text.starts_with(candidate.first)) escape = &candidate;
    }
    plain += escape != nullptr ? escape->second : text.substr(0, 1);
    text.remove_prefix(escape != nullptr ? escape->first.size() : 1);
  }
  return plain;
}

}  // namespace

Page::Page(const std::string &name)
    : text_(WithoutEscapes(
          testing_support::ReadFile(std::string(BUILD_FOLDER) + "/man/man" + name.back() + "/" + name))) {}

std::vector<std::string> Page::Examples() const {
  std::vector<std::string> examples;
  bool inExample = false;
  for (const std::string &line : testing_support::Lines(text_)) {
    if (line == ".EX") {
      inExample = true;
      examples.emplace_back();
    } else if (line == ".EE") {
      inExample = false;
    } else if (inExample) {
      examples.back() += line + "\n";
    }
  }
  return examples;
}

std::set<std::string> Page::Subsections(std::string_view section) const {
  std::set<std::string> names;
  bool inSection = false;
  for (const std::string &line : testing_support::Lines(text_)) {
    if (line.starts_with(".SH ")) inSection = line.substr(4) == section;
    if (inSection && line.starts_with(".SS ")) names.insert(line.substr(4));
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

}  // namespace pages_test
