// A mapped snapshot file. A look-up touches a few cache lines, whatever the size of the file.
//
// The file may be hostile, and it may change while it is read. Every position and length in it is checked before use.
// Values and keys are copied first; then the copy is checked and used. No file can make the library read outside of it,
// read forever, or end the process: a truncated file results in HVC_SNAPSHOT_DAMAGED.
#ifndef PLATKIT_SNAPSHOT_SNAPSHOT_FILE_H
#define PLATKIT_SNAPSHOT_SNAPSHOT_FILE_H

#include <array>
#include <string>
#include <string_view>

#include "platkit/catalogue.h"
#include "platkit/snapshot/format.h"
#include "platkit/snapshot/mapped_file.h"
#include "platkit/snapshot/snapshot_index.h"
#include "platkit/snapshot/value_buffer.h"
#include "platkit/status.h"

namespace platkit::snapshot {

struct Header {
  Definitions definitions;
  std::string host;
  std::string time;  // in UTC, such as 2026-03-14T09:26:53Z
};

class SnapshotFile {
 public:
  // Opens and maps the file. Checks the version, the header, and that the hash tables are contiguous and end with the
  // file. The time does not depend on the size of the file. Statuses as for NODAL_UseCache.
  [[nodiscard]] HVC_ReturnStatus Open(const char *path);

  const Header &header() const { return header_; }

  // HVC_SNAPSHOT_DAMAGED if the file was truncated, or a read of it failed, after it was opened.
  HVC_ReturnStatus status() const { return file_.status(); }

  // Finds the record of `key`.
  //
  // HVC_NOT_FOUND: the file was written without this key. HVC_SNAPSHOT_DAMAGED: the index is damaged, or too many keys
  // collide.
  [[nodiscard]] HVC_ReturnStatus Locate(std::string_view key, RecordPlace &place);

  // Reads the value of a located record. The value stays valid until the next Read or Find.
  //
  // HVC_SNAPSHOT_DAMAGED: the value is damaged. Throws std::bad_alloc.
  [[nodiscard]] HVC_ReturnStatus Read(const RecordPlace &place, Value &value) { return Read(place, buffer_, value); }

  // Locates and reads a value. Statuses as for Locate and Read.
  [[nodiscard]] HVC_ReturnStatus Find(std::string_view key, Value &value);

  // Checks a value of any size without copying it, and stores its type in `type`.
  //
  // HVC_SNAPSHOT_DAMAGED: the value is damaged.
  [[nodiscard]] HVC_ReturnStatus CheckValue(const RecordPlace &place, ValueType &type) const;

  // Prefetch data of later look-ups into the processor's cache. PrefetchKey fetches the first slot for a key with this
  // hash, and PrefetchAround the records around a value.
  void PrefetchKey(uint32_t hash) const { index_.Prefetch(hash); }
  void PrefetchAround(const RecordPlace &place) const;

  // Reads all entries in the order of the file, without the version and the index checksums.
  class Cursor {
   public:
    explicit Cursor(const SnapshotFile &file) : file_(file) {}

    // Moves to the next entry; the first call moves to the first entry.
    //
    // HVC_NOT_FOUND: the file has no more entries. HVC_SNAPSHOT_DAMAGED: the entry runs past the end of the records, so
    // later entries cannot be found; or the file was truncated.
    [[nodiscard]] HVC_ReturnStatus Next();

    // The key stays valid until Next.
    std::string_view key() const { return {key_.data(), place_.keyLength}; }
    uint32_t position() const { return place_.position; }

    // Reads the value, which stays valid until the next Read. Statuses as for SnapshotFile::Read.
    [[nodiscard]] HVC_ReturnStatus Read(Value &value) { return file_.Read(place_, buffer_, value); }

   private:
    const SnapshotFile &file_;
    uint32_t next_ = kIndexCheckValue + kIndexCheckBytes;
    RecordPlace place_ = {};
    std::array<char, kMaxKeyBytes> key_;
    ValueBuffer buffer_;
  };

  // Functions for the verification of the index. IndexLeadsTo: whether a look-up of `key` finds the record at
  // `position`. The others take linear time. TablesAreWhole: whether all hash tables match their checksums. HasLongRun:
  // whether so many keys collide that Locate refuses some of them.
  bool IndexLeadsTo(std::string_view key, uint32_t position);
  bool TablesAreWhole() { return index_.IsWhole(); }
  bool HasLongRun() const { return index_.HasLongRun(); }
  uint64_t CountUsedSlots() const { return index_.CountUsedSlots(); }

 private:
  static HVC_ReturnStatus Decode(std::span<const std::byte> bytes, Value &value);

  HVC_ReturnStatus Map(const char *path, uint64_t &size);
  HVC_ReturnStatus CheckVersion() const;
  HVC_ReturnStatus Read(const RecordPlace &place, ValueBuffer &buffer, Value &value) const;
  HVC_ReturnStatus ReadHeader();
  HVC_ReturnStatus ReadHeaderText(std::string_view key, std::string &text);

  MappedFile file_;
  SnapshotIndex index_{file_};
  ValueBuffer buffer_;
  Header header_;
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_SNAPSHOT_FILE_H
