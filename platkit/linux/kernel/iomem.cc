#include "platkit/linux/kernel/iomem.h"

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// Returns the size of a range such as "01000000-0220bb07", which includes its last address.
Figure ParseRange(std::string_view text) {
  TextScanner scanner(text);
  scanner.SkipBlanks();
  uint64_t first = 0, last = 0;
  if (!scanner.TakeNumber(first, 16) || !scanner.Take("-") || !scanner.TakeNumber(last, 16) || last <= first) {
    return Figure::Unreadable();
  }
  return Figure(last - first + 1);
}

}  // namespace

KernelImage ReadKernelImage(HostFiles &files) {
  constexpr std::string_view kSeparator = " : ";
  KernelImage image;
  const WantedFigure wanted[] = {{"Kernel code", &image.code},
                                 {"Kernel rodata", &image.rodata},
                                 {"Kernel data", &image.data},
                                 {"Kernel bss", &image.bss}};
  LineReader lines(files, HostPath("proc/iomem"));
  for (std::string_view line; lines.Next(line);) {
    const size_t separator = line.find(kSeparator);
    if (separator == std::string_view::npos) continue;
    const std::string_view name = line.substr(separator + kSeparator.size());
    for (const WantedFigure &want : wanted) {
      if (want.key == name) *want.figure = want.figure->IfAbsent(ParseRange(line.substr(0, separator)));
    }
  }
  return image;
}

}  // namespace platkit
