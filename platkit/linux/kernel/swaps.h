// The host's swap space.
#ifndef PLATKIT_LINUX_KERNEL_SWAPS_H
#define PLATKIT_LINUX_KERNEL_SWAPS_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// In KB, of swap files and partitions. Swap on a compressed memory disk is memory, and left out.
struct SwapSpace {
  Figure total, free;
};

SwapSpace ReadSwapSpace(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_SWAPS_H
