// Splits and masks texts for comparison in tests.
#ifndef TESTS_SUPPORT_TEXT_H
#define TESTS_SUPPORT_TEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace testing_support {

// Replaces the time in every banner title by "<time>". The time must have the 24 characters of ctime.
std::string MaskTimes(const std::string &text);

// The lines of a text without newlines. The last line may lack its newline.
std::vector<std::string> Lines(std::string_view text);

// Quotes the text as one word for a shell.
std::string Quoted(std::string_view text);

// Splits a line at blanks. Single quotes enclose blanks or an empty word.
std::vector<std::string> Words(std::string_view line);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_TEXT_H
