// The host's swap space.
#ifndef PLATKIT_LINUX_SWAP_SPACE_H
#define PLATKIT_LINUX_SWAP_SPACE_H

#include "platkit/linux/figure.h"
#include "platkit/linux/host_files.h"

namespace platkit {

// In KB, of swap files and partitions. Swap on a compressed memory disk is memory, and left out.
struct SwapSpace {
  Figure total, free;
};

SwapSpace ReadSwapSpace(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_SWAP_SPACE_H
