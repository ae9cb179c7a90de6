// Texts and bytes as nodal shows and reads them.
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

// The text with something else in the place of each control character, and of each byte that is not UTF-8.
std::string Escaped(std::string_view text, std::string (*escape)(std::string_view character));

// The text as it may be shown on a terminal: '?' stands for control characters and for what is not UTF-8.
std::string Printable(std::string_view text);

std::string ToHex(std::span<const std::byte> bytes);
std::optional<std::string> FromHex(std::string_view digits);

inline std::span<const std::byte> BytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }

// "1 record", "2 records".
std::string Plural(size_t count, const std::string &what);

std::string StatusText(HVC_ReturnStatus status);

// The status of that text, if it is one of the kernel's.
std::optional<HVC_ReturnStatus> StatusOfText(std::string_view text);

}  // namespace nodal

#endif  // NODAL_SUPPORT_TEXT_H
