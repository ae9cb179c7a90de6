// Collects the entries of a snapshot and writes them as a file.
//
// The same content gives the same bytes, in whatever order it was added. The file appears whole or not at all: it is
// written beside the target, without a name where the file system can do that, synced, and renamed.
#ifndef PLATKIT_SNAPSHOT_SNAPSHOT_WRITER_H
#define PLATKIT_SNAPSHOT_SNAPSHOT_WRITER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/snapshot/format.h"
#include "platkit/snapshot/snapshot_file.h"
#include "platkit/status.h"

namespace platkit::snapshot {

class SnapshotWriter {
 public:
  // HVC_LIMIT_EXCEEDED, from this and the following: the entry is longer than the format allows, or the file would be.
  // HVC_BAD_PARAM: a text has a NUL in it. HVC_ALREADY_EXISTS: the key is one of the format's own.
  [[nodiscard]] HVC_ReturnStatus AddHeader(const Header &header);

  [[nodiscard]] HVC_ReturnStatus AddRecord(std::string_view path, std::span<const std::byte> record) {
    return Add(path, ValueType::kRecord, record);
  }
  [[nodiscard]] HVC_ReturnStatus AddIntegers(std::string_view path, std::span<const int64_t> integers) {
    return Add(path, ValueType::kIntegers, std::as_bytes(integers));
  }
  [[nodiscard]] HVC_ReturnStatus AddTexts(std::string_view path, std::span<const std::string> texts);

  // In the place of a record or list that could not be read: the status, which readers of the snapshot get in turn.
  [[nodiscard]] HVC_ReturnStatus AddFailure(std::string_view path, HVC_ReturnStatus failure);

  // An entry of any kind.
  [[nodiscard]] HVC_ReturnStatus Add(std::string_view key, ValueType type, std::span<const std::byte> payload);

  // Writes the snapshot to the file at `path`, in the place of one that stands there.
  //
  // HVC_ALREADY_EXISTS: a key was added twice, or there is something at `path` that is no regular file. HVC_NOT_FOUND:
  // there is no such folder. HVC_NO_PERMISSION. HVC_WRITE_ERROR: the disk is full, or failed.
  [[nodiscard]] HVC_ReturnStatus Write(const std::string &path);

 private:
  struct Entry {
    size_t start;  // of the key in bytes_, which the value follows
    uint32_t keyLength;
    uint32_t valueLength;
  };

  std::string_view KeyOf(const Entry &entry) const {
    return std::string_view(bytes_).substr(entry.start, entry.keyLength);
  }
  HVC_ReturnStatus AddHeaderText(std::string_view key, std::string_view text);
  bool WriteDatabase(int fd) const;

  std::string bytes_;
  std::vector<Entry> entries_;
  uint64_t fileBytes_ =
      uint64_t{kIndexCheckValue} + kIndexCheckBytes + 2 * (2 * uint64_t{kSlotBytes});  // the first two records
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_SNAPSHOT_WRITER_H
