// A slow reader of snapshots that is based on nodal-snapshot(5) alone. A fuzz target compares the library's reader with
// it. The two readers share no code except the checksum and the statuses.
#ifndef TESTS_FUZZ_PLAIN_SNAPSHOT_H
#define TESTS_FUZZ_PLAIN_SNAPSHOT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/status.h"

namespace fuzz {

struct PlainValue {
  HVC_ReturnStatus status;
  char type = 0;
  std::string_view payload = {};

  bool operator==(const PlainValue &) const = default;
};

class PlainSnapshot {
 public:
  struct Entry {
    std::string_view key;
    PlainValue value;
  };

  // `bytes` must stay valid.
  explicit PlainSnapshot(std::string_view bytes);

  // The status of opening the file. The other operations require HVC_OK.
  HVC_ReturnStatus status() const { return status_; }

  // The value that a look-up of the key finds.
  PlainValue Find(std::string_view key) const;

  // The entries in the order of the file, and whether the last entry ends exactly at the end of the records.
  const std::vector<Entry> &entries() const { return entries_; }
  bool endsWithEntry() const { return endsWithEntry_; }

  // Whether the order of the entries and the index are in the canonical form.
  bool isCanonical() const;

 private:
  struct Slot {
    uint32_t hash = 0;
    uint32_t record = 0;

    bool operator==(const Slot &) const = default;
  };
  struct Record {
    uint32_t position;
    std::string_view key;
    std::string_view value;
  };

  uint32_t Integer(uint64_t position) const;
  std::optional<Record> RecordAt(uint64_t position) const;
  HVC_ReturnStatus StatusOfVersion() const;
  bool ReadTables();
  bool ReadChecks();
  void ReadEntries();
  bool HasHeader() const;
  std::vector<std::vector<Slot>> ExpectedTables() const;

  std::string_view bytes_;
  HVC_ReturnStatus status_;
  uint64_t end_ = 0;  // the end of the records
  std::vector<std::vector<Slot>> tables_;
  std::vector<bool> isTableWhole_;
  std::vector<Entry> entries_;
  std::vector<uint32_t> positions_;  // the positions of the entries
  bool endsWithEntry_ = false;
};

}  // namespace fuzz

#endif  // TESTS_FUZZ_PLAIN_SNAPSHOT_H
