// Finds the memory of a guest among the mappings of its VM's process.
#ifndef PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H
#define PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H

#include <cstdint>
#include <span>

#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// The size in KB of the largest memory mapping in /proc/PID/maps. Such a mapping is not executable, and is anonymous or
// maps an unnamed memory file or a file on one of `memoryDevices`. Adjacent mappings count as one. Absent if there is
// no such mapping, or if this user may not read the file.
Figure LargestMemoryMapping(HostFiles &files, int64_t pid, std::span<const DeviceNumber> memoryDevices);

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H
