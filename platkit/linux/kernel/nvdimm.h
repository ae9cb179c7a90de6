// /sys/bus/nd/devices/nmemN: the modules of persistent memory.
#ifndef PLATKIT_LINUX_KERNEL_NVDIMM_H
#define PLATKIT_LINUX_KERNEL_NVDIMM_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Lists the numbers of the modules in ascending order. A host without persistent memory has none.
[[nodiscard]] HVC_ReturnStatus ListNvdimms(HostFiles &files, std::vector<uint32_t> &numbers);

// available_slots: the number of free label slots. 0 for a module without labels, whose file is missing or cannot be
// read; unreadable if this user may not read it.
Figure ReadFreeLabelSlots(HostFiles &files, std::string_view module);

// Whether nfit/flags has a flag for a failed save, restore, flush or map ("..._fail").
bool HasNvdimmFailed(HostFiles &files, std::string_view module);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_NVDIMM_H
