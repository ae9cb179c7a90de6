// /proc/swaps: the host's swap space.
#ifndef PLATKIT_LINUX_KERNEL_SWAPS_H
#define PLATKIT_LINUX_KERNEL_SWAPS_H

#include <cstdint>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Amounts are in KB. They are 0 on a kernel without swap.
struct Swaps {
  // Of all swap files and partitions except zram, which is memory.
  Figure total;  // Size
  Figure free;   // Size less Used

  Figure zramUsed;                    // the sum of Used over all zram devices
  std::vector<uint64_t> zramDevices;  // their numbers: 0 is /dev/zram0
};

Swaps ReadSwaps(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_SWAPS_H
