// Collects the entries of a snapshot and writes them to a file.
//
// The same entries give the same bytes, regardless of the order in which they are added. The file is an AtomicFile: it
// appears complete or not at all.
//
// If memory runs out, an operation throws std::bad_alloc or returns HVC_NO_MEMORY. The entry is then not added, or the
// file not written.
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
  // Statuses of this and the following operations: HVC_LIMIT_EXCEEDED: the entry exceeds the limits of the format, or
  // makes the file exceed them. HVC_BAD_PARAM: a text contains a NUL. HVC_ALREADY_EXISTS: the key is reserved.
  [[nodiscard]] HVC_ReturnStatus AddHeader(const Header &header);

  [[nodiscard]] HVC_ReturnStatus AddRecord(std::string_view path, std::span<const std::byte> record) {
    return Add(path, ValueType::kRecord, record);
  }
  [[nodiscard]] HVC_ReturnStatus AddIntegers(std::string_view path, std::span<const int64_t> integers) {
    return Add(path, ValueType::kIntegers, std::as_bytes(integers));
  }
  [[nodiscard]] HVC_ReturnStatus AddTexts(std::string_view path, std::span<const std::string> texts);

  // Adds the status of a record or list that could not be read. Readers of the snapshot get that status.
  [[nodiscard]] HVC_ReturnStatus AddFailure(std::string_view path, HVC_ReturnStatus failure);

  // Adds an entry of any type.
  [[nodiscard]] HVC_ReturnStatus Add(std::string_view key, ValueType type, std::span<const std::byte> payload);

  // Writes the snapshot to an empty file that is open for reading and writing.
  //
  // HVC_ALREADY_EXISTS: a key was added twice. HVC_LIMIT_EXCEEDED: so many keys collide that the index would have more
  // than kMaxRun consecutive used slots. Other statuses as for StatusOfErrno, with HVC_WRITE_ERROR for other errors.
  [[nodiscard]] HVC_ReturnStatus WriteTo(int fd);

  // Writes the snapshot to `path`, and replaces an existing file. A new file is readable by its owner only.
  //
  // Statuses as for WriteTo and AtomicFile.
  [[nodiscard]] HVC_ReturnStatus Write(const std::string &path);

 private:
  struct Entry {
    size_t start;  // offset of the key in bytes_; the value follows
    uint32_t keyLength;
    uint32_t valueLength;
  };

  std::string_view KeyOf(const Entry &entry) const {
    return std::string_view(bytes_).substr(entry.start, entry.keyLength);
  }
  HVC_ReturnStatus AddHeaderText(std::string_view key, std::string_view text);
  bool HasLongRun() const;
  bool WriteDatabase(int fd) const;

  std::string bytes_;
  std::vector<Entry> entries_;
  uint64_t fileBytes_ =
      uint64_t{kIndexCheckValue} + kIndexCheckBytes + 2 * (2 * uint64_t{kSlotBytes});  // the first two records
};

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_SNAPSHOT_WRITER_H
