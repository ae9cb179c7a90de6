#include "tools/nodal/top/frame.h"

#include <wchar.h>

#include <algorithm>

namespace nodal::top {
namespace {

// A character of UTF-8 text.
struct Character {
  std::string_view bytes;
  size_t width;
  bool isShown;  // the locale can show it
};

Character FirstCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return {text.substr(0, 1), 1, true};
  const size_t size = std::min<size_t>(first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2, text.size());
  uint32_t code = first & (0x7fu >> size);
  for (size_t i = 1; i < size; ++i)
    code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3fu);
  const int width = wcwidth(static_cast<wchar_t>(code));
  return {text.substr(0, size), width < 0 ? 1 : static_cast<size_t>(width), width >= 0};
}

}  // namespace

size_t WidthOf(std::string_view text) {
  size_t width = 0;
  while (!text.empty()) {
    const Character character = FirstCharacter(text);
    width += character.width;
    text.remove_prefix(character.bytes.size());
  }
  return width;
}

std::string Clip(std::string_view text, size_t width) {
  std::string clipped;
  size_t used = 0;
  while (!text.empty()) {
    const Character character = FirstCharacter(text);
    used += character.width;
    if (used > width) break;
    clipped += character.isShown ? character.bytes : "?";
    text.remove_prefix(character.bytes.size());
  }
  return clipped;
}

std::string Fit(std::string_view text, size_t width, Align align) {
  std::string fitted = Clip(text, width);
  if (WidthOf(text) > width && width > 0) {
    // Leaves room for the '~'.
    fitted = Clip(text, width - 1);
    fitted += '~';
  }
  const std::string padding(width - std::min(width, WidthOf(fitted)), ' ');
  return align == Align::kLeft ? fitted + padding : padding + fitted;
}

std::string TextOf(const Line &line) {
  std::string text;
  for (const Span &span : line)
    text += span.text;
  return text;
}

}  // namespace nodal::top
