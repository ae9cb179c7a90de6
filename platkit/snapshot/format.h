// The format of snapshot files, shared by the reader and the writer. nodal-snapshot(5) describes it in full.
#ifndef PLATKIT_SNAPSHOT_FORMAT_H
#define PLATKIT_SNAPSHOT_FORMAT_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platkit/status.h"

namespace platkit::snapshot {

// Magic and version. The key of the first record is the magic; its value is the version of the format, in decimal.
inline constexpr std::string_view kVersionKey = "nodal-snapshot";
inline constexpr uint32_t kVersion = 1;
inline constexpr std::string_view kVersionText = "1";

// Index checksums, in the second record: one for each hash table. They distinguish an absent entry from a lost one.
inline constexpr std::string_view kIndexCheckKey = "index-check";

// Keys of the format itself, which no entry may have.
inline constexpr std::string_view kReservedKeys[] = {kVersionKey, kIndexCheckKey};

constexpr bool IsReservedKey(std::string_view key) { return key == kVersionKey || key == kIndexCheckKey; }

// Keys of the header. Keys of nodes begin with a slash.
inline constexpr std::string_view kSignatureKey = "signature";
inline constexpr std::string_view kBuildKey = "build";
inline constexpr std::string_view kHostKey = "host";
inline constexpr std::string_view kTimeKey = "time";

constexpr bool IsHeaderKey(std::string_view key) {
  return key == kSignatureKey || key == kBuildKey || key == kHostKey || key == kTimeKey;
}

// Prefix of the key of an unreadable node. The node's path follows, and the value is the status of the failed read.
inline constexpr std::string_view kFailurePrefix = "failed:";
inline constexpr size_t kFailureBytes = 4;

constexpr bool IsFailureKey(std::string_view key) { return key.starts_with(kFailurePrefix); }

inline constexpr size_t kMaxKeyBytes = 4096;
inline constexpr size_t kMaxHeaderText = 255;  // bytes

// A constant database (cdb) has three parts: the contents (position and size of 256 hash tables), the records, and the
// hash tables.
inline constexpr uint32_t kTables = 256;
inline constexpr uint32_t kContentsBytes = kTables * 8;
inline constexpr uint32_t kRecordHead = 8;  // lengths of key and value
inline constexpr uint32_t kSlotBytes = 8;
inline constexpr uint64_t kMaxFileBytes = UINT32_MAX;

// The maximum number of consecutive used slots in a table. It bounds the number of slots that a look-up visits, even if
// the keys were chosen to collide. Half of the slots of a table are used, so the longest run grows with the logarithm
// of the file's size. With ordinary keys, it has about 100 slots in a file of 4 GB.
inline constexpr uint32_t kMaxRun = 256;

// The hash of a key. `start` is the hash of the bytes before `text`, so that the hash of a common prefix is computed
// once.
constexpr uint32_t Hash(std::string_view text, uint32_t start = 5381) {
  for (const char c : text)
    start = (start * 33) ^ static_cast<unsigned char>(c);
  return start;
}

enum class ValueType : uint8_t { kRecord = 'R', kIntegers = 'I', kTexts = 'T', kHeader = 'H', kChecks = 'C' };

// Whether this is the type of an entry. The index checksums are not an entry.
constexpr bool IsValueType(uint8_t byte) { return byte == 'R' || byte == 'I' || byte == 'T' || byte == 'H'; }

// In the file, a value is one byte of type, the payload, and a checksum of both.
struct Value {
  ValueType type = ValueType::kRecord;
  std::span<const std::byte> payload;

  std::string_view text() const { return {reinterpret_cast<const char *>(payload.data()), payload.size()}; }
};

// Returns the status of an unreadable node, from the value of its failure key. Returns HVC_SNAPSHOT_DAMAGED if the
// value does not contain the status of a failure.
HVC_ReturnStatus FailureIn(const Value &value);

inline constexpr size_t kCheckBytes = 4;
inline constexpr size_t kValueOverhead = 1 + kCheckBytes;

// Position of the second record and of its value, and length of its value.
inline constexpr uint32_t kIndexCheckPosition =
    kContentsBytes + kRecordHead + static_cast<uint32_t>(kVersionKey.size() + kVersionText.size());
inline constexpr uint32_t kIndexCheckValue =
    kIndexCheckPosition + kRecordHead + static_cast<uint32_t>(kIndexCheckKey.size());
inline constexpr uint32_t kIndexCheckBytes = kTables * 4 + kValueOverhead;

// The checksum of a value's type and payload, or of a hash table.
uint32_t Check(std::span<const std::byte> bytes);

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_FORMAT_H
