#include "src/table/line.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "src/table/output.h"
#include "src/table/terminal_text.h"

namespace kestrel {
namespace {

// Formats a number in `digits` and returns its text.
template <typename Number, size_t size>
std::string_view Format(char (&digits)[size], Number number) {
  const char *end = std::to_chars(digits, digits + size, number).ptr;
  return {digits, static_cast<size_t>(end - digits)};
}

}  // namespace

void Line::Flush() {
  PrintBytes({text_, size_});
  size_ = 0;
}

inline void Line::Append(std::string_view text) {
  if (text.size() > sizeof text_ - size_) {
    Flush();
    if (text.size() > sizeof text_) return PrintBytes(text);
  }
  size_ += text.copy(text_ + size_, text.size());
}

inline void Line::Pad(int count) {
  if (count <= 0) return;
  const auto size = static_cast<size_t>(count);  // below 256
  if (size > sizeof text_ - size_) Flush();
  std::memset(text_ + size_, ' ', size);
  size_ += size;
}

void Line::AppendMasked(std::string_view text) {
  while (!text.empty())
    Append(TakeMasked(text));
}

template <typename AppendText>
inline void Line::PrintField(const ColumnDesc &column, size_t size, AppendText appendText) {
  if (!first_) Append(csv_ ? "," : " ");
  first_ = false;
  if (csv_) return appendText();
  const int width = column.width - carry_;
  const int length = static_cast<int>(size);
  Pad(width - length);
  appendText();
  Pad(-width - length);
  carry_ = static_cast<uint8_t>(carry_ + std::max(length, std::abs(width)) - column.width);
}

void Line::PrintText(const ColumnDesc &column, std::string_view text) {
  PrintField(column, text.size(), [this, text] { Append(text); });
}

void Line::PrintForeignText(const ColumnDesc &column, std::string_view text) {
  if (!OutputIsTerminal() || !NeedsMask(text)) return PrintText(column, text);
  PrintField(column, text.size(), [this, text] { AppendMasked(text); });
}

void Line::PrintNumber(const ColumnDesc &column, uint64_t number) {
  char digits[24];
  switch (column.conversion) {
    case Conversion::kU: return PrintText(column, Format(digits, static_cast<uint32_t>(number)));
    case Conversion::kD: return PrintText(column, Format(digits, static_cast<int32_t>(number)));
    case Conversion::kLu: return PrintText(column, Format(digits, number));
    case Conversion::kLd: return PrintText(column, Format(digits, static_cast<int64_t>(number)));
    case Conversion::kC: digits[0] = static_cast<char>(number); return PrintText(column, {digits, 1});
    case Conversion::kS: return PrintText(column, {});
  }
}

void Line::End() { PrintLine({text_, size_}); }

}  // namespace kestrel
