// What a machine's mappings tell of its guest's memory, where its command line tells nothing.
#ifndef PLATKIT_LINUX_GUEST_MAPPING_H
#define PLATKIT_LINUX_GUEST_MAPPING_H

#include <cstdint>
#include <span>

#include "platkit/linux/figure.h"
#include "platkit/linux/hierarchy.h"
#include "platkit/linux/host_files.h"

namespace platkit {

// The size in KB of a process' largest mapping of memory for data: anonymous, a memory file without a name, or a file
// of one of these devices. Pieces of a mapping that lie side by side count as one. Absent if there is none, or if the
// mappings are not for this user.
Figure LargestMemoryMapping(HostFiles &files, int64_t pid, std::span<const DeviceNumber> memoryDevices);

}  // namespace platkit

#endif  // PLATKIT_LINUX_GUEST_MAPPING_H
