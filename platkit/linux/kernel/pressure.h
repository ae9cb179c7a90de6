// Memory pressure (PSI): how much time tasks lose because memory is short. /proc/pressure/memory is the host's, and
// memory.pressure that of a control group of version 2.
#ifndef PLATKIT_LINUX_KERNEL_PRESSURE_H
#define PLATKIT_LINUX_KERNEL_PRESSURE_H

#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Whole percents of the last ten seconds. Absent if the file does not exist.
struct MemoryPressure {
  Figure some;  // avg10 of "some": at least one task waited for memory
  Figure full;  // avg10 of "full": all tasks that were not idle waited
};

inline constexpr std::string_view kHostPressure = "proc/pressure/memory";

MemoryPressure ReadMemoryPressure(HostFiles &files, const HostPath &path);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PRESSURE_H
