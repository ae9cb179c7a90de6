#include "platkit/linux/records/page_sharing_records.h"

#include "platkit/linux/kernel/ksm.h"

namespace platkit {

// Reads a figure of KSM, in pages of 4 KB.
Figure PageSharingRecords::ReadRecordPages(std::string_view file) {
  const Figure pages = ReadKsmPages(files_, file);
  return pages.isAbsent() ? pages : pages * pageSize_.RecordPages();
}

Figure PageSharingRecords::SavedOnHost() {
  return savedOnHost_.Get(files_.clock(), [this] {
    return (ReadRecordPages("pages_sharing") + ReadRecordPages("ksm_zero_pages")) * (kRecordPage / 1024);
  });
}

Figure PageSharingRecords::OfControlGroup() {
  const Figure savedOnHost = SavedOnHost();
  return savedOnHost.isAbsent() || savedOnHost == Figure(0) ? savedOnHost : Figure::Unreadable();
}

ProcessSharing PageSharingRecords::OfProcess(Group &process) {
  // Only root may read the figures of another user's process, but a figure that is 0 for the host is 0 for each
  // process.
  const Figure savedOnHost = SavedOnHost();
  if (savedOnHost.isAbsent()) return {};
  if (savedOnHost == Figure(0)) return {.saved = Figure(0), .zero = Figure(0)};
  const ProcessKsm &pages = reader_.Ksm(process);
  if (pages.merged.isAbsent() && pages.zero.isAbsent()) return {.saved = Figure::Unreadable(), .zero = Figure(0)};
  const uint64_t pageKB = pageSize_.KB();
  return {.saved = (pages.merged + pages.zero) * pageKB, .zero = pages.zero * pageKB};
}

HVC_ReturnStatus PageSharingRecords::Stats(PShareStatsRecord &record) {
  const Figure shared = ReadRecordPages("pages_shared");
  if (shared.isAbsent()) return HVC_OK;
  const Figure sharing = ReadRecordPages("pages_sharing");
  const Figure copied = host_.vmstat().ksmCopies * pageSize_.RecordPages();
  const Figure mapped = shared + sharing;
  record.cow = mapped.Cell(0);
  record.zero = ReadRecordPages("ksm_zero_pages").Cell(0);
  record.used = shared.Cell(0);
  record.reclaimed = sharing.Cell(0);
  record.totRemove = copied.Cell(0);
  record.totAdd = (mapped + copied).Cell(0);
  // Pages whose content no other page has had so far. The kernel does not count pages that it no longer considers.
  record.hintsActive = record.hintsAdded = ReadRecordPages("pages_unshared").Cell(0);
  return HVC_OK;
}

}  // namespace platkit
