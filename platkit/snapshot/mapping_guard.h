// Protection of a mapped file from SIGBUS.
//
// Another process can truncate a file while it is mapped. Reading a page beyond the new end raises SIGBUS, and so does
// a failing disk. While any mapping is guarded, this process has a SIGBUS handler. The handler replaces the mapping
// with zeros and marks it as damaged; the read then continues. The handler passes all other SIGBUS signals on to the
// previously installed handler.
//
// If the program later installs its own handler, the mappings are guarded only if that handler passes signals for
// unknown addresses on to this one. After fork, the child's mappings are guarded too.
#ifndef PLATKIT_SNAPSHOT_MAPPING_GUARD_H
#define PLATKIT_SNAPSHOT_MAPPING_GUARD_H

#include <cstddef>

#include "platkit/status.h"

namespace platkit::snapshot {

class MappingGuard {
 public:
  static constexpr size_t kMaxMappings = 64;  // in the process

  MappingGuard() = default;
  ~MappingGuard() { Release(); }
  MappingGuard(const MappingGuard &) = delete;
  MappingGuard &operator=(const MappingGuard &) = delete;

  // Guards the pages of a read-only mapping.
  //
  // HVC_LIMIT_EXCEEDED: the process has kMaxMappings guarded mappings. HVC_ALREADY_EXISTS: this object guards a
  // mapping. HVC_IO_ERROR: the handler could not be installed.
  [[nodiscard]] HVC_ReturnStatus Protect(const void *start, size_t size);

  // Ends the protection; call this before the mapping is removed. Does nothing if this object guards no mapping.
  void Release();

  // Whether a read failed. If so, the whole mapping reads as zeros.
  bool IsDamaged() const;

 private:
  static constexpr size_t kNoSlot = kMaxMappings;

  size_t slot_ = kNoSlot;
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_MAPPING_GUARD_H
