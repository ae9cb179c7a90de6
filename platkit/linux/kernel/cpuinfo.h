// /proc/cpuinfo: the host's processors.
#ifndef PLATKIT_LINUX_KERNEL_CPUINFO_H
#define PLATKIT_LINUX_KERNEL_CPUINFO_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// A figure is absent if its line is missing, and unreadable if its line is malformed.
struct Processor {
  Figure number;         // processor
  Figure family, model;  // cpu family, model; only on x86
  bool isIntel = false;  // vendor_id is GenuineIntel
};

// Finds the processor with this number. HVC_NOT_FOUND if it does not exist, has no model number, or is not of Intel's
// family 6: model numbers of other vendors and families have other meanings.
[[nodiscard]] HVC_ReturnStatus FindProcessor(HostFiles &files, uint64_t number, Processor &processor);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_CPUINFO_H
