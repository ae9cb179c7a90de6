// /sys/kernel/mm/transparent_hugepage/khugepaged: the settings of the thread that makes transparent huge pages of small
// ones.
#ifndef PLATKIT_LINUX_KERNEL_KHUGEPAGED_H
#define PLATKIT_LINUX_KERNEL_KHUGEPAGED_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// max_ptes_swap: the number of small pages that may be swapped in to make a huge page of them. Absent on a kernel
// without transparent huge pages.
Figure ReadMaxSwappedPages(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_KHUGEPAGED_H
