#include "platkit/linux/kernel/swaps.h"

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

// A line has the name (with blanks escaped), type, size, used size and priority. The first line contains the headings.
Swaps ReadSwaps(HostFiles &files) {
  Swaps space = {.total = Figure(0), .free = Figure(0)};
  LineReader lines(files, HostPath("proc/swaps"));
  for (std::string_view line; lines.Next(line);) {
    TextScanner scanner(line);
    const std::string_view name = scanner.TakeWord();
    const std::string_view type = scanner.TakeWord();
    if ((type != "file" && type != "partition") || name.starts_with("/dev/zram")) continue;
    const Figure size = ParseFigure(scanner.TakeWord());
    const Figure used = ParseFigure(scanner.TakeWord());
    space.total = space.total + size;
    space.free = space.free + (size - used);
  }
  if (lines.status() == HVC_OK || lines.status() == HVC_NOT_FOUND) return space;
  return {.total = Figure::Unreadable(), .free = Figure::Unreadable()};
}

}  // namespace platkit
