#include "tests/support/text.h"

#include <regex>

namespace testing_support {

std::string MaskTimes(const std::string &text) {
  if (text.find(" STATS: ") == text.npos) return text;  // most outputs are CSV
  static const std::regex title(
      R"(( STATS: )(Mon|Tue|Wed|Thu|Fri|Sat|Sun) [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}\n)");
  return std::regex_replace(text, title, "$1<time>\n");
}

std::vector<std::string> Lines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
  }
  return lines;
}

std::string Quoted(std::string_view text) {
  std::string word = "'";
  for (const char c : text) {
    if (c == '\'') {
      word += R"('\'')";
    } else {
      word += c;
    }
  }
  return word + "'";
}

std::vector<std::string> Words(std::string_view line) {
  std::vector<std::string> words;
  bool inWord = false;
  bool quoted = false;
  for (const char c : line) {
    if (c == ' ' && !quoted) {
      inWord = false;
      continue;
    }
    if (!inWord) words.emplace_back();
    inWord = true;
    if (c == '\'') {
      quoted = !quoted;
    } else {
      words.back() += c;
    }
  }
  return words;
}

}  // namespace testing_support
