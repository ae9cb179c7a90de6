// The state of a chain of frames (a key frame and the delta frames after it): the entries of the last frame's sample.
//
// With a filter, the table keeps only the entries that the filter contains, and reads only the chunks that may concern
// these entries.
#ifndef PLATKIT_HISTORY_SAMPLE_TABLE_H
#define PLATKIT_HISTORY_SAMPLE_TABLE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platkit/history/payload_coding.h"
#include "platkit/history/sample.h"
#include "platkit/history/segment_file.h"
#include "platkit/status.h"

namespace platkit::history {

// Selects entries by their keys.
class KeyFilter {
 public:
  virtual ~KeyFilter() = default;

  virtual bool Contains(std::string_view key) const = 0;

  // False only if the filter contains no key from `first` up to, but not including, `end`. An empty `end` means no
  // upper bound.
  virtual bool MayContain(std::string_view first, std::string_view end) const = 0;
};

class SampleTable {
 public:
  // Selects the entries to keep; null selects all. Clears the table. The filter must live as long as the table uses it.
  void Select(const KeyFilter *filter);

  // Applies a frame. REQUIRES: it is a key frame, or follows the last applied frame.
  //
  // HVC_NOT_FOUND: the frame has no sample. HVC_SNAPSHOT_DAMAGED: the frame is damaged. HVC_IO_ERROR. After a failure,
  // the next frame must be a key frame.
  [[nodiscard]] HVC_ReturnStatus Apply(SegmentFile &file, const LoadedFrame &frame);

  // Stores the entries in a sample, sorted by key. HVC_SNAPSHOT_DAMAGED: two entries have the same key.
  [[nodiscard]] HVC_ReturnStatus CopyTo(Sample &sample) const;

  const HostHeader &host() const { return host_; }

 private:
  struct Slot {
    uint32_t id;
    uint32_t keyBytes;
    size_t key;      // in keys_
    size_t payload;  // in payloads_
    uint32_t payloadBytes;
    ValueType type;
    bool isLive;
  };

  void Clear();
  void Compact();
  void ForgetRemoved();
  HVC_ReturnStatus ApplyChunk(SegmentFile &file, const LoadedFrame &frame, size_t index);
  bool IsWanted(const LoadedFrame &frame, size_t index) const;
  bool ReadEntries(const ChunkPlace &place, std::span<const std::byte> raw);
  bool ReadChanges(const Chunk &chunk, std::span<const std::byte> raw);
  bool ReadChange(ByteReader &reader, Coding coding, Slot *slot);
  bool ReadRemoved(const Chunk &chunk, std::span<const std::byte> raw);
  bool Keep(uint32_t id, std::string_view key, ValueType type, Payload payload);
  bool Replace(Slot &slot, uint32_t payloadBytes, std::span<std::byte> &payload);
  void Remove(Slot &slot);
  Slot *FindSlot(uint32_t id);
  std::span<std::byte> PayloadOf(const Slot &slot) {
    return std::span(payloads_).subspan(slot.payload, slot.payloadBytes);
  }

  const KeyFilter *filter_ = nullptr;
  HostHeader host_;
  std::vector<Slot> slots_;  // in the order of their ids
  size_t hint_ = 0;          // the index after the slot that was found last
  std::string keys_;
  ByteVector payloads_;
  size_t maxBytes_ = 0;
  size_t liveBytes_ = 0;
  uint32_t liveEntries_ = 0;
  uint32_t nextId_ = 0;
  uint64_t chainBytes_ = 0;             // the size of the key frame and of the frames after it
  uint64_t movedBytes_ = 0;             // see MaxMovedBytes
  std::optional<std::string> lastKey_;  // the last key that was read from the frame's entries
  uint32_t nextChange_ = 0;             // the lowest number of an entry that later chunks of changes can have
};

// Reads the host of a key frame. Statuses as for SampleTable::Apply.
[[nodiscard]] HVC_ReturnStatus LoadHost(SegmentFile &file, const LoadedFrame &frame, HostHeader &host);

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_SAMPLE_TABLE_H
