#include "tests/support/text.h"

#include <time.h>

namespace testing_support {

std::string MaskTimes(const std::string &text) {
  constexpr std::string_view kTitle = " STATS: ";
  constexpr size_t kTimeLength = 24;  // Sat Nov 21 03:12:00 2026
  std::string masked = text;
  for (size_t at = masked.find(kTitle); at != masked.npos; at = masked.find(kTitle, at)) {
    at += kTitle.size();
    const std::string time = masked.substr(at, kTimeLength);
    tm parsed;
    const char *const end = strptime(time.c_str(), "%a %b %e %H:%M:%S %Y", &parsed);
    if (end == time.c_str() + kTimeLength && masked[at + kTimeLength] == '\n')
      masked.replace(at, kTimeLength, "<time>");
  }
  return masked;
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
