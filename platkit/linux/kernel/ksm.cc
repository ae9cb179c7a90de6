#include "platkit/linux/kernel/ksm.h"

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

Figure PageSharing::ReadPages(std::string_view name) {
  const Figure pages = ReadAmount(files_, HostPath("sys/kernel/mm/ksm/", name));
  return pages.isAbsent() ? pages : pages * pageSize_.RecordPages();
}

Figure PageSharing::SavedOnHost() { return ReadPages("pages_sharing") * (kRecordPage / 1024); }

// Kernels before 6.4 have the merged pages in a file of their own, and do not count pages of zeros.
ProcessSharing PageSharing::OfProcess(int64_t pid) {
  ProcessSharing pages;
  const WantedFigure wanted[] = {{"ksm_merging_pages", &pages.merged}, {"ksm_zero_pages", &pages.zero}};
  ReadFigures(files_, HostPath("proc/", pid, "/ksm_stat"), wanted);
  if (pages.merged.isAbsent()) pages.merged = ReadAmount(files_, HostPath("proc/", pid, "/ksm_merging_pages"));
  if (pages.merged.isAbsent() && pages.zero.isAbsent()) return pages;
  const uint64_t pageSize = pageSize_.KB();
  return {.merged = pages.merged * pageSize, .zero = pages.zero * pageSize};
}

void PageSharing::Fill(PShareStatsRecord &record) {
  const Figure shared = ReadPages("pages_shared");
  if (shared.isAbsent()) return;
  const Figure sharing = ReadPages("pages_sharing");
  Figure copied;
  const WantedFigure wanted[] = {{"cow_ksm", &copied}};
  ReadFigures(files_, HostPath("proc/vmstat"), wanted);
  copied = copied * pageSize_.RecordPages();
  const Figure mapped = shared + sharing;
  record.cow = mapped.Cell(0);
  record.zero = ReadPages("ksm_zero_pages").Cell(0);
  record.used = shared.Cell(0);
  record.reclaimed = sharing.Cell(0);
  record.totRemove = copied.Cell(0);
  record.totAdd = (mapped + copied).Cell(0);
  record.hintsActive = ReadPages("pages_unshared").Cell(0);
}

}  // namespace platkit
