// Finds the memory of a guest among the mappings of its VM's process.
#ifndef PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H
#define PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H

#include <cstdint>
#include <span>

#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Sizes, in KB, of the mappings in /proc/PID/maps that can be a guest's memory. Such a mapping is readable and
// writable, but not executable. It is anonymous, or maps an unnamed memory file or a file on one of `memoryDevices`,
// which are in ascending order. Adjacent mappings of the same kind count as one. The sizes are absent if there is no
// such mapping, or if this user may not read the file.
struct GuestMappings {
  Figure largest;
  Figure blocks;  // the sum of the mappings of at least 128 MB that are aligned like a guest's memory
};

GuestMappings ReadGuestMappings(HostFiles &files, int64_t pid, std::span<const DeviceNumber> memoryDevices);

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H
