// The contents of the terminal, as lines of styled texts.
#ifndef NODAL_TOP_FRAME_H
#define NODAL_TOP_FRAME_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nodal::top {

// Each style also has a form without colours.
enum class Style : uint8_t { kPlain, kTitle, kHeading, kSortedHeading, kSelected, kDim, kStrong, kWarning };

struct Span {
  std::string text;  // printable UTF-8
  Style style = Style::kPlain;
};

using Line = std::vector<Span>;

struct Frame {
  std::vector<Line> lines;
  // The cursor of a prompt, if there is one, is on the last line.
  bool hasCursor = false;
  size_t cursorColumn = 0;
};

enum class Align : uint8_t { kLeft, kRight };

// Returns the number of terminal columns that a text takes. REQUIRES for this function, Fit and Clip: the text is
// printable.
size_t WidthOf(std::string_view text);

// Returns the text in exactly `width` columns: padded, or truncated with '~' as its last character. Characters that the
// locale cannot show become '?'.
std::string Fit(std::string_view text, size_t width, Align align = Align::kLeft);

// Returns the start of the text that fits into `width` columns, without padding.
std::string Clip(std::string_view text, size_t width);

std::string TextOf(const Line &line);

}  // namespace nodal::top

#endif  // NODAL_TOP_FRAME_H
