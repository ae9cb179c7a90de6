#include "tests/fuzz/plain_snapshot.h"

#include <algorithm>
#include <functional>
#include <span>

#include "platkit/snapshot/format.h"

namespace fuzz {
namespace {

constexpr uint64_t kFirstRecord = 2048;
constexpr uint64_t kFirstEntry = 2071 + 8 + 11 + 1029;
constexpr size_t kLongestKey = 4096;
constexpr size_t kLongestRun = 256;

uint32_t HashOf(std::string_view key) {
  uint32_t hash = 5381;
  for (const char c : key)
    hash = static_cast<uint32_t>(uint64_t{hash} * 33) ^ static_cast<unsigned char>(c);
  return hash;
}

uint32_t ChecksumOf(std::string_view bytes) { return platkit::snapshot::Check(std::as_bytes(std::span(bytes))); }

uint32_t IntegerOf(std::string_view bytes) {
  uint32_t value = 0;
  for (int i = 3; i >= 0; --i)
    value = value << 8 | static_cast<unsigned char>(bytes[static_cast<size_t>(i)]);
  return value;
}

PlainValue Decoded(std::string_view value) {
  if (value.size() < 5) return {.status = HVC_SNAPSHOT_DAMAGED};
  const std::string_view checked = value.substr(0, value.size() - 4);
  if (ChecksumOf(checked) != IntegerOf(value.substr(checked.size()))) return {.status = HVC_SNAPSHOT_DAMAGED};
  if (std::string_view("RITH").find(value[0]) == std::string_view::npos) return {.status = HVC_SNAPSHOT_DAMAGED};
  return {.status = HVC_OK, .type = value[0], .payload = checked.substr(1)};
}

}  // namespace

PlainSnapshot::PlainSnapshot(std::string_view bytes) : bytes_(bytes), status_(StatusOfVersion()) {
  if (status_ != HVC_OK) return;
  status_ = HVC_SNAPSHOT_DAMAGED;
  if (!ReadTables() || !ReadChecks()) return;
  ReadEntries();
  if (HasHeader()) status_ = HVC_OK;
}

uint32_t PlainSnapshot::Integer(uint64_t position) const { return IntegerOf(bytes_.substr(position, 4)); }

HVC_ReturnStatus PlainSnapshot::StatusOfVersion() const {
  constexpr std::string_view kKey = "nodal-snapshot";
  constexpr uint64_t kValue = kFirstRecord + 8 + kKey.size();
  if (bytes_.size() < kValue + 1 || Integer(kFirstRecord) != kKey.size()) return HVC_NOT_A_SNAPSHOT;
  if (bytes_.substr(kFirstRecord + 8, kKey.size()) != kKey) return HVC_NOT_A_SNAPSHOT;
  const uint64_t length = Integer(kFirstRecord + 4);
  if (length == 0 || length > bytes_.size() - kValue) return HVC_SNAPSHOT_DAMAGED;
  uint64_t version = 0;
  for (const char digit : bytes_.substr(kValue, length)) {
    if (digit < '0' || digit > '9') return HVC_SNAPSHOT_DAMAGED;
    version = version * 10 + static_cast<uint64_t>(digit - '0');
    if (version == 0 || version > UINT32_MAX) return HVC_SNAPSHOT_DAMAGED;
  }
  return version == 1 ? HVC_OK : HVC_SNAPSHOT_TOO_NEW;
}

bool PlainSnapshot::ReadTables() {
  end_ = Integer(0);
  uint64_t position = end_;
  if (end_ < kFirstEntry) return false;
  for (uint64_t table = 0; table < 256; ++table) {
    const uint64_t slots = Integer(table * 8 + 4);
    if (Integer(table * 8) != position || position + slots * 8 > bytes_.size()) return false;
    tables_.emplace_back();
    for (uint64_t slot = 0; slot < slots; ++slot)
      tables_.back().push_back({Integer(position + slot * 8), Integer(position + slot * 8 + 4)});
    position += slots * 8;
  }
  return position == bytes_.size();
}

bool PlainSnapshot::ReadChecks() {
  const std::string_view record = bytes_.substr(2071, 8 + 11 + 1029);
  if (IntegerOf(record) != 11 || IntegerOf(record.substr(4)) != 1029) return false;
  const std::string_view value = record.substr(8 + 11);
  if (record.substr(8, 11) != "index-check" || value[0] != 'C') return false;
  if (ChecksumOf(value.substr(0, 1025)) != IntegerOf(value.substr(1025))) return false;
  for (uint64_t table = 0; table < 256; ++table) {
    const std::string_view slots = bytes_.substr(Integer(table * 8), tables_[table].size() * 8);
    isTableWhole_.push_back(ChecksumOf(slots) == IntegerOf(value.substr(1 + table * 4)));
  }
  return true;
}

std::optional<PlainSnapshot::Record> PlainSnapshot::RecordAt(uint64_t position) const {
  if (position < kFirstRecord || position + 8 > end_) return std::nullopt;
  const uint64_t keyLength = Integer(position), valueLength = Integer(position + 4);
  if (keyLength > kLongestKey || position + 8 + keyLength + valueLength > end_) return std::nullopt;
  return Record{.position = static_cast<uint32_t>(position),
                .key = bytes_.substr(position + 8, keyLength),
                .value = bytes_.substr(position + 8 + keyLength, valueLength)};
}

void PlainSnapshot::ReadEntries() {
  uint64_t position = kFirstEntry;
  while (const std::optional<Record> record = RecordAt(position)) {
    entries_.push_back({record->key, Decoded(record->value)});
    positions_.push_back(record->position);
    position += 8 + record->key.size() + record->value.size();
  }
  endsWithEntry_ = position == end_;
}

bool PlainSnapshot::HasHeader() const {
  return std::ranges::all_of(std::initializer_list<std::string_view>{"signature", "build", "host", "time"},
                             [this](std::string_view key) {
                               const PlainValue value = Find(key);
                               return value.status == HVC_OK && value.type == 'H' && value.payload.size() <= 255 &&
                                      value.payload.find('\0') == std::string_view::npos;
                             });
}

PlainValue PlainSnapshot::Find(std::string_view key) const {
  const uint32_t hash = HashOf(key);
  const std::vector<Slot> &table = tables_[hash % 256];
  bool mayBeLost = !isTableWhole_[hash % 256];
  size_t visited = 0;
  for (; visited < table.size(); ++visited) {
    const Slot &slot = table[(hash / 256 % table.size() + visited) % table.size()];
    if (slot.record == 0) break;
    if (visited > kLongestRun) return {.status = HVC_SNAPSHOT_DAMAGED};
    if (slot.hash != hash) continue;
    const std::optional<Record> record = RecordAt(slot.record);
    if (!record) return {.status = HVC_SNAPSHOT_DAMAGED};
    if (record->key == key) return Decoded(record->value);
    if (HashOf(record->key) != hash) mayBeLost = true;
  }
  if (visited > kLongestRun && visited < table.size()) mayBeLost = true;
  return {.status = mayBeLost ? HVC_SNAPSHOT_DAMAGED : HVC_NOT_FOUND};
}

// The hash tables that the library's writer would create for these records.
std::vector<std::vector<PlainSnapshot::Slot>> PlainSnapshot::ExpectedTables() const {
  std::vector<uint32_t> positions = {2048, 2071};
  positions.insert(positions.end(), positions_.begin(), positions_.end());
  std::vector<std::vector<Slot>> records(256), tables(256);
  for (const uint32_t position : positions) {
    const uint32_t hash = HashOf(RecordAt(position)->key);
    records[hash % 256].push_back({hash, position});
  }
  for (size_t table = 0; table < 256; ++table) {
    tables[table].resize(2 * records[table].size());
    for (const Slot &record : records[table]) {
      size_t slot = record.hash / 256 % tables[table].size();
      while (tables[table][slot].record != 0)
        slot = (slot + 1) % tables[table].size();
      tables[table][slot] = record;
    }
  }
  return tables;
}

bool PlainSnapshot::isCanonical() const {
  const bool isAscending =
      std::ranges::adjacent_find(entries_, std::ranges::greater_equal(), &Entry::key) == entries_.end();
  const bool isReserved = std::ranges::any_of(
      entries_, [](const Entry &entry) { return entry.key == "nodal-snapshot" || entry.key == "index-check"; });
  return endsWithEntry_ && isAscending && !isReserved && tables_ == ExpectedTables();
}

}  // namespace fuzz
