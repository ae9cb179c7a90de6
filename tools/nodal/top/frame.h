// What the terminal shows, as lines of styled texts.
#ifndef NODAL_TOP_FRAME_H
#define NODAL_TOP_FRAME_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nodal::top {

// Each has a form without colours.
enum class Style : uint8_t { kPlain, kTitle, kHeading, kSortedHeading, kSelected, kDim, kStrong, kWarning };

struct Span {
  std::string text;  // printable UTF-8
  Style style = Style::kPlain;
};

using Line = std::vector<Span>;

struct Frame {
  std::vector<Line> lines;
  // Where the cursor of a prompt is, if there is one.
  bool hasCursor = false;
  size_t cursorColumn = 0;
};

enum class Align : uint8_t { kLeft, kRight };

// The columns of a terminal that a text takes. The texts of these functions are printable.
size_t WidthOf(std::string_view text);

// The text in exactly `width` columns: padded, or truncated with '~' at its end. Characters that the locale cannot show
// become '?'.
std::string Fit(std::string_view text, size_t width, Align align = Align::kLeft);

// The start of the text that fits into `width` columns, without padding.
std::string Clip(std::string_view text, size_t width);

std::string TextOf(const Line &line);

}  // namespace nodal::top

#endif  // NODAL_TOP_FRAME_H
