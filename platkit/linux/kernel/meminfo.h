// /proc/meminfo: the memory of the host as a whole.
#ifndef PLATKIT_LINUX_KERNEL_MEMINFO_H
#define PLATKIT_LINUX_KERNEL_MEMINFO_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Amounts in KB. If a line that every kernel has is missing, its figure is unreadable.
struct Meminfo {
  Figure total;      // MemTotal
  Figure free;       // MemFree
  Figure available;  // MemAvailable: what can be allocated without swapping
  Figure slab;       // Slab
  Figure kernel;  // Slab + KernelStack + ShadowCallStack + PageTables + SecPageTables + Percpu + NFS_Unstable + Bounce;
                  // lines other than Slab may be missing

  // The following figures are absent if this kernel has no such line.
  Figure hardwareCorrupted;  // HardwareCorrupted
  Figure swapCached;         // SwapCached: swapped in, and still in swap space
  Figure transparent;        // AnonHugePages + ShmemHugePages: transparent huge pages
  Figure zswapped;           // Zswapped: compressed by zswap, size before compression
};

Meminfo ReadMeminfo(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_MEMINFO_H
