#include "platkit/linux/page_sharing.h"

#include "platkit/linux/figure_files.h"

namespace platkit {

Figure PageSharing::ReadPages(std::string_view name) {
  const Figure pages = ReadAmount(files_, HostPath("sys/kernel/mm/ksm/", name));
  return pages.isAbsent() ? pages : pages * pageSize_.RecordPages();
}

Figure PageSharing::SavedOnHost() { return ReadPages("pages_sharing") * (kRecordPage / 1024); }

Figure PageSharing::SavedByProcess(int64_t pid) {
  const Figure pages = ReadAmount(files_, HostPath("proc/", pid, "/ksm_merging_pages"));
  return pages.isAbsent() ? pages : pages * pageSize_.KB();
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
