// One sample of a host: the entries that a snapshot taken at the same time would have, without the header.
//
// A recorder uses the same object for many samples. Clear keeps the memory, so that only the first samples allocate.
//
// If memory runs out, an operation throws std::bad_alloc and leaves the sample unchanged.
#ifndef PLATKIT_HISTORY_SAMPLE_H
#define PLATKIT_HISTORY_SAMPLE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "platkit/snapshot/format.h"
#include "platkit/status.h"

namespace platkit::history {

using snapshot::ValueType;

// An entry of a sample. The sample owns the bytes.
struct Entry {
  std::string_view key;  // the path of a node, or snapshot::kFailurePrefix and a path
  ValueType type;        // kRecord, kIntegers or kTexts
  std::span<const std::byte> payload;

  bool HasSameKeyAndType(const Entry &other) const { return key == other.key && type == other.type; }
};

class Sample {
 public:
  void Clear();

  // Adds an entry, and returns the bytes of its payload for the caller to fill. They stay valid until the next Add.
  //
  // A sample accepts any key and size; SegmentWriter refuses entries that exceed the limits of the format.
  std::span<std::byte> Add(std::string_view key, ValueType type, size_t payloadBytes);
  void Add(std::string_view key, ValueType type, std::span<const std::byte> payload);

  // Sorts the entries by key. Takes one comparison per entry if they are already sorted.
  void Sort();

  size_t size() const { return items_.size(); }
  Entry operator[](size_t index) const;

  // Finds the entry with this key. Returns false if there is none. REQUIRES: the entries are sorted by key.
  bool Find(std::string_view key, Entry &entry) const;

  // The bytes of a payload, to change them in place.
  std::span<std::byte> MutablePayload(size_t index);

  // The total size of all keys and payloads, in bytes.
  size_t bytes() const { return bytes_.size(); }

  void Swap(Sample &other) noexcept {
    items_.swap(other.items_);
    bytes_.swap(other.bytes_);
  }

 private:
  struct Item {
    size_t start;  // of the key in bytes_; the payload follows
    uint32_t keyBytes;
    uint32_t payloadBytes;
    ValueType type;
  };

  std::string_view KeyOf(const Item &item) const;

  std::vector<Item> items_;
  std::vector<std::byte> bytes_;
};

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_SAMPLE_H
