// Finds the memory of a guest among the mappings of its VM's process.
#ifndef PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H
#define PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H

#include <cstdint>
#include <span>

#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Sizes of memory mappings in /proc/PID/maps, in KB. Such a mapping is not executable, and is anonymous or maps an
// unnamed memory file or a file on one of the given devices, which are in ascending order. Adjacent mappings count as
// one. Absent if there is no such mapping, or if this user may not read the file.
struct GuestMappings {
  Figure largest;
  Figure blocks;  // the sum of those of 128 MB or more that have the form of a guest's memory, or of a memory device's
};

GuestMappings ReadGuestMappings(HostFiles &files, int64_t pid, std::span<const DeviceNumber> memoryDevices);

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GUEST_MAPPING_H
