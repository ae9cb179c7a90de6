#include "src/table/terminal_text.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <new>

namespace kestrel {
namespace {

bool IsPrintableAscii(char c) { return c >= 0x20 && c < 0x7f; }

// A decoded UTF-8 character and its size in bytes; size 0 if the text does not start with a valid character.
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

bool IsMasked(const Character &character) {
  return character.size == 0 || IsControl(character.code) || ChangesDirection(character.code);
}

// The bytes of the first character; if it is invalid, the first byte.
std::string_view FirstBytes(std::string_view text, const Character &first) {
  return text.substr(0, std::max<size_t>(first.size, 1));
}

}  // namespace

std::string_view TakeMasked(std::string_view &text) {
  constexpr std::string_view kMask = "????";
  const Character character = Decode(text);
  const std::string_view bytes = FirstBytes(text, character);
  text.remove_prefix(bytes.size());
  return IsMasked(character) ? kMask.substr(0, bytes.size()) : bytes;
}

bool NeedsMask(std::string_view text) {
  if (std::ranges::all_of(text, IsPrintableAscii)) return false;
  while (!text.empty()) {
    const Character character = Decode(text);
    if (IsMasked(character)) return true;
    text.remove_prefix(FirstBytes(text, character).size());
  }
  return false;
}

WarningText::WarningText(const char *text) : text_(text == nullptr ? "" : text) {
  std::string_view rest = text_;
  if (isatty(STDERR_FILENO) != 1 || !NeedsMask(rest)) return;
  masked_.reset(new (std::nothrow) char[rest.size() + 1]);
  text_ = masked_ == nullptr ? "(out of memory)" : masked_.get();
  if (masked_ == nullptr) return;
  char *end = masked_.get();
  while (!rest.empty()) {
    const std::string_view bytes = TakeMasked(rest);
    end += bytes.copy(end, bytes.size());
  }
  *end = '\0';
}

}  // namespace kestrel
