// A mapped snapshot file. A look-up touches a few cache lines, whatever the size of the file.
//
// The file may be hostile. Every position and length in it is checked before use, and a value's checksum when the value
// is read, so that no file can make the library read outside of it.
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

  // Opens and maps the file. Checks the version, the header, and that the hash tables are contiguous and end with the
  // file. The time does not depend on the size of the file. Statuses as for NODAL_UseCache.
  [[nodiscard]] HVC_ReturnStatus Open(const char *path);

  const Header &header() const { return header_; }

  // Finds the value of `key`, which stays valid as long as this object.
  //
  // HVC_NOT_FOUND: the file was written without it. HVC_SNAPSHOT_DAMAGED: the value or its index entry is damaged.
  [[nodiscard]] HVC_ReturnStatus Find(std::string_view key, Value &value);

  // Prefetch data of later look-ups into the processor's cache: the index entry of a key with this hash, and the
  // records around a value.
  void PrefetchKey(uint32_t hash) const;
  void PrefetchAround(const Value &value) const;

  // Reads all entries in the order of the file, without the version and the index checksums.
  class Cursor {
   public:
    explicit Cursor(const SnapshotFile &file) : file_(file) {}

    // Moves to the next entry; the first call moves to the first entry.
    //
    // HVC_NOT_FOUND: the file has no more entries. HVC_SNAPSHOT_DAMAGED: the entry runs past the end of the records, so
    // later entries cannot be found.
    [[nodiscard]] HVC_ReturnStatus Next();

    std::string_view key() const { return key_; }
    uint32_t position() const { return position_; }

    // HVC_SNAPSHOT_DAMAGED: the value is damaged.
    [[nodiscard]] HVC_ReturnStatus Read(Value &value) const { return Decode(bytes_, value); }

   private:
    const SnapshotFile &file_;
    uint32_t position_ = 0;
    uint32_t next_ = kIndexCheckValue + kIndexCheckBytes;
    std::string_view key_;
    std::span<const std::byte> bytes_;
  };

  // For verification of the index. IndexLeadsTo: whether a look-up of `key` finds the record at `position`.
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
