#include "platkit/linux/files/printable.h"

#include <algorithm>
#include <cstdint>

namespace platkit {
namespace {

constexpr uint32_t kMalformed = UINT32_MAX;

struct Range {
  uint32_t first, last;
};

// The code points that are replaced, in ascending order.
constexpr Range kReplaced[] = {
    {0x0000, 0x001f},        // C0 controls
    {'"', '"'},              //
    {',', ','},              //
    {0x007f, 0x009f},        // delete, C1 controls
    {0x00ad, 0x00ad},        // soft hyphen
    {0x034f, 0x034f},        // combining grapheme joiner
    {0x061c, 0x061c},        // Arabic letter mark, which changes the direction
    {0x070f, 0x070f},        // Syriac abbreviation mark
    {0x115f, 0x1160},        // Hangul fillers
    {0x17b4, 0x17b5},        // Khmer inherent vowels
    {0x180b, 0x180f},        // Mongolian variation selectors, vowel separator
    {0x200b, 0x200f},        // zero-width space and joiners, direction marks
    {0x2028, 0x202e},        // line and paragraph separators, embeddings and overrides of the direction
    {0x2060, 0x206f},        // word joiner, invisible operators, isolates, deprecated format characters
    {0x3164, 0x3164},        // Hangul filler
    {0xd800, 0xdfff},        // surrogates
    {0xfdd0, 0xfdef},        // noncharacters
    {0xfe00, 0xfe0f},        // variation selectors
    {0xfeff, 0xfeff},        // zero-width no-break space
    {0xffa0, 0xffa0},        // half-width Hangul filler
    {0xfff0, 0xfffb},        // unassigned ignorable characters, interlinear annotations
    {0x1bca0, 0x1bca3},      // shorthand format controls
    {0x1d173, 0x1d17a},      // musical format controls
    {0xe0000, 0xe0fff},      // tags, variation selectors
    {0x110000, kMalformed},  // beyond Unicode
};

bool IsReplaced(uint32_t code) {
  const Range *range = std::ranges::lower_bound(kReplaced, code, {}, &Range::last);
  const bool isNoncharacter = (code & 0xfffe) == 0xfffe;  // the last two of each plane
  return isNoncharacter || code >= range->first;
}

struct Character {
  size_t size;
  uint32_t code;  // kMalformed: not UTF-8
};

// The number of bytes that the first byte of a character announces; 0 if no character starts with it.
size_t SizeOf(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xc2 && first <= 0xdf) return 2;
  if (first >= 0xe0 && first <= 0xef) return 3;
  return first >= 0xf0 && first <= 0xf4 ? 4 : 0;
}

// REQUIRES: `text` is not empty. A malformed sequence extends to the first byte that cannot continue it.
Character FirstCharacter(std::string_view text) {
  constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};  // by size: smaller codes have shorter forms
  const auto first = static_cast<unsigned char>(text[0]);
  const size_t size = SizeOf(first);
  if (size == 0) return {1, kMalformed};
  uint32_t code = size == 1 ? first : first & (0x7fu >> size);
  for (size_t i = 1; i < size; ++i) {
    if (i == text.size() || (text[i] & 0xc0) != 0x80) return {i, kMalformed};
    code = code << 6 | (text[i] & 0x3f);
  }
  return {size, code < kSmallest[size] ? kMalformed : code};
}

}  // namespace

std::string PrintableName(std::string_view name, size_t maxBytes) {
  std::string printable;
  while (!name.empty()) {
    const Character character = FirstCharacter(name);
    const std::string_view shown = IsReplaced(character.code) ? "?" : name.substr(0, character.size);
    if (shown.size() > maxBytes - printable.size()) break;
    printable += shown;
    name.remove_prefix(character.size);
  }
  return printable;
}

}  // namespace platkit
