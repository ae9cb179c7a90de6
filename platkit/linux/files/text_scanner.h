// Splits the kernel's text files into words, numbers and separators.
#ifndef PLATKIT_LINUX_FILES_TEXT_SCANNER_H
#define PLATKIT_LINUX_FILES_TEXT_SCANNER_H

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platkit {

// Removes pieces from the front of a text and returns them as views into the text. Blanks are spaces and tabs.
class TextScanner {
 public:
  explicit TextScanner(std::string_view text) : text_(text) {}

  // The rest of the text.
  std::string_view rest() const { return text_; }
  bool AtEnd() const { return text_.empty(); }

  void SkipBlanks();

  // Takes `expected`. Takes nothing and returns false unless the text starts with it.
  bool Take(std::string_view expected);

  // Skips blanks and takes the characters up to the next blank. Empty at the end of the text.
  std::string_view TakeWord();

  // As TakeWord(), but from the end of the text.
  std::string_view TakeLastWord();

  // Takes the characters before `separator`, and skips `separator`. Takes the whole text if it has no `separator`.
  std::string_view TakeUntil(char separator);

  // Takes a number with all its digits. Takes nothing and returns false if there are no digits or the number does not
  // fit.
  template <std::unsigned_integral Number>
  bool TakeNumber(Number &number, int base = 10) {
    const auto [stop, error] = std::from_chars(text_.data(), text_.data() + text_.size(), number, base);
    if (error != std::errc()) return false;
    text_.remove_prefix(static_cast<size_t>(stop - text_.data()));
    return true;
  }

 private:
  std::string_view text_;
};

// The text without blanks and line ends around it.
std::string_view Trim(std::string_view text);

// Parses a decimal number that may have blanks and line ends around it. Returns false if the text has another form or
// the number does not fit.
bool ParseNumber(std::string_view text, uint64_t &number);

// Parses a number such as "0x1a2b". Returns false if the text has another form or the number does not fit.
template <std::unsigned_integral Number>
bool ParseHexNumber(std::string_view text, Number &number) {
  TextScanner scanner(text);
  return scanner.Take("0x") && scanner.TakeNumber(number, 16) && scanner.AtEnd();
}

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_TEXT_SCANNER_H
