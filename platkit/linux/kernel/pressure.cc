#include "platkit/linux/kernel/pressure.h"

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

// Parses a word such as "avg10=1.50", and drops the fraction.
Figure ParseAverage(std::string_view word) {
  TextScanner scanner(word);
  uint64_t percent = 0;
  return scanner.Take("avg10=") && scanner.TakeNumber(percent) ? Figure(percent) : Figure::Unreadable();
}

}  // namespace

MemoryPressure ReadMemoryPressure(HostFiles &files, const HostPath &path) {
  MemoryPressure pressure;
  LineReader lines(files, path);
  for (std::string_view line; lines.Next(line);) {
    TextScanner scanner(line);
    const std::string_view kind = scanner.TakeWord();
    if (kind == "some") pressure.some = ParseAverage(scanner.TakeWord());
    if (kind == "full") pressure.full = ParseAverage(scanner.TakeWord());
  }
  if (lines.status() == HVC_OK || lines.status() == HVC_NOT_FOUND) return pressure;
  return {.some = pressure.some.IfAbsent(Figure::Unreadable()), .full = pressure.full.IfAbsent(Figure::Unreadable())};
}

}  // namespace platkit
