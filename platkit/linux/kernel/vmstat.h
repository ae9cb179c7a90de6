// /proc/vmstat: counts of memory-management events since boot, and numbers of pages.
#ifndef PLATKIT_LINUX_KERNEL_VMSTAT_H
#define PLATKIT_LINUX_KERNEL_VMSTAT_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// A figure is absent if this kernel has no such line.
struct Vmstat {
  Figure kswapdRuns;        // events: pageoutrun
  Figure kswapdShortRests;  // events: kswapd_high_wmark_hit_quickly
  Figure allocStalls;       // events: allocstall_* of all zones
  Figure memmapPages;       // pages: nr_memmap_pages + nr_memmap_boot_pages
  Figure ksmCopies;         // events: cow_ksm, one page each
};

Vmstat ReadVmstat(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_VMSTAT_H
