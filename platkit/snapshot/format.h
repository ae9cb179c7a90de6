// The format of snapshot files, shared by the reader and the writer. nodal-snapshot(5) describes it in full.
#ifndef PLATKIT_SNAPSHOT_FORMAT_H
#define PLATKIT_SNAPSHOT_FORMAT_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace platkit::snapshot {

// The file's first record: its key tells a snapshot from other files, its value is the format's version in decimal.
inline constexpr std::string_view kVersionKey = "nodal-snapshot";
inline constexpr uint32_t kVersion = 1;
inline constexpr std::string_view kVersionText = "1";

// The second record: a check of each hash table, so that what is absent can be told from what was lost.
inline constexpr std::string_view kIndexCheckKey = "index-check";

// The keys of these two, which no entry may have.
inline constexpr std::string_view kReservedKeys[] = {kVersionKey, kIndexCheckKey};

constexpr bool IsReservedKey(std::string_view key) { return key == kVersionKey || key == kIndexCheckKey; }

// The keys of the header. Those of nodes begin with a slash.
inline constexpr std::string_view kSignatureKey = "signature";
inline constexpr std::string_view kBuildKey = "build";
inline constexpr std::string_view kHostKey = "host";
inline constexpr std::string_view kTimeKey = "time";

constexpr bool IsHeaderKey(std::string_view key) {
  return key == kSignatureKey || key == kBuildKey || key == kHostKey || key == kTimeKey;
}

// Before a node's path: what stands there is not the node, but the status with which it could not be read.
inline constexpr std::string_view kFailurePrefix = "failed:";
inline constexpr size_t kFailureBytes = 4;

constexpr bool IsFailureKey(std::string_view key) { return key.starts_with(kFailurePrefix); }

inline constexpr size_t kMaxKeyBytes = 4096;
inline constexpr size_t kMaxHeaderText = 255;

// A constant database: a table of contents of 256 hash tables, the records, the hash tables.
inline constexpr uint32_t kTables = 256;
inline constexpr uint32_t kContentsBytes = kTables * 8;
inline constexpr uint32_t kRecordHead = 8;  // the lengths of key and value
inline constexpr uint32_t kSlotBytes = 8;
inline constexpr uint64_t kMaxFileBytes = UINT32_MAX;

// The hash of a key, or of a key's end behind a start that has the hash `start`.
constexpr uint32_t Hash(std::string_view text, uint32_t start = 5381) {
  for (const char c : text)
    start = (start * 33) ^ static_cast<unsigned char>(c);
  return start;
}

enum class ValueType : uint8_t { kRecord = 'R', kIntegers = 'I', kTexts = 'T', kHeader = 'H', kChecks = 'C' };

// The types of entries; the checks of the index are no entry.
constexpr bool IsValueType(uint8_t byte) { return byte == 'R' || byte == 'I' || byte == 'T' || byte == 'H'; }

// A value in the file is its type in one byte, the payload, and a check over both.
struct Value {
  ValueType type = ValueType::kRecord;
  std::span<const std::byte> payload;

  std::string_view text() const { return {reinterpret_cast<const char *>(payload.data()), payload.size()}; }
};

inline constexpr size_t kCheckBytes = 4;
inline constexpr size_t kValueOverhead = 1 + kCheckBytes;

// Where the second record stands, and how long its value is.
inline constexpr uint32_t kIndexCheckPosition =
    kContentsBytes + kRecordHead + static_cast<uint32_t>(kVersionKey.size() + kVersionText.size());
inline constexpr uint32_t kIndexCheckValue =
    kIndexCheckPosition + kRecordHead + static_cast<uint32_t>(kIndexCheckKey.size());
inline constexpr uint32_t kIndexCheckBytes = kTables * 4 + kValueOverhead;

// The check of a value's type and payload, or of a hash table.
uint32_t Check(std::span<const std::byte> bytes);

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_FORMAT_H
