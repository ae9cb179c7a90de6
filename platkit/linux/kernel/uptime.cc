#include "platkit/linux/kernel/uptime.h"

#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

// "350735.47 234388.90": seconds since boot, with two decimals, and idle seconds.
Figure ReadUptime(HostFiles &files) {
  char buffer[128];
  std::string_view text;
  if (files.ReadShort(HostPath("proc/uptime"), buffer, text) != HVC_OK) return Figure::Unreadable();
  TextScanner scanner(text);
  const Figure seconds = ParseFigure(scanner.TakeUntil('.'));
  const std::string_view hundredths = scanner.TakeWord();
  if (hundredths.size() != 2) return Figure::Unreadable();
  return seconds * 1000 + ParseFigure(hundredths) * 10;
}

}  // namespace platkit
