// What tests do to texts before they compare them.
#ifndef TESTS_SUPPORT_TEXT_H
#define TESTS_SUPPORT_TEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace testing_support {

// The text with the time in every banner title replaced by "<time>". Only a time in the 24 characters of ctime is.
std::string MaskTimes(const std::string &text);

// The lines of a text without their line ends. A last line without one counts too.
std::vector<std::string> Lines(std::string_view text);

// The text as one word of a shell's command.
std::string Quoted(std::string_view text);

// Splits at blanks; '...' keeps blanks, and an empty word, together.
std::vector<std::string> Words(std::string_view line);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_TEXT_H
