// Uses of the block device of a namespace of persistent memory: file systems, swap space, and devices on top of it.
#ifndef PLATKIT_LINUX_KERNEL_ND_OPENERS_H
#define PLATKIT_LINUX_KERNEL_ND_OPENERS_H

#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Counts how often the kernel itself has opened the block device: for a mounted file system (/proc/self/mountinfo), as
// swap space (/proc/swaps) and for devices on top of it (/sys/block/pmemN/holders). The kernel does not report which
// programs have opened the device, so the result is a lower bound. Unreadable if the namespace has no block device, or
// a file is unreadable.
Figure CountNdOpeners(HostFiles &files, std::string_view nameSpace);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_ND_OPENERS_H
