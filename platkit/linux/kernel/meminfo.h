// The memory of the host as a whole.
#ifndef PLATKIT_LINUX_KERNEL_MEMINFO_H
#define PLATKIT_LINUX_KERNEL_MEMINFO_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// In KB. The parts that a kernel does not count are left out of `kernel`; what every kernel counts is unreadable if it
// is missing.
struct Meminfo {
  Figure total, free, active;
  Figure kernel;     // what the kernel holds for itself
  Figure slab;       // the part of it that object caches hold
  Figure discarded;  // taken out of use after errors; absent if this kernel does not do that
};

Meminfo ReadMeminfo(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_MEMINFO_H
