// Masks text from outside for a terminal. Any user can choose the name of a process, which could contain control
// sequences.
#ifndef KESTREL_TABLE_TERMINAL_TEXT_H
#define KESTREL_TABLE_TERMINAL_TEXT_H

#include <memory>
#include <string_view>

namespace kestrel {

// Removes the first character from the text and returns it, or a '?' for each of its bytes if it is masked. These are
// masked:
// - control characters: U+0000 to U+001F, U+007F to U+009F
// - characters that change the direction of text: U+061C, U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069
// - bytes that are not valid UTF-8
// REQUIRES: the text is not empty.
std::string_view TakeMasked(std::string_view &text);

// Whether a character of the text is masked.
bool NeedsMask(std::string_view text);

// A text in a warning, masked if standard error is a terminal. Null is treated as an empty text.
class WarningText {
 public:
  explicit WarningText(const char *text);

  // Valid as long as this object and the original text exist. If there is not enough memory to mask the text, this is
  // "(out of memory)".
  const char *c_str() const { return text_; }

 private:
  const char *text_;
  std::unique_ptr<char[]> masked_;  // null if `text_` is the original
};

}  // namespace kestrel

#endif  // KESTREL_TABLE_TERMINAL_TEXT_H
