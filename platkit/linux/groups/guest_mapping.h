// Which mappings of a VM's process are its guest's memory.
#ifndef PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H
#define PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H

#include <cstdint>
#include <span>

#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// The size of the largest mapping of memory in /proc/PID/maps, in KB: anonymous, of an unnamed memory file, or of a
// file on one of `memoryDevices`, and never executable. Adjacent pieces count as one. Absent if there is none, or if
// this user may not read the file.
Figure LargestMemoryMapping(HostFiles &files, int64_t pid, std::span<const DeviceNumber> memoryDevices);

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H
