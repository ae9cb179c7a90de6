// Protection of a mapped file from SIGBUS.
//
// Another process can truncate a file while it is mapped. Reading a page beyond the new end raises SIGBUS, and so does
// a failing disk. While any mapping is guarded, this process has a SIGBUS handler. It replaces the mapping by zeros and
// marks it as damaged; the read then continues. All other SIGBUS signals go to the handler that was installed before.
//
// A handler that the program installs later replaces this one: the mappings are then unguarded unless it passes the
// signals of other addresses on. After fork, the child's mappings are guarded too.
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
  // mapping.
  [[nodiscard]] HVC_ReturnStatus Protect(const void *start, size_t size);

  // Call this before the mapping is removed. It does nothing if no mapping is guarded.
  void Release();

  // Whether a read failed. The whole mapping reads as zeros then.
  bool IsDamaged() const;

 private:
  static constexpr size_t kNoSlot = kMaxMappings;

  size_t slot_ = kNoSlot;
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_MAPPING_GUARD_H
