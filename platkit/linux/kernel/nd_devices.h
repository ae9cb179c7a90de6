// /sys/bus/nd/devices: regions, namespaces and modules of persistent memory.
#ifndef PLATKIT_LINUX_KERNEL_ND_DEVICES_H
#define PLATKIT_LINUX_KERNEL_ND_DEVICES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Lists the names of all devices. Devices of the same kind are in the order of their numbers. A host without persistent
// memory has none.
[[nodiscard]] HVC_ReturnStatus ListNdDevices(HostFiles &files, std::vector<std::string> &devices);

bool NdDeviceExists(HostFiles &files, std::string_view device);

// Parses the first number in the name of a device, such as "region12" or "namespace12.3" (the number of its region).
// `kind` is "region", "namespace" or "nmem". Returns false for devices of another kind.
bool ParseNdNumber(std::string_view device, std::string_view kind, uint64_t &number);

// The following functions read one file of a device.

// Returns the first line unchanged, or an empty text if the file cannot be read.
std::string ReadNdText(HostFiles &files, std::string_view device, std::string_view file);

// Reads an amount. Absent if the device has no such file.
Figure ReadNdFigure(HostFiles &files, std::string_view device, std::string_view file);

// Reads numa_node. Absent if the kernel does not know the node.
Figure ReadNdNumaNode(HostFiles &files, std::string_view device);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_ND_DEVICES_H
