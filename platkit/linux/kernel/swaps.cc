#include "platkit/linux/kernel/swaps.h"

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// Whether this is the name of a zram device, such as "/dev/zram0". Sets `number` to its number.
bool IsZram(std::string_view name, uint64_t &number) {
  TextScanner scanner(name);
  return scanner.Take("/dev/zram") && scanner.TakeNumber(number) && scanner.AtEnd();
}

}  // namespace

// A line has the name (with blanks escaped), type, size, used size and priority. The first line contains the headings.
Swaps ReadSwaps(HostFiles &files) {
  Swaps space = {.total = Figure(0), .free = Figure(0), .zramUsed = Figure(0), .zramDevices = {}};
  LineReader lines(files, HostPath("proc/swaps"));
  for (std::string_view line; lines.Next(line);) {
    TextScanner scanner(line);
    const std::string_view name = scanner.TakeWord();
    const std::string_view type = scanner.TakeWord();
    if (type != "file" && type != "partition") continue;
    const Figure size = ParseFigure(scanner.TakeWord());
    const Figure used = ParseFigure(scanner.TakeWord());
    if (uint64_t number = 0; IsZram(name, number)) {
      space.zramUsed = space.zramUsed + used;
      space.zramDevices.push_back(number);
    } else {
      space.total = space.total + size;
      space.free = space.free + (size - used);
    }
  }
  if (lines.status() == HVC_OK || lines.status() == HVC_NOT_FOUND) return space;
  const Figure unreadable = Figure::Unreadable();
  return {.total = unreadable, .free = unreadable, .zramUsed = unreadable, .zramDevices = {}};
}

}  // namespace platkit
