// /proc/PID/sched: scheduler figures of the first thread of a process.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_SCHED_H
#define PLATKIT_LINUX_KERNEL_PROCESS_SCHED_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Reads numa_pages_migrated: pages that NUMA balancing moved to the node where they are used. Absent if this kernel
// does not count them.
Figure ReadNumaMovedPages(HostFiles &files, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_SCHED_H
