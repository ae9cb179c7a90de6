// /proc/cpuinfo: the host's processors.
#ifndef PLATKIT_LINUX_KERNEL_CPUINFO_H
#define PLATKIT_LINUX_KERNEL_CPUINFO_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// A line that is missing is absent, one that does not parse unreadable.
struct Processor {
  Figure number;  // processor
  Figure model;   // model; x86 alone has it
};

// Finds the processor of that number. HVC_NOT_FOUND if there is none, or if it has no model.
[[nodiscard]] HVC_ReturnStatus FindProcessor(HostFiles &files, uint64_t number, Processor &processor);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_CPUINFO_H
