// /sys/module/zswap/parameters: the settings of zswap, which keeps compressed memory instead of writing it to swap
// space.
#ifndef PLATKIT_LINUX_KERNEL_ZSWAP_H
#define PLATKIT_LINUX_KERNEL_ZSWAP_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// The percentage of the host's memory that zswap may use: max_pool_percent, or 0 if zswap is not enabled. Absent on a
// kernel without zswap.
Figure ReadZswapMaxPercent(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_ZSWAP_H
