// A snapshot file, mapped and never loaded: a look-up touches a few cache lines, whatever the size of the file.
//
// The file may come from anyone. Every position and length in it is checked before use, and every value's check when it
// is read; nothing that stands in it can lead outside it.
#ifndef PLATKIT_SNAPSHOT_SNAPSHOT_FILE_H
#define PLATKIT_SNAPSHOT_SNAPSHOT_FILE_H

#include <cdb.h>

#include <bitset>
#include <string>
#include <string_view>

#include "platkit/catalogue.h"
#include "platkit/snapshot/format.h"
#include "platkit/status.h"

namespace platkit::snapshot {

struct Header {
  Definitions definitions;
  std::string host;
  std::string time;  // in UTC, as 2026-03-14T09:26:53Z
};

class SnapshotFile {
 public:
  SnapshotFile() = default;
  ~SnapshotFile();
  SnapshotFile(const SnapshotFile &) = delete;
  SnapshotFile &operator=(const SnapshotFile &) = delete;

  // Opens the file and checks what tells whether it is a snapshot, and whole: the version, the chain of its hash tables
  // and the header. The time that takes does not grow with the file. Statuses as for NODAL_UseCache.
  [[nodiscard]] HVC_ReturnStatus Open(const char *path);

  const Header &header() const { return header_; }

  // The value stored under `key`, good for as long as this object. HVC_NOT_FOUND: the file was written without it.
  // HVC_SNAPSHOT_DAMAGED: its value, or what leads to it, is not what was written.
  [[nodiscard]] HVC_ReturnStatus Find(std::string_view key, Value &value);

  // Look-ups that are about to come: what leads to a key of that hash, and what stands around a value that was found,
  // begin to be fetched from memory meanwhile.
  void ExpectKey(uint32_t hash) const;
  void ExpectNeighbours(const Value &value) const;

  // Reads the entries in the order in which they stand in the file, the version and the checks of the index aside.
  class Cursor {
   public:
    explicit Cursor(const SnapshotFile &file) : file_(file) {}

    // Goes to the next entry, at first to the file's first. HVC_NOT_FOUND: there is none. HVC_SNAPSHOT_DAMAGED: the
    // entry does not fit where the records are; none can be told behind it.
    [[nodiscard]] HVC_ReturnStatus Next();

    std::string_view key() const { return key_; }
    uint32_t position() const { return position_; }

    // HVC_SNAPSHOT_DAMAGED: the value is not what was written.
    [[nodiscard]] HVC_ReturnStatus Read(Value &value) const { return Decode(bytes_, value); }

   private:
    const SnapshotFile &file_;
    uint32_t position_ = 0;
    uint32_t next_ = kIndexCheckValue + kIndexCheckBytes;
    std::string_view key_;
    std::span<const std::byte> bytes_;
  };

  // The index, for those who verify it: whether a look-up for `key` ends at the record at `position`.
  bool IndexLeadsTo(std::string_view key, uint32_t position);
  bool TablesAreWhole();
  uint64_t CountUsedSlots() const;

 private:
  static HVC_ReturnStatus Decode(std::span<const std::byte> bytes, Value &value);

  uint32_t Integer(uint32_t position) const { return cdb_unpack(cdb_.cdb_mem + position); }
  HVC_ReturnStatus CheckVersion() const;
  bool IndexIsChained() const;
  bool IndexCheckIsWhole() const;
  bool TableIsWhole(uint32_t table);
  bool IsReallyAbsent(std::string_view key);
  std::span<const std::byte> Bytes(uint32_t position, uint32_t size) const;
  HVC_ReturnStatus ReadHeader();
  HVC_ReturnStatus ReadHeaderText(std::string_view key, std::string &text);

  cdb cdb_ = CDB_STATIC_INIT;
  std::bitset<kTables> tablesChecked_;
  Header header_;
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_SNAPSHOT_FILE_H
