// /sys/kernel/mm/transparent_hugepage/khugepaged: the settings of the thread that collapses small pages into
// transparent huge pages.
#ifndef PLATKIT_LINUX_KERNEL_KHUGEPAGED_H
#define PLATKIT_LINUX_KERNEL_KHUGEPAGED_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// max_ptes_swap: the maximum number of small pages that the thread swaps in to make one huge page. Absent on a kernel
// without transparent huge pages.
Figure ReadMaxSwappedPages(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_KHUGEPAGED_H
