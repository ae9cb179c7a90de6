// Text in the language of manual pages.
#ifndef TOOLS_DESCRIBE_ROFF_H
#define TOOLS_DESCRIBE_ROFF_H

#include <string>
#include <string_view>

namespace describe {

// Characters that are to come out as they are, copied from a terminal included.
std::string Literal(std::string_view text);

// Running text: as Literal, but its hyphens are hyphens.
std::string Prose(std::string_view text);

std::string Bold(std::string_view text);
std::string Italic(std::string_view text);

}  // namespace describe

#endif  // TOOLS_DESCRIBE_ROFF_H
