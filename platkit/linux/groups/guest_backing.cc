#include "platkit/linux/groups/guest_backing.h"

namespace platkit {
namespace {

// When a private mapping of shared memory is written, it gets anonymous pages. Huge pages come from the pool in either
// case.
GuestBacking BackingOf(const GuestFile &file, const CgroupMount &mount) {
  switch (FileSystemOf(mount, file.path)) {
    case FileSystem::kHugetlbfs: return GuestBacking::kSharedMemory;
    case FileSystem::kTmpfs: return file.isShared ? GuestBacking::kSharedMemory : GuestBacking::kAnonymous;
    case FileSystem::kOther: break;
  }
  return GuestBacking::kFiles;
}

}  // namespace

GuestBacking BackingOf(const QemuOptions &options, const CgroupMount &mount) {
  GuestBacking backing = options.hasPrivateMemory ? GuestBacking::kAnonymous : GuestBacking::kSharedMemory;
  for (const GuestFile &file : options.files) {
    const GuestBacking ofFile = BackingOf(file, mount);
    if (ofFile == GuestBacking::kFiles) return ofFile;
    if (ofFile == GuestBacking::kAnonymous) backing = ofFile;
  }
  return backing;
}

}  // namespace platkit
