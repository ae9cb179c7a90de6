// A file that is mapped for reading, and that may change at any time.
//
// Another process can overwrite, truncate or extend the file between two reads of the same byte. Callers therefore
// check a copy of the bytes and use the same copy. Reads beyond the end of a truncated file return zeros and mark the
// file as damaged.
#ifndef PLATKIT_SNAPSHOT_MAPPED_FILE_H
#define PLATKIT_SNAPSHOT_MAPPED_FILE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "platkit/snapshot/mapping_guard.h"
#include "platkit/status.h"

namespace platkit::snapshot {

class MappedFile {
 public:
  MappedFile() = default;
  ~MappedFile();
  MappedFile(const MappedFile &) = delete;
  MappedFile &operator=(const MappedFile &) = delete;

  // Maps the first `size` bytes of the file. REQUIRES: no file is mapped, and size > 0.
  //
  // HVC_LIMIT_EXCEEDED: too many files are mapped. HVC_NOT_A_SNAPSHOT: a file of this kind cannot be mapped.
  // HVC_IO_ERROR: the handler of SIGBUS could not be installed. Other statuses as for StatusOfErrno.
  [[nodiscard]] HVC_ReturnStatus Map(int fd, uint32_t size);

  uint32_t size() const { return size_; }

  // HVC_SNAPSHOT_DAMAGED after a read beyond the end of a truncated file, or a failed read of the disk.
  HVC_ReturnStatus status() const { return guard_.IsDamaged() ? HVC_SNAPSHOT_DAMAGED : HVC_OK; }

  // REQUIRES, for the following functions: the bytes are within size().

  // Loads a little-endian integer once.
  uint32_t Integer(uint32_t position) const {
    uint32_t value;
    std::memcpy(&value, bytes_ + position, sizeof value);
    asm volatile("" : "+r"(value));  // the compiler must not load it again
    return value;
  }

  // Copies the bytes to `copy`.
  void Read(uint32_t position, std::span<std::byte> copy) const {
    if (copy.empty()) return;  // an empty span may have a null address
    std::memcpy(copy.data(), bytes_ + position, copy.size());
    asm volatile("" : : "r"(copy.data()) : "memory");  // the compiler must not read the file instead of the copy
  }

  // The mapped bytes, which may differ at each access. Use them only to compute a checksum or a hash, to compare, or to
  // prefetch.
  std::span<const std::byte> Unstable(uint32_t position, uint32_t size) const { return {bytes_ + position, size}; }

 private:
  const std::byte *bytes_ = nullptr;
  uint32_t size_ = 0;
  MappingGuard guard_;
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_MAPPED_FILE_H
