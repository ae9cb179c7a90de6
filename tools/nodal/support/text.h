// Texts, bytes and statuses in the forms that nodal prints and parses.
#ifndef NODAL_SUPPORT_TEXT_H
#define NODAL_SUPPORT_TEXT_H

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platkit/status.h"

namespace nodal {

bool IsUtf8(std::string_view text);

// Replaces everything that can change the state of a terminal with the result of `escape`. This affects control
// characters, characters that change the direction of text, and bytes that are not valid UTF-8.
std::string Escaped(std::string_view text, std::string (*escape)(std::string_view character));

// Like Escaped, with '?' as each replacement.
std::string Printable(std::string_view text);

std::string ToHex(std::span<const std::byte> bytes);
std::optional<std::string> FromHex(std::string_view digits);

inline std::span<const std::byte> BytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }

// For example "1 record" or "2 records".
std::string Plural(size_t count, const std::string &what);

std::string StatusText(HVC_ReturnStatus status);

// Returns the status that has this text, or std::nullopt if there is none.
std::optional<HVC_ReturnStatus> StatusOfText(std::string_view text);

}  // namespace nodal

#endif  // NODAL_SUPPORT_TEXT_H
