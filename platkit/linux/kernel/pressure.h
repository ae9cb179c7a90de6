// /proc/pressure/memory: how much time tasks lose because memory is short (PSI).
#ifndef PLATKIT_LINUX_KERNEL_PRESSURE_H
#define PLATKIT_LINUX_KERNEL_PRESSURE_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Whole percents of the last ten seconds. Absent if this kernel does not measure pressure.
struct MemoryPressure {
  Figure some;  // avg10 of "some": at least one task waited for memory
  Figure full;  // avg10 of "full": all tasks that were not idle waited
};

MemoryPressure ReadMemoryPressure(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PRESSURE_H
