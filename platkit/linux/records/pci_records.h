// The lists and records of PCI functions.
#ifndef PLATKIT_LINUX_RECORDS_PCI_RECORDS_H
#define PLATKIT_LINUX_RECORDS_PCI_RECORDS_H

#include <cstdint>
#include <vector>

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/kernel/pci.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

class PciRecords {
 public:
  explicit PciRecords(HostFiles &files) : files_(files) {}

  // Lists the segments of the host if `above` is empty, the buses of a segment if `above` is the segment, and so on
  // down to functions. The entries are in ascending order, and each has at least one function. HVC_NOT_FOUND if `above`
  // does not exist.
  [[nodiscard]] HVC_ReturnStatus List(Arguments above, ParamList &list);

  // See ReadPciIds, ReadPciRegister and WritePciRegister in kernel/pci.h. Registers are never cached.
  [[nodiscard]] HVC_ReturnStatus Header(const PciAddress &function, PciConfigHeaderRecord &record);
  [[nodiscard]] HVC_ReturnStatus Read(const PciRegister &where, PciConfigRegRecord &record);
  [[nodiscard]] HVC_ReturnStatus Write(const PciRegister &where, int64_t value);

 private:
  struct Functions {
    HVC_ReturnStatus status = HVC_FAILURE;
    std::vector<PciAddress> addresses;  // ascending
  };

  HostFiles &files_;
  Fresh<Functions> functions_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_PCI_RECORDS_H
