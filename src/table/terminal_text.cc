#include "src/table/terminal_text.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>

namespace kestrel {
namespace {

bool IsPrintableAscii(char c) { return c >= 0x20 && c < 0x7f; }

// A character of UTF-8 and its bytes; no bytes if the text does not start with a valid one.
struct Character {
  uint32_t code = 0;
  size_t size = 0;
};

// The length of a character by its first byte; 0 if the byte cannot start a character.
size_t SizeByFirstByte(uint8_t first) {
  if (first < 0x80) return 1;
  if (first < 0xc0) return 0;
  if (first < 0xe0) return 2;
  if (first < 0xf0) return 3;
  return first < 0xf8 ? 4 : 0;
}

// Whether the encoding is as short as possible and UTF-8 allows the character.
bool IsValid(const Character &character) {
  constexpr uint32_t kMinCodes[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = character.code >= 0xd800 && character.code < 0xe000;
  return character.code >= kMinCodes[character.size] && character.code <= 0x10ffff && !isSurrogate;
}

// Decodes the first character. REQUIRES: the text is not empty.
Character Decode(std::string_view text) {
  const auto first = static_cast<uint8_t>(text[0]);
  const size_t size = SizeByFirstByte(first);
  if (size <= 1) return {first, size};
  if (size > text.size()) return {};
  Character character = {.code = first & (0x7fu >> size), .size = size};
  for (const char c : text.substr(1, size - 1)) {
    const auto byte = static_cast<uint8_t>(c);
    if ((byte & 0xc0) != 0x80) return {};
    character.code = character.code << 6 | (byte & 0x3f);
  }
  return IsValid(character) ? character : Character{};
}

bool IsControl(uint32_t code) { return code < 0x20 || (code >= 0x7f && code < 0xa0); }

bool ChangesDirection(uint32_t code) {
  return code == 0x61c || code == 0x200e || code == 0x200f || (code >= 0x202a && code <= 0x202e) ||
         (code >= 0x2066 && code <= 0x2069);
}

// Calls `mask` with the position and size of each sequence of bytes that must be masked.
template <typename Mask>
void ForEachMasked(std::string_view text, Mask mask) {
  for (size_t i = 0; i < text.size();) {
    const Character character = Decode(text.substr(i));
    const size_t size = std::max<size_t>(character.size, 1);
    if (character.size == 0 || IsControl(character.code) || ChangesDirection(character.code)) mask(i, size);
    i += size;
  }
}

}  // namespace

void MaskForTerminal(std::string &text) {
  const std::string original = text;
  ForEachMasked(original, [&text](size_t place, size_t size) { text.replace(place, size, size, '?'); });
}

bool NeedsMask(std::string_view text) {
  if (std::ranges::all_of(text, IsPrintableAscii)) return false;
  bool isMasked = false;
  ForEachMasked(text, [&isMasked](size_t, size_t) { isMasked = true; });
  return isMasked;
}

std::string ForWarning(const char *text) {
  std::string shown(text == nullptr ? "" : text);
  if (isatty(STDERR_FILENO) == 1) MaskForTerminal(shown);
  return shown;
}

}  // namespace kestrel
