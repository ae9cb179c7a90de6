// /proc/vmstat: counts of memory-management events since boot, and numbers of pages.
#ifndef PLATKIT_LINUX_KERNEL_VMSTAT_H
#define PLATKIT_LINUX_KERNEL_VMSTAT_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// A figure is absent if this kernel has no such line.
struct Vmstat {
  Figure allocStalls;         // events: allocstall_* of all zones, allocations that waited for reclaim
  Figure oomKills;            // events: oom_kill
  Figure memmapPages;         // pages: nr_memmap_pages + nr_memmap_boot_pages
  Figure ksmCopies;           // events: cow_ksm, one page each
  Figure swapIn;              // pages: pswpin + swpin_zero
  Figure swapOut;             // pages: pswpout + swpout_zero
  Figure swapWrites;          // pages: pswpout
  Figure hugeAllocs;          // transparent huge pages: thp_fault_alloc + thp_collapse_alloc
  Figure hugeSplits;          // transparent huge pages: thp_swpout_fallback, split to be swapped out
  Figure hugeFailures;        // transparent huge pages: thp_fault_fallback, not available when memory was touched
  Figure hugeSwappedRefused;  // transparent huge pages: thp_scan_exceed_swap_pte, not made, to avoid swap-ins
};

Vmstat ReadVmstat(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_VMSTAT_H
