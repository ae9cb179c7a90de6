// /proc/uptime: the time since the host booted.
#ifndef PLATKIT_LINUX_KERNEL_UPTIME_H
#define PLATKIT_LINUX_KERNEL_UPTIME_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Reads the time since boot in milliseconds, including suspended time. Unlike the time of day, this clock is never set.
Figure ReadUptime(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_UPTIME_H
