// /proc/PID/stat: when a process started.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_STAT_H
#define PLATKIT_LINUX_KERNEL_PROCESS_STAT_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Reads field 22, starttime: when the process started, in clock ticks since boot. A PID and this number identify a
// process. Unreadable if the process does not exist.
Figure ReadStartTicks(HostFiles &files, int64_t pid);

// Returns the latest start time that fits the tick count, in nanoseconds since boot, or UINT64_MAX if the count cannot
// be read.
uint64_t ReadLatestStart(HostFiles &files, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_STAT_H
