// /proc/PID/limits: the resource limits of a process.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_LIMITS_H
#define PLATKIT_LINUX_KERNEL_PROCESS_LIMITS_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Reads the soft limit of "Max address space", in bytes. Absent if the process does not exist.
Figure ReadAddressSpaceLimit(HostFiles &files, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_LIMITS_H
