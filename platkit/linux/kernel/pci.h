// /sys/bus/pci/devices: the functions on the host's PCI buses, and the registers of their configuration spaces.
//
// The library writes nothing on a host except these registers, and only on request. A register is accessed through the
// device's `config` file, which is opened for one read or write of 1, 2 or 4 bytes.
#ifndef PLATKIT_LINUX_KERNEL_PCI_H
#define PLATKIT_LINUX_KERNEL_PCI_H

#include <array>
#include <cstdint>
#include <vector>

#include "platkit/linux/files/host_files.h"

namespace platkit {

// Segment (the kernel's domain), bus, slot and function.
using PciAddress = std::array<int64_t, 4>;

// A register, to be accessed with one read or write of `size` bytes.
struct PciRegister {
  PciAddress function;
  int64_t size;
  int64_t address;
};

struct PciIds {
  uint16_t vendor = 0, device = 0;
};

// Lists all functions in ascending order. A host without a PCI bus has none.
[[nodiscard]] HVC_ReturnStatus ListPciFunctions(HostFiles &files, std::vector<PciAddress> &functions);

// Reads the files `vendor` and `device`. The kernel has stored their values, so this neither accesses nor wakes the
// device.
[[nodiscard]] HVC_ReturnStatus ReadPciIds(HostFiles &files, const PciAddress &function, PciIds &ids);

// HVC_BAD_PARAM: the size is not 1, 2 or 4. HVC_UNALIGNED_ADDRESS: the address is not a multiple of the size.
// HVC_ADDRESS_TOO_HIGH: the address is negative or beyond the end of the configuration space. HVC_NO_PERMISSION: an
// ordinary user may only read the standard header.
[[nodiscard]] HVC_ReturnStatus ReadPciRegister(HostFiles &files, const PciRegister &where, uint32_t &value);

// Statuses as above, and HVC_OUT_OF_RANGE: the value does not fit the size. HVC_READ_ONLY: writes are refused.
// HVC_BUSY: a driver of the kernel uses the device. HVC_TRANSFER_TRUNCATED: only a part of the value was written.
[[nodiscard]] HVC_ReturnStatus WritePciRegister(HostFiles &files, const PciRegister &where, int64_t value);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PCI_H
