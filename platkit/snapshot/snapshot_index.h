// The hash tables of a snapshot file.
//
// The table of contents and the index checksums are copied when the index is opened. Positions and lengths of records
// are loaded once and checked against these copies, so that a changing file cannot make a look-up read out of bounds or
// run forever.
#ifndef PLATKIT_SNAPSHOT_SNAPSHOT_INDEX_H
#define PLATKIT_SNAPSHOT_SNAPSHOT_INDEX_H

#include <array>
#include <bitset>
#include <cstdint>
#include <string_view>

#include "platkit/snapshot/format.h"
#include "platkit/snapshot/mapped_file.h"
#include "platkit/status.h"

namespace platkit::snapshot {

// The position and the lengths of a record, checked to be within the records of the file.
struct RecordPlace {
  uint32_t position;
  uint32_t keyLength;
  uint32_t valueLength;

  uint32_t keyStart() const { return position + kRecordHead; }
  uint32_t valueStart() const { return keyStart() + keyLength; }
  uint32_t end() const { return valueStart() + valueLength; }
};

class SnapshotIndex {
 public:
  explicit SnapshotIndex(const MappedFile &file) : file_(file) {}

  // Loads the table of contents and the index checksums. Checks that the hash tables are contiguous and end with the
  // file.
  //
  // HVC_SNAPSHOT_DAMAGED: a check failed, or the checksums are damaged.
  [[nodiscard]] HVC_ReturnStatus Open();

  // Finds the record of `key`.
  //
  // HVC_NOT_FOUND: the file was written without this key. HVC_SNAPSHOT_DAMAGED: the index is damaged, or keys collide
  // so much that the look-up visits more than kMaxRun slots.
  [[nodiscard]] HVC_ReturnStatus Find(std::string_view key, RecordPlace &place);

  // Loads the place of the record at this position.
  //
  // HVC_SNAPSHOT_DAMAGED: the record extends beyond the records of the file, or its key is too long.
  [[nodiscard]] HVC_ReturnStatus LoadPlace(uint32_t position, RecordPlace &place) const;

  // Prefetches the first slot of a look-up with this hash into the processor's cache.
  void Prefetch(uint32_t hash) const;

  uint32_t endOfRecords() const { return tables_[0].position; }

  // Checks of the whole index, in linear time. IsWhole: whether all hash tables match their checksums. HasLongRun:
  // whether a table has more than kMaxRun consecutive used slots.
  bool IsWhole();
  bool HasLongRun() const;
  uint64_t CountUsedSlots() const;

 private:
  struct Table {
    uint32_t position;
    uint32_t slots;

    uint32_t SlotPosition(uint32_t slot) const { return position + slot * kSlotBytes; }
  };

  bool IsChained() const;
  bool LoadChecks();
  bool IsWhole(uint32_t table);
  bool HasLongRun(const Table &table) const;
  bool IsReallyAbsent(uint32_t hash);
  bool KeyHasHash(uint32_t position, uint32_t hash) const;
  HVC_ReturnStatus Compare(uint32_t position, std::string_view key, RecordPlace &place) const;
  template <typename Visit>
  HVC_ReturnStatus VisitRecords(uint32_t hash, Visit visit) const;

  const MappedFile &file_;
  std::array<Table, kTables> tables_ = {};
  std::array<uint32_t, kTables> checks_ = {};
  std::bitset<kTables> isChecked_;
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_SNAPSHOT_INDEX_H
