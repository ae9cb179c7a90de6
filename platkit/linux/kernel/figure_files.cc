#include "platkit/linux/kernel/figure_files.h"

#include <algorithm>

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

// If there is no limit, control groups of version 1 print the highest multiple of the page size below 2^63. It is above
// this bound for any page size.
constexpr uint64_t kMinUnlimited = (uint64_t{1} << 63) - (uint64_t{1} << 20);

Figure ParseKeyedFigure(std::string_view text) {
  if (text.ends_with(" kB")) text.remove_suffix(3);
  return ParseFigure(text);
}

}  // namespace

Figure ParseFigure(std::string_view text) {
  uint64_t value = 0;
  return ParseNumber(text, value) ? Figure(value) : Figure::Unreadable();
}

Figure ParseAmount(std::string_view text) {
  if (Trim(text) == "max") return Figure::Unlimited();
  uint64_t value = 0;
  if (!ParseNumber(text, value)) return Figure::Unreadable();
  return value >= kMinUnlimited ? Figure::Unlimited() : Figure(value);
}

Figure ReadAmount(HostFiles &files, const HostPath &path) {
  char buffer[64];
  std::string_view text;
  const HVC_ReturnStatus status = files.ReadShort(path, buffer, text);
  if (status == HVC_NOT_FOUND) return Figure();
  return status == HVC_OK ? ParseAmount(text) : Figure::Unreadable();
}

bool SplitKey(std::string_view line, std::string_view &key, std::string_view &rest) {
  const auto *end = std::find_if(line.begin(), line.end(), [](char c) { return c == ':' || c == ' ' || c == '\t'; });
  if (end == line.begin() || end == line.end()) return false;
  key = {line.begin(), end};
  rest = Trim({end + 1, line.end()});
  return true;
}

bool TakeFigure(std::string_view key, std::string_view rest, std::span<const WantedFigure> wanted) {
  // Most lines are not wanted. Keys in a file often begin alike, so lengths and last characters are compared first.
  const auto want = std::ranges::find_if(wanted, [key](const WantedFigure &figure) {
    return figure.key.size() == key.size() && figure.key.back() == key.back() && figure.key == key;
  });
  if (want == wanted.end() || !want->figure->isAbsent()) return false;
  *want->figure = ParseKeyedFigure(rest);
  return true;
}

void MarkAbsentUnreadable(std::span<const WantedFigure> wanted) {
  for (const WantedFigure &want : wanted)
    *want.figure = want.figure->IfAbsent(Figure::Unreadable());
}

void ReadFigures(HostFiles &files, const HostPath &path, std::span<const WantedFigure> wanted) {
  LineReader lines(files, path);
  std::string_view line, key, rest;
  for (size_t left = wanted.size(); left > 0 && lines.Next(line);) {
    if (SplitKey(line, key, rest) && TakeFigure(key, rest, wanted)) --left;
  }
  if (lines.status() != HVC_OK && lines.status() != HVC_NOT_FOUND) MarkAbsentUnreadable(wanted);
}

}  // namespace platkit
