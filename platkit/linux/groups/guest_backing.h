// Which pages of a VM's process are its guest's memory.
#ifndef PLATKIT_LINUX_GROUPS_GUEST_BACKING_H
#define PLATKIT_LINUX_GROUPS_GUEST_BACKING_H

#include <cstdint>

#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/qemu_cmdline.h"

namespace platkit {

enum class GuestBacking : uint8_t {
  kAnonymous,     // at least some are anonymous pages, like the monitor's own; also if unknown
  kSharedMemory,  // all are shared memory or huge pages of a pool, which the monitor itself does not use
  kFiles,         // some are pages of files on a disk, like the monitor's program
};

// `mount` determines which files are in memory: those in its memoryFolders.
GuestBacking BackingOf(const QemuOptions &options, const CgroupMount &mount);

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GUEST_BACKING_H
