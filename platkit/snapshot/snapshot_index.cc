#include "platkit/snapshot/snapshot_index.h"

#include <algorithm>
#include <cstring>

namespace platkit::snapshot {

HVC_ReturnStatus SnapshotIndex::Open() {
  static_assert(sizeof tables_ == kContentsBytes);
  file_.Read(0, std::as_writable_bytes(std::span(tables_)));
  return IsChained() && LoadChecks() ? HVC_OK : HVC_SNAPSHOT_DAMAGED;
}

// The first hash table starts at the end of the records, and every other table at the end of the previous one. The last
// table ends at the end of the file. This check rejects a truncated or extended file.
bool SnapshotIndex::IsChained() const {
  uint64_t end = endOfRecords();
  if (end < kIndexCheckValue + kIndexCheckBytes) return false;
  for (const Table &table : tables_) {
    if (table.position != end) return false;
    end += uint64_t{table.slots} * kSlotBytes;
    if (end > file_.size()) return false;
  }
  return end == file_.size();
}

bool SnapshotIndex::LoadChecks() {
  struct {
    char head[kRecordHead];
    char key[kIndexCheckKey.size()];
    std::byte value[kIndexCheckBytes];
  } record;
  static_assert(sizeof record == kIndexCheckValue + kIndexCheckBytes - kIndexCheckPosition);
  file_.Read(kIndexCheckPosition, std::as_writable_bytes(std::span(&record, 1)));
  constexpr uint32_t kLengths[] = {kIndexCheckKey.size(), kIndexCheckBytes};
  const std::span<const std::byte> checked = std::span(record.value).first(kIndexCheckBytes - kCheckBytes);
  const uint32_t check = Check(checked);
  if (std::memcmp(record.head, kLengths, sizeof kLengths) != 0) return false;
  if (std::string_view(record.key, sizeof record.key) != kIndexCheckKey) return false;
  if (checked[0] != std::byte{static_cast<uint8_t>(ValueType::kChecks)}) return false;
  if (std::memcmp(&check, record.value + checked.size(), sizeof check) != 0) return false;
  std::memcpy(checks_.data(), record.value + 1, sizeof checks_);
  return true;
}

// Calls `visit` with the position of each record that has this hash in its slot, until the result is not HVC_NOT_FOUND.
template <typename Visit>
HVC_ReturnStatus SnapshotIndex::VisitRecords(uint32_t hash, Visit visit) const {
  const Table &table = tables_[hash % kTables];
  if (table.slots == 0) return HVC_NOT_FOUND;
  uint32_t slot = hash / kTables % table.slots;
  const uint32_t maxVisits = std::min(table.slots, kMaxRun + 1);
  for (uint32_t visits = 0; visits < maxVisits; ++visits) {
    const uint32_t record = file_.Integer(table.SlotPosition(slot) + 4);
    if (record == 0) return HVC_NOT_FOUND;
    if (file_.Integer(table.SlotPosition(slot)) == hash) {
      const HVC_ReturnStatus status = visit(record);
      if (status != HVC_NOT_FOUND) return status;
    }
    if (++slot == table.slots) slot = 0;
  }
  return maxVisits == table.slots ? HVC_NOT_FOUND : HVC_SNAPSHOT_DAMAGED;
}

HVC_ReturnStatus SnapshotIndex::Find(std::string_view key, RecordPlace &place) {
  const uint32_t hash = Hash(key);
  const auto compare = [&](uint32_t position) { return Compare(position, key, place); };
  const HVC_ReturnStatus status = VisitRecords(hash, compare);
  return status == HVC_NOT_FOUND && !IsReallyAbsent(hash) ? HVC_SNAPSHOT_DAMAGED : status;
}

HVC_ReturnStatus SnapshotIndex::Compare(uint32_t position, std::string_view key, RecordPlace &place) const {
  const HVC_ReturnStatus status = LoadPlace(position, place);
  if (status != HVC_OK) return status;
  if (place.keyLength != key.size()) return HVC_NOT_FOUND;
  const auto stored = file_.Unstable(place.keyStart(), place.keyLength);
  return std::memcmp(stored.data(), key.data(), key.size()) == 0 ? HVC_OK : HVC_NOT_FOUND;
}

HVC_ReturnStatus SnapshotIndex::LoadPlace(uint32_t position, RecordPlace &place) const {
  const uint32_t end = endOfRecords();
  if (position < kContentsBytes || position > end - kRecordHead) return HVC_SNAPSHOT_DAMAGED;
  place = {.position = position, .keyLength = file_.Integer(position), .valueLength = file_.Integer(position + 4)};
  const uint32_t room = end - kRecordHead - position;
  const bool fits =
      place.keyLength <= kMaxKeyBytes && place.keyLength <= room && place.valueLength <= room - place.keyLength;
  return fits ? HVC_OK : HVC_SNAPSHOT_DAMAGED;
}

// A look-up also fails if a slot or a key is damaged. The table's checksum rules out a damaged slot. A damaged key is
// ruled out if the key of each visited record has the hash that its slot contains.
bool SnapshotIndex::IsReallyAbsent(uint32_t hash) {
  const auto check = [&](uint32_t position) {
    return KeyHasHash(position, hash) ? HVC_NOT_FOUND : HVC_SNAPSHOT_DAMAGED;
  };
  return IsWhole(hash % kTables) && VisitRecords(hash, check) == HVC_NOT_FOUND;
}

bool SnapshotIndex::KeyHasHash(uint32_t position, uint32_t hash) const {
  RecordPlace place;
  if (LoadPlace(position, place) != HVC_OK) return false;
  const auto key = file_.Unstable(place.keyStart(), place.keyLength);
  return Hash({reinterpret_cast<const char *>(key.data()), key.size()}) == hash;
}

void SnapshotIndex::Prefetch(uint32_t hash) const {
  const Table &table = tables_[hash % kTables];
  if (table.slots == 0) return;
  __builtin_prefetch(file_.Unstable(table.SlotPosition(hash / kTables % table.slots), kSlotBytes).data());
}

// Checks each table until its checksum was right once.
bool SnapshotIndex::IsWhole(uint32_t table) {
  if (isChecked_[table]) return true;
  const auto bytes = file_.Unstable(tables_[table].position, tables_[table].slots * kSlotBytes);
  isChecked_[table] = Check(bytes) == checks_[table];
  return isChecked_[table];
}

bool SnapshotIndex::IsWhole() {
  for (uint32_t table = 0; table < kTables; ++table) {
    if (!IsWhole(table)) return false;
  }
  return true;
}

bool SnapshotIndex::HasLongRun() const {
  return std::ranges::any_of(tables_, [this](const Table &table) { return HasLongRun(table); });
}

// A run of used slots can wrap around to the start of the table.
bool SnapshotIndex::HasLongRun(const Table &table) const {
  if (table.slots <= kMaxRun) return false;
  uint32_t run = 0;
  for (uint64_t i = 0; i < uint64_t{table.slots} + kMaxRun; ++i) {
    const auto slot = static_cast<uint32_t>(i < table.slots ? i : i - table.slots);
    run = file_.Integer(table.SlotPosition(slot) + 4) == 0 ? 0 : run + 1;
    if (run > kMaxRun) return true;
  }
  return false;
}

uint64_t SnapshotIndex::CountUsedSlots() const {
  uint64_t used = 0;
  for (uint32_t slot = endOfRecords(); slot < file_.size(); slot += kSlotBytes) {
    if (file_.Integer(slot) != 0 || file_.Integer(slot + 4) != 0) ++used;
  }
  return used;
}

}  // namespace platkit::snapshot
