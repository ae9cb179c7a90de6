// /sys/block/zramN/mm_stat: the memory of a zram device, which compresses the data written to it and keeps it in
// memory.
#ifndef PLATKIT_LINUX_KERNEL_ZRAM_H
#define PLATKIT_LINUX_KERNEL_ZRAM_H

#include <cstdint>
#include <span>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// The sum of mem_used_total of the devices, in KB: compressed pages, fragmentation and metadata included. Unreadable if
// a device has no such file.
Figure ReadZramMemory(HostFiles &files, std::span<const uint64_t> devices);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_ZRAM_H
