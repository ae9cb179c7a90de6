// Which pages of a VM's process are its guest's memory.
#ifndef PLATKIT_LINUX_GROUPS_GUEST_BACKING_H
#define PLATKIT_LINUX_GROUPS_GUEST_BACKING_H

#include <cstdint>

#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/qemu_cmdline.h"

namespace platkit {

// Each kind allows the pages of those before it.
enum class GuestBacking : uint8_t {
  kHugetlb,       // all are huge pages of a pool, which the monitor itself does not use
  kSharedMemory,  // some are shared memory
  kAnonymous,     // some are anonymous pages, like the monitor's own; also if unknown
  kFiles,         // some are pages of files on a disk, like the monitor's program
};

// `mount` determines which files are in memory: those in its memoryFolders.
GuestBacking BackingOf(const QemuOptions &options, const CgroupMount &mount);

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GUEST_BACKING_H
