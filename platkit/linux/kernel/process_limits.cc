#include "platkit/linux/kernel/process_limits.h"

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

// "Max address space         unlimited            unlimited            bytes": soft limit, then hard limit.
Figure ReadAddressSpaceLimit(HostFiles &files, int64_t pid) {
  LineReader lines(files, HostPath("proc/", pid, "/limits"));
  for (std::string_view line; lines.Next(line);) {
    TextScanner scanner(line);
    if (!scanner.Take("Max address space ")) continue;
    const std::string_view limit = scanner.TakeWord();
    return limit == "unlimited" ? Figure::Unlimited() : ParseAmount(limit);
  }
  return lines.status() == HVC_NOT_FOUND ? Figure() : Figure::Unreadable();
}

}  // namespace platkit
