// /sys/bus/nd/devices/regionN: a range of persistent memory on one module or on an interleave set of several modules.
#ifndef PLATKIT_LINUX_KERNEL_ND_REGION_H
#define PLATKIT_LINUX_KERNEL_ND_REGION_H

#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Whether devtype is nd_pmem, or missing. Other regions are volatile, or, in older kernels, windows onto the same
// modules.
bool IsPersistentRegion(HostFiles &files, std::string_view region);

// set_cookie, in hexadecimal without "0x": it stays the same across reboots. Empty if the region has none.
std::string ReadRegionCookie(HostFiles &files, std::string_view region);

// resource: the first physical address. Unreadable for an ordinary user.
Figure ReadRegionStart(HostFiles &files, std::string_view region);

// Reads the region's modules, such as "nmem0", from mappings and mappingN.
std::vector<std::string> ReadRegionModules(HostFiles &files, std::string_view region);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_ND_REGION_H
