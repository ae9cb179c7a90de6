#include "tools/nodal/metrics/labels.h"

#include <charconv>
#include <iterator>

#include "tools/nodal/support/text.h"

namespace nodal {

Labels &Labels::Add(std::string_view name, std::string_view value) {
  if (value.empty()) return *this;
  if (!text_.empty()) text_ += ',';
  text_ += std::string(name) + "=\"" + LabelValue(value) + "\"";
  return *this;
}

std::string LabelValue(std::string_view text) {
  std::string quoted;
  for (const char c : text) {
    if (c == '\\' || c == '"') quoted += '\\';
    quoted += c;
  }
  return Escaped(quoted, [](std::string_view character) {
    if (character == "\n") return std::string("\\n");
    std::string bytes;
    for (const std::byte byte : BytesOf(character))
      bytes += "\\\\x" + ToHex(std::span(&byte, 1));
    return bytes;
  });
}

std::string NumberText(double value) {
  // There is room for 2^64 blocks of 2 MB, in bytes.
  char digits[64];
  const std::to_chars_result end = std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed);
  return {digits, end.ptr};
}

}  // namespace nodal
