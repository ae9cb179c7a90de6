// Units and meanings of the fields in the records of persistent memory.
#ifndef PLATKIT_CATALOGUE_PMEM_RECORDS_H
#define PLATKIT_CATALOGUE_PMEM_RECORDS_H

#include "platkit/catalogue/record_table.h"

namespace platkit {

template <>
struct RecordTable<PMemVolumeRecord> {
  PLATKIT_TABLE_OF(PMemVolumeRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 40),
  };
};

template <>
struct RecordTable<RegionStoreRecord> {
  PLATKIT_TABLE_OF(RegionStoreRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint64_t, allocatedBlocks, BLOCKS, "allocated"),
      PLATKIT_FIELD(8, uint64_t, reservedBlocks, BLOCKS, "reserved"),
      PLATKIT_FIELD(16, uint64_t, availableBlocks, BLOCKS, "available to reserve"),
      PLATKIT_FIELD(24, uint32_t, totalRegions, COUNT, "regions in the region store"),
      PLATKIT_FIELD(28, uint32_t, freeRegions, COUNT, "free regions in the region store"),
      PLATKIT_FIELD(32, uint64_t, totalBlocks, BLOCKS, "total"),
      PLATKIT_GAP(40, 8),
  };
};

template <>
struct RecordTable<RegionStoreCleanRecord> {
  PLATKIT_TABLE_OF(RegionStoreCleanRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint8_t, isClean, BOOL, "the region store is clean"),
  };
};

template <>
struct RecordTable<RegionRecord> {
  PLATKIT_TABLE_OF(RegionRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 37),
      PLATKIT_FIELD(37, uint64_t, size, BYTES, "size"),
      PLATKIT_FIELD(45, uint64_t, reservedBlocks, BLOCKS, "reserved"),
      PLATKIT_FIELD(53, uint32_t, flags, FLAGS, "state of the region, in HVC_REGION_... bits"),
      PLATKIT_FIELD(57, uint32_t, openCount, COUNT, "times opened"),
      PLATKIT_FIELD(61, uint64_t, allocatedBlocks, BLOCKS, "allocated"),
      PLATKIT_FIELD(69, uint16_t, managementTag, NUMBER, "management tag"),
      PLATKIT_FIELD(71, uint64_t, numaAffinityMask, FLAGS, "one bit per NUMA node"),
      PLATKIT_GAP(79, 1),
  };
};

template <>
struct RecordTable<ExtentRecord> {
  PLATKIT_TABLE_OF(ExtentRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint64_t, startBlock, NUMBER, "starting block"),
      PLATKIT_FIELD(8, uint64_t, endBlock, NUMBER, "ending block"),
      PLATKIT_FIELD(16, uint64_t, startMPN, NUMBER, "starting machine page number"),
      PLATKIT_FIELD(24, uint64_t, endMPN, NUMBER, "ending machine page number"),
      PLATKIT_FIELD(32, uint64_t, numaNode, NUMBER, "NUMA node of the extent"),
  };
};

template <>
struct RecordTable<RegionNumaRecord> {
  PLATKIT_TABLE_OF(RegionNumaRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint32_t, numaNode, NUMBER, "NUMA node"),
      PLATKIT_FIELD(4, uint64_t, allocatedBlocks, BLOCKS, "allocated on that node"),
  };
};

}  // namespace platkit

#endif  // PLATKIT_CATALOGUE_PMEM_RECORDS_H
