// Masks text from outside for a terminal. Any user can choose the name of a process, which could contain control
// sequences.
#ifndef KESTREL_TABLE_TERMINAL_TEXT_H
#define KESTREL_TABLE_TERMINAL_TEXT_H

#include <string>
#include <string_view>

namespace kestrel {

// Replaces each byte of these characters with '?': control characters (U+0000 to U+001F, U+007F to U+009F), invalid
// UTF-8, and characters that change the direction of text (U+061C, U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069).
void MaskForTerminal(std::string &text);

// Whether MaskForTerminal would change the text.
bool NeedsMask(std::string_view text);

// A text for a warning: masked if standard error is a terminal. Null counts as empty.
std::string ForWarning(const char *text);

}  // namespace kestrel

#endif  // KESTREL_TABLE_TERMINAL_TEXT_H
