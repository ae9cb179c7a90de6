#include "platkit/linux/kernel/swaps.h"

#include <algorithm>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

std::string_view TakeField(std::string_view &line) {
  line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
  const std::string_view field = line.substr(0, line.find_first_of(" \t"));
  line.remove_prefix(field.size());
  return field;
}

Figure ParseField(std::string_view field) {
  uint64_t value = 0;
  return ParseNumber(field, value) ? Figure(value) : Figure::Unreadable();
}

}  // namespace

// Each line is a name, in which blanks are escaped, a type, a size, what is used of it, and a priority. The first one
// has the headings.
SwapSpace ReadSwapSpace(HostFiles &files) {
  SwapSpace space = {.total = Figure(0), .free = Figure(0)};
  LineReader lines(files, HostPath("proc/swaps"));
  for (std::string_view line; lines.Next(line);) {
    const std::string_view name = TakeField(line);
    const std::string_view type = TakeField(line);
    if ((type != "file" && type != "partition") || name.starts_with("/dev/zram")) continue;
    const Figure size = ParseField(TakeField(line));
    space.total = space.total + size;
    space.free = space.free + (size - ParseField(TakeField(line)));
  }
  // A kernel without swap has no such file.
  if (lines.status() == HVC_OK || lines.status() == HVC_NOT_FOUND) return space;
  return {.total = Figure::Unreadable(), .free = Figure::Unreadable()};
}

}  // namespace platkit
