// Memory pressure (PSI): how much time tasks lose because memory is short. The figures of the host are in
// /proc/pressure/memory, and those of a control group of version 2 are in memory.pressure.
#ifndef PLATKIT_LINUX_KERNEL_PRESSURE_H
#define PLATKIT_LINUX_KERNEL_PRESSURE_H

#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Shares of the last ten seconds, in whole percent. Absent if the file does not exist.
struct MemoryPressure {
  Figure some;  // avg10 of "some": at least one task waited for memory
  Figure full;  // avg10 of "full": all tasks that were not idle waited
};

inline constexpr std::string_view kHostPressure = "proc/pressure/memory";

MemoryPressure ReadMemoryPressure(HostFiles &files, const HostPath &path);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PRESSURE_H
