#include "platkit/linux/kernel/process_sched.h"

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

// "numa_pages_migrated                          :                    0"
Figure ReadNumaMovedPages(HostFiles &files, int64_t pid) {
  LineReader lines(files, HostPath("proc/", pid, "/sched"));
  std::string_view line, key, rest;
  while (lines.Next(line)) {
    if (!SplitKey(line, key, rest) || key != "numa_pages_migrated") continue;
    TextScanner scanner(rest);
    scanner.Take(":");
    return ParseFigure(scanner.rest());
  }
  return lines.status() == HVC_OK || lines.status() == HVC_NOT_FOUND ? Figure() : Figure::Unreadable();
}

}  // namespace platkit
