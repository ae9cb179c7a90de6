// /proc/swaps: the host's swap space.
#ifndef PLATKIT_LINUX_KERNEL_SWAPS_H
#define PLATKIT_LINUX_KERNEL_SWAPS_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// In KB, of all swap files and partitions except zram, which is memory. 0 on a kernel without swap.
struct Swaps {
  Figure total;  // Size
  Figure free;   // Size less Used
};

Swaps ReadSwaps(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_SWAPS_H
