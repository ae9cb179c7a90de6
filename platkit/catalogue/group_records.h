// Units and meanings of the fields in the records of groups.
#ifndef PLATKIT_CATALOGUE_GROUP_RECORDS_H
#define PLATKIT_CATALOGUE_GROUP_RECORDS_H

#include "platkit/catalogue/record_table.h"

namespace platkit {

template <>
struct RecordTable<GroupNameRecord> {
  PLATKIT_TABLE_OF(GroupNameRecord);
  static constexpr Field kFields[] = {
      PLATKIT_TEXT(0, 64, name, "the group's name, terminated within the 64 bytes"),
  };
};

template <>
struct RecordTable<GroupTagRecord> {
  PLATKIT_TABLE_OF(GroupTagRecord);
  static constexpr Field kFields[] = {
      PLATKIT_TEXT(0, 8, tag, "the group's tag, not necessarily terminated"),
  };
};

template <>
struct RecordTable<ParentGroupIDRecord> {
  PLATKIT_TABLE_OF(ParentGroupIDRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, int64_t, parentGroupID, ID, "the parent group; -1 for the top of the hierarchy"),
  };
};

template <>
struct RecordTable<GroupFlagsRecord> {
  PLATKIT_TABLE_OF(GroupFlagsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint32_t, flags, FLAGS, "kind and properties of the group, as HVC_GROUP_... bits"),
  };
};

template <>
struct RecordTable<GroupLeaderIDRecord> {
  PLATKIT_TABLE_OF(GroupLeaderIDRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint32_t, leaderID, ID, "memory client of the world that leads a VM or user-world group"),
  };
};

template <>
struct RecordTable<GroupAllocRecord> {
  PLATKIT_TABLE_OF(GroupAllocRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint64_t, min, KB, "configured reservation"),
      PLATKIT_FIELD(8, uint64_t, max, KB, "configured limit; all bits set: unlimited"),
      PLATKIT_FIELD(16, int32_t, shares, COUNT, "configured shares"),
      PLATKIT_FIELD(20, uint64_t, minLimit, KB, "configured limit of the reservation; all bits set: unlimited"),
      PLATKIT_GAP(28, 4),
  };
};

template <>
struct RecordTable<GroupCapacityRecord> {
  PLATKIT_TABLE_OF(GroupCapacityRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 8),
      PLATKIT_FIELD(8, uint64_t, consumedResv, KB, "reservation consumed by the child groups"),
      PLATKIT_FIELD(16, uint64_t, availResv, KB, "reservation still available to the group"),
  };
};

template <>
struct RecordTable<GroupMemoryStatsRecord> {
  PLATKIT_TABLE_OF(GroupMemoryStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 4),
      PLATKIT_FIELD(4, uint64_t, memSize, KB,
                    "guest physical memory, or address space in use by a user world or the kernel"),
      PLATKIT_GAP(12, 8),
      PLATKIT_FIELD(20, uint64_t, ovhdResv, KB, "reserved overhead memory"),
      PLATKIT_FIELD(28, uint64_t, ovhd, KB, "consumed overhead memory"),
      PLATKIT_GAP(36, 24),
      PLATKIT_FIELD(60, uint64_t, sharedSaved, KB, "estimated memory saved by page sharing"),
      PLATKIT_GAP(68, 40),
      PLATKIT_FIELD(108, uint64_t, consumed, KB, "total memory consumed"),
      PLATKIT_GAP(116, 24),
      PLATKIT_FIELD(140, uint64_t, touched, KB, "estimated memory touched"),
      PLATKIT_GAP(148, 8),
      PLATKIT_FIELD(156, uint64_t, bMin, KB, "base reservation"),
      PLATKIT_FIELD(164, uint64_t, bMax, KB, "base limit"),
      PLATKIT_FIELD(172, uint64_t, bShares, COUNT, "base shares"),
      PLATKIT_FIELD(180, uint64_t, fShares, COUNT, "flattened base shares"),
      PLATKIT_FIELD(188, uint64_t, iMin, KB, "implicit reservation"),
      PLATKIT_FIELD(196, uint64_t, eMin, KB, "effective reservation"),
      PLATKIT_FIELD(204, uint64_t, bActive, KB, "base activeness"),
      PLATKIT_FIELD(212, uint64_t, allocTgt, KB, "allocation target"),
      PLATKIT_GAP(220, 16),
      PLATKIT_FIELD(236, uint64_t, mps, KB, "memory per share"),
      PLATKIT_FIELD(244, uint64_t, rMinPeak, KB, "peak of the requested reservation since the last reset"),
      PLATKIT_GAP(252, 8),
      PLATKIT_FIELD(260, uint64_t, eMinPeak, KB, "peak of the effective reservation since the last reset"),
      PLATKIT_GAP(268, 8),
      PLATKIT_FIELD(276, uint64_t, consumedPeak, KB, "peak of the consumed memory since the last reset"),
      PLATKIT_GAP(284, 8),
      PLATKIT_FIELD(292, uint64_t, memSizePeak, KB, "peak of memSize since the last reset"),
      PLATKIT_GAP(300, 8),
      PLATKIT_FIELD(308, uint8_t, throttlePct, PERCENT, "share of the time in which the guest may execute"),
      PLATKIT_FIELD(309, uint64_t, rMinChildPeak, KB,
                    "peak of the reservation requested for subgroups since the last reset"),
      PLATKIT_GAP(317, 3),
  };
};

}  // namespace platkit

#endif  // PLATKIT_CATALOGUE_GROUP_RECORDS_H
