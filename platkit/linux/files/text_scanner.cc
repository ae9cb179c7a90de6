#include "platkit/linux/files/text_scanner.h"

#include <algorithm>

namespace platkit {
namespace {

constexpr std::string_view kBlanks = " \t";

constexpr bool IsBlankOrLineEnd(char c) { return c == ' ' || c == '\t' || c == '\n'; }

}  // namespace

void TextScanner::SkipBlanks() { text_.remove_prefix(std::min(text_.find_first_not_of(kBlanks), text_.size())); }

bool TextScanner::Take(std::string_view expected) {
  if (!text_.starts_with(expected)) return false;
  text_.remove_prefix(expected.size());
  return true;
}

std::string_view TextScanner::TakeWord() {
  SkipBlanks();
  const std::string_view word = text_.substr(0, text_.find_first_of(kBlanks));
  text_.remove_prefix(word.size());
  return word;
}

std::string_view TextScanner::TakeLastWord() {
  text_ = text_.substr(0, text_.find_last_not_of(kBlanks) + 1);
  const std::string_view word = text_.substr(text_.find_last_of(kBlanks) + 1);
  text_.remove_suffix(word.size());
  return word;
}

std::string_view TextScanner::TakeUntil(char separator) {
  const size_t end = text_.find(separator);
  const std::string_view piece = text_.substr(0, end);
  text_.remove_prefix(end == std::string_view::npos ? text_.size() : end + 1);
  return piece;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlankOrLineEnd(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && IsBlankOrLineEnd(text.back()))
    text.remove_suffix(1);
  return text;
}

bool ParseNumber(std::string_view text, uint64_t &number) {
  TextScanner scanner(Trim(text));
  return scanner.TakeNumber(number) && scanner.AtEnd();
}

}  // namespace platkit
