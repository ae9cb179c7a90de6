// What a machine's mappings tell of its guest's memory, where its command line tells nothing.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_MAPS_H
#define PLATKIT_LINUX_KERNEL_PROCESS_MAPS_H

#include <cstdint>
#include <span>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// The size in KB of a process' largest mapping of memory for data: anonymous, a memory file without a name, or a file
// of one of these devices. Pieces of a mapping that lie side by side count as one. Absent if there is none, or if the
// mappings are not for this user.
Figure LargestMemoryMapping(HostFiles &files, int64_t pid, std::span<const DeviceNumber> memoryDevices);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_MAPS_H
