// /proc/uptime: the time since the host booted.
#ifndef PLATKIT_LINUX_KERNEL_UPTIME_H
#define PLATKIT_LINUX_KERNEL_UPTIME_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// In milliseconds, suspended time included. Unlike the time of day, it is never set.
Figure ReadUptime(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_UPTIME_H
