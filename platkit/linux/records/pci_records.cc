#include "platkit/linux/records/pci_records.h"

#include <algorithm>

namespace platkit {

HVC_ReturnStatus PciRecords::List(Arguments above, ParamList &list) {
  const Functions &functions = functions_.Get(files_.clock(), [this] {
    Functions read;
    read.status = ListPciFunctions(files_, read.addresses);
    return read;
  });
  if (functions.status != HVC_OK) return functions.status;
  const auto isBelow = [above](const PciAddress &address) {
    return std::equal(above.begin(), above.end(), address.begin(),
                      [](const NODAL_Param &argument, int64_t part) { return argument.integer == part; });
  };
  const size_t level = above.size();
  int64_t last = -1;
  for (const PciAddress &address : functions.addresses) {
    if (!isBelow(address) || address[level] == last) continue;
    last = address[level];
    const HVC_ReturnStatus status = list.Add(last);
    if (status != HVC_OK) return status;
  }
  return last < 0 && level > 0 ? HVC_NOT_FOUND : HVC_OK;
}

HVC_ReturnStatus PciRecords::Header(const PciAddress &function, PciConfigHeaderRecord &record) {
  PciIds ids;
  const HVC_ReturnStatus status = ReadPciIds(files_, function, ids);
  if (status != HVC_OK) return status;
  record.vendorID = ids.vendor;
  record.deviceID = ids.device;
  return HVC_OK;
}

HVC_ReturnStatus PciRecords::Read(const PciRegister &where, PciConfigRegRecord &record) {
  uint32_t value = 0;
  const HVC_ReturnStatus status = ReadPciRegister(files_, where, value);
  if (status == HVC_OK) record.value = value;
  return status;
}

HVC_ReturnStatus PciRecords::Write(const PciRegister &where, int64_t value) {
  return WritePciRegister(files_, where, value);
}

}  // namespace platkit
