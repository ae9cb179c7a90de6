#include "platkit/snapshot/mapped_file.h"

#include <sys/mman.h>

#include <bit>
#include <cerrno>

#include "platkit/errno_status.h"

namespace platkit::snapshot {

static_assert(std::endian::native == std::endian::little, "the integers of a snapshot are little-endian");

HVC_ReturnStatus MappedFile::Map(int fd, uint32_t size) {
  void *mapped = mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
  if (mapped == MAP_FAILED) return errno == ENODEV ? HVC_NOT_A_SNAPSHOT : StatusOfErrno(errno);
  bytes_ = static_cast<const std::byte *>(mapped);
  size_ = size;
  return guard_.Protect(mapped, size);
}

MappedFile::~MappedFile() {
  guard_.Release();
  if (bytes_ != nullptr) munmap(const_cast<std::byte *>(bytes_), size_);
}

}  // namespace platkit::snapshot
