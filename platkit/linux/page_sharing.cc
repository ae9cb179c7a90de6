#include "platkit/linux/page_sharing.h"

#include <elf.h>
#include <unistd.h>

#include <cstring>

#include "platkit/linux/figure_files.h"

namespace platkit {
namespace {

constexpr uint64_t kRecordPage = 4096;  // records count pages of this size

bool IsPageSize(uint64_t size) { return size >= kRecordPage && (size & (size - 1)) == 0; }

}  // namespace

// A saved root may come from a machine with pages of another size, which the reader's own auxiliary vector tells.
uint64_t PageSharing::PageSize() {
  if (pageSize_) return *pageSize_;
  pageSize_ = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
  char buffer[1024];
  std::string_view bytes;
  if (files_.Read(HostPath("proc/self/auxv"), buffer, bytes) != HVC_OK) bytes = {};
  for (Elf64_auxv_t entry; bytes.size() >= sizeof entry; bytes.remove_prefix(sizeof entry)) {
    std::memcpy(&entry, bytes.data(), sizeof entry);
    if (entry.a_type == AT_PAGESZ && IsPageSize(entry.a_un.a_val)) pageSize_ = entry.a_un.a_val;
  }
  return *pageSize_;
}

Figure PageSharing::ReadPages(std::string_view name) {
  const Figure pages = ReadAmount(files_, HostPath("sys/kernel/mm/ksm/", name));
  return pages.isAbsent() ? pages : pages * (PageSize() / kRecordPage);
}

Figure PageSharing::SavedOnHost() { return ReadPages("pages_sharing") * (kRecordPage / 1024); }

Figure PageSharing::SavedByProcess(int64_t pid) {
  const Figure pages = ReadAmount(files_, HostPath("proc/", pid, "/ksm_merging_pages"));
  return pages.isAbsent() ? pages : pages * (PageSize() / 1024);
}

void PageSharing::Fill(PShareStatsRecord &record) {
  const Figure shared = ReadPages("pages_shared");
  if (shared.isAbsent()) return;
  const Figure sharing = ReadPages("pages_sharing");
  Figure copied;
  const WantedFigure wanted[] = {{"cow_ksm", &copied}};
  ReadFigures(files_, HostPath("proc/vmstat"), wanted);
  copied = copied * (PageSize() / kRecordPage);
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
