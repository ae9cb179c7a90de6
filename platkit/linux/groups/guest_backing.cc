#include "platkit/linux/groups/guest_backing.h"

#include <algorithm>

namespace platkit {
namespace {

// When a private mapping of shared memory is written, it gets anonymous pages. Huge pages come from the pool in either
// case.
GuestBacking BackingOf(const GuestFile &file, const CgroupMount &mount) {
  switch (FileSystemOf(mount, file.path)) {
    case FileSystem::kHugetlbfs: return GuestBacking::kHugetlb;
    case FileSystem::kTmpfs: return file.isShared ? GuestBacking::kSharedMemory : GuestBacking::kAnonymous;
    case FileSystem::kOther: break;
  }
  return GuestBacking::kFiles;
}

}  // namespace

GuestBacking BackingOf(const QemuOptions &options, const CgroupMount &mount) {
  GuestBacking backing = GuestBacking::kHugetlb;
  if (options.hasSharedMemory) backing = GuestBacking::kSharedMemory;
  if (options.hasPrivateMemory) backing = GuestBacking::kAnonymous;
  for (const GuestFile &file : options.files)
    backing = std::max(backing, BackingOf(file, mount));
  return backing;
}

}  // namespace platkit
