#include "platkit/linux/kernel/ksm.h"

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

Figure ReadKsmPages(HostFiles &files, std::string_view file) {
  return ReadAmount(files, HostPath("sys/kernel/mm/ksm/", file));
}

ProcessKsm ReadProcessKsm(HostFiles &files, int64_t pid) {
  ProcessKsm pages;
  const WantedFigure wanted[] = {{"ksm_merging_pages", &pages.merged}, {"ksm_zero_pages", &pages.zero}};
  ReadFigures(files, HostPath("proc/", pid, "/ksm_stat"), wanted);
  if (pages.merged.isAbsent()) pages.merged = ReadAmount(files, HostPath("proc/", pid, "/ksm_merging_pages"));
  return pages;
}

}  // namespace platkit
