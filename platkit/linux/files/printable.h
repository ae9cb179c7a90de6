// Makes names of the host safe to print.
#ifndef PLATKIT_LINUX_FILES_PRINTABLE_H
#define PLATKIT_LINUX_FILES_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace platkit {

// Returns the name as UTF-8 of at most `maxBytes` bytes. A character that does not fit as a whole is omitted, along
// with everything after it. Anybody may have chosen the name, so a question mark replaces each
// - malformed sequence of bytes,
// - control character and line separator, which terminals and line readers interpret,
// - comma and double quote, which separate and enclose the fields of CSV,
// - invisible character and character that changes the direction of text: two names that differ could look the same.
//
// A name that is already printable stays the same.
std::string PrintableName(std::string_view name, size_t maxBytes);

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_PRINTABLE_H
