// The functions on the host's PCI buses, and the registers of their configuration spaces.
//
// These registers are the only thing on a host that is ever written, and only when asked for: a device's `config` file
// is opened for one access to one register.
#ifndef PLATKIT_LINUX_RECORDS_PCI_RECORDS_H
#define PLATKIT_LINUX_RECORDS_PCI_RECORDS_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// Segment, bus, slot and function.
using PciAddress = std::array<int64_t, 4>;

// A register of a function, to be read or written with one access of `size` bytes.
struct PciRegister {
  PciAddress function;
  int64_t size;
  int64_t address;
};

class PciDevices {
 public:
  explicit PciDevices(HostFiles &files) : files_(files) {}

  // The segments of the host if `above` is empty, the buses of a segment if it holds that, and so on: in ascending
  // order, and only those with a function behind them. HVC_NOT_FOUND if there is nothing at `above`.
  //
  // Listing the segments looks at the host anew; the lists below are of what was there then.
  [[nodiscard]] HVC_ReturnStatus List(Arguments above, ParamList &list);

  // As the kernel learnt them when it found the device, which is not touched for this.
  [[nodiscard]] HVC_ReturnStatus ReadHeader(const PciAddress &function, PciConfigHeaderRecord &record);

  // HVC_BAD_PARAM: the size is not 1, 2 or 4. HVC_UNALIGNED_ADDRESS: the address is no multiple of the size.
  // HVC_ADDRESS_TOO_HIGH: the device's configuration space ends before it. HVC_NO_PERMISSION: not for this user, who
  // may read the standard header alone.
  [[nodiscard]] HVC_ReturnStatus Read(const PciRegister &where, PciConfigRegRecord &record);

  // The same, and HVC_OUT_OF_RANGE: the value does not fit the size. HVC_READ_ONLY: this host takes no writes.
  [[nodiscard]] HVC_ReturnStatus Write(const PciRegister &where, int64_t value);

 private:
  HVC_ReturnStatus FindDevices();

  HostFiles &files_;
  std::optional<std::vector<PciAddress>> devices_;  // ascending
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_PCI_RECORDS_H
