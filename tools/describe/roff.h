// Escapes text for manual pages.
#ifndef TOOLS_DESCRIBE_ROFF_H
#define TOOLS_DESCRIBE_ROFF_H

#include <string>
#include <string_view>

namespace describe {

// Text to be copied from a terminal: its hyphens become minus signs.
std::string Literal(std::string_view text);

// Running text: its hyphens stay hyphens.
std::string Prose(std::string_view text);

std::string Bold(std::string_view text);
std::string Italic(std::string_view text);

}  // namespace describe

#endif  // TOOLS_DESCRIBE_ROFF_H
