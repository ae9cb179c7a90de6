// Units and meanings of the fields in the records of hardware.
#ifndef PLATKIT_CATALOGUE_HARDWARE_RECORDS_H
#define PLATKIT_CATALOGUE_HARDWARE_RECORDS_H

#include "platkit/catalogue/record_table.h"

namespace platkit {

template <>
struct RecordTable<CpuRecord> {
  PLATKIT_TABLE_OF(CpuRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 1),
      PLATKIT_FIELD(1, uint8_t, model, NUMBER, "processor model number"),
      PLATKIT_GAP(2, 198),
  };
};

template <>
struct RecordTable<PciConfigHeaderRecord> {
  PLATKIT_TABLE_OF(PciConfigHeaderRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint16_t, vendorID, ID, "vendor"),
      PLATKIT_FIELD(2, uint16_t, deviceID, ID, "device"),
      PLATKIT_GAP(4, 160),
  };
};

template <>
struct RecordTable<PciConfigRegRecord> {
  PLATKIT_TABLE_OF(PciConfigRegRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint32_t, value, NUMBER, "the register's value"),
  };
};

}  // namespace platkit

#endif  // PLATKIT_CATALOGUE_HARDWARE_RECORDS_H
