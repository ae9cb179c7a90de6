#include "tools/nodal/support/text.h"

#include <algorithm>
#include <cstdint>

#include "platkit/status_texts.h"

namespace nodal {
namespace {

using platkit::kStatusTexts;

constexpr std::string_view kHexDigits = "0123456789abcdef";

struct Character {
  size_t size;  // 0 for an invalid sequence
  uint32_t code;
};

Character FirstCharacter(std::string_view text) {
  const auto byte = [text](size_t i) { return static_cast<uint32_t>(static_cast<unsigned char>(text[i])); };
  const uint32_t first = byte(0);
  if (first < 0x80) return {1, first};
  const size_t size = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() < size) return {0, 0};
  uint32_t code = first & (0x7fu >> size);
  for (size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return {0, 0};
    code = code << 6 | (byte(i) & 0x3f);
  }
  // Reject overlong forms, surrogates and values beyond U+10FFFF.
  constexpr uint32_t kMin[] = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kMin[size] || (code >= 0xd800 && code < 0xe000) || code > 0x10ffff) return {0, 0};
  return {size, code};
}

bool IsControl(uint32_t code) { return code < 0x20 || (code >= 0x7f && code < 0xa0); }

bool ChangesDirection(uint32_t code) {
  return code == 0x61c || code == 0x200e || code == 0x200f || (code >= 0x202a && code <= 0x202e) ||
         (code >= 0x2066 && code <= 0x2069);
}

}  // namespace

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const Character character = FirstCharacter(text);
    if (character.size == 0) return false;
    text.remove_prefix(character.size);
  }
  return true;
}

std::string Escaped(std::string_view text, std::string (*escape)(std::string_view character)) {
  std::string shown;
  while (!text.empty()) {
    const auto [size, code] = FirstCharacter(text);
    const std::string_view character = text.substr(0, size == 0 ? 1 : size);
    if (size == 0 || IsControl(code) || ChangesDirection(code)) {
      shown += escape(character);
    } else {
      shown += character;
    }
    text.remove_prefix(character.size());
  }
  return shown;
}

std::string Printable(std::string_view text) {
  return Escaped(text, [](std::string_view) { return std::string("?"); });
}

std::string ToHex(std::span<const std::byte> bytes) {
  std::string digits;
  for (const std::byte byte : bytes) {
    digits += kHexDigits[std::to_integer<size_t>(byte >> 4)];
    digits += kHexDigits[std::to_integer<size_t>(byte & std::byte{15})];
  }
  return digits;
}

std::optional<std::string> FromHex(std::string_view digits) {
  if (digits.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    const size_t high = kHexDigits.find(digits[i]);
    const size_t low = kHexDigits.find(digits[i + 1]);
    if (high == std::string_view::npos || low == std::string_view::npos) return std::nullopt;
    bytes += static_cast<char>(high << 4 | low);
  }
  return bytes;
}

std::string Plural(size_t count, const std::string &what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string StatusText(HVC_ReturnStatus status) {
  const auto *known = std::ranges::find(kStatusTexts, status, &platkit::StatusText::status);
  return known != kStatusTexts.end() ? std::string(known->text) : "Status " + std::to_string(status);
}

std::optional<HVC_ReturnStatus> StatusOfText(std::string_view text) {
  const auto *known = std::ranges::find(kStatusTexts, text, &platkit::StatusText::text);
  if (known == kStatusTexts.end()) return std::nullopt;
  return known->status;
}

}  // namespace nodal
