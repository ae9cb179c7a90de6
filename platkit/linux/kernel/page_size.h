// /proc/self/auxv: the host's page size, which is the unit of many files.
#ifndef PLATKIT_LINUX_KERNEL_PAGE_SIZE_H
#define PLATKIT_LINUX_KERNEL_PAGE_SIZE_H

#include <cstdint>
#include <optional>

#include "platkit/linux/files/host_files.h"

namespace platkit {

inline constexpr uint64_t kRecordPage = 4096;         // bytes; records count pages of this size
inline constexpr uint64_t kRecordLargePageKB = 2048;  // records count large pages of this size

// The size does not change while the host runs, so it is read once. It is a multiple of kRecordPage.
class PageSize {
 public:
  explicit PageSize(HostFiles &files) : files_(files) {}

  uint64_t Bytes();
  uint64_t KB() { return Bytes() / 1024; }
  uint64_t RecordPages() { return Bytes() / kRecordPage; }

 private:
  HostFiles &files_;
  std::optional<uint64_t> bytes_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PAGE_SIZE_H
