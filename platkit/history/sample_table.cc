#include "platkit/history/sample_table.h"

#include <algorithm>
#include <cstring>

#include "platkit/history/entry_chunk.h"

namespace platkit::history {

void SampleTable::Select(const KeyFilter *filter) {
  filter_ = filter;
  Clear();
}

void SampleTable::Clear() {
  slots_.clear();
  keys_.clear();
  payloads_.clear();
  hint_ = 0;
  liveBytes_ = 0;
  liveEntries_ = 0;
  nextId_ = 0;
  chainBytes_ = 0;
  movedBytes_ = 0;
}

HVC_ReturnStatus SampleTable::Apply(SegmentFile &file, const LoadedFrame &frame) {
  if (frame.head.kind == FrameKind::kEnd) return HVC_NOT_FOUND;
  maxBytes_ = MaxSampleBytes(file.size());
  nextChange_ = 0;
  lastKey_.reset();
  if (frame.head.kind == FrameKind::kKey) {
    Clear();
    const HVC_ReturnStatus status = LoadHost(file, frame, host_);
    if (status != HVC_OK) return status;
  }
  chainBytes_ += frame.head.frameBytes;
  for (size_t i = frame.head.kind == FrameKind::kKey ? 1 : 0; i < frame.chunks.size(); ++i) {
    const HVC_ReturnStatus status = ApplyChunk(file, frame, i);
    if (status != HVC_OK) return status;
  }
  Compact();
  const bool isComplete = filter_ != nullptr || (liveEntries_ == frame.head.entries && nextId_ == frame.head.nextId);
  return isComplete ? HVC_OK : HVC_SNAPSHOT_DAMAGED;
}

HVC_ReturnStatus LoadHost(SegmentFile &file, const LoadedFrame &frame, HostHeader &host) {
  if (frame.chunks.empty() || frame.chunks.front().chunk.kind != ChunkKind::kHost) return HVC_SNAPSHOT_DAMAGED;
  std::span<const std::byte> raw;
  const HVC_ReturnStatus status = file.LoadChunk(frame, frame.chunks.front(), raw);
  if (status != HVC_OK) return status;
  return ReadHost(raw, host) ? HVC_OK : HVC_SNAPSHOT_DAMAGED;
}

bool SampleTable::IsWanted(const LoadedFrame &frame, size_t index) const {
  if (filter_ == nullptr) return true;
  const Chunk &chunk = frame.chunks[index].chunk;
  if (chunk.kind == ChunkKind::kEntries) {
    const bool isLast = index + 1 == frame.chunks.size() || frame.chunks[index + 1].chunk.kind != ChunkKind::kEntries;
    return filter_->MayContain(frame.chunks[index].firstKey, isLast ? "" : frame.chunks[index + 1].firstKey);
  }
  const auto first = std::ranges::lower_bound(slots_, chunk.firstId, {}, &Slot::id);
  return first != slots_.end() && first->id <= chunk.lastId;
}

HVC_ReturnStatus SampleTable::ApplyChunk(SegmentFile &file, const LoadedFrame &frame, size_t index) {
  if (!IsWanted(frame, index)) return HVC_OK;
  const Chunk &chunk = frame.chunks[index].chunk;
  std::span<const std::byte> raw;
  const HVC_ReturnStatus status = file.LoadChunk(frame, frame.chunks[index], raw);
  if (status != HVC_OK) return status;
  bool isValid = false;
  switch (chunk.kind) {
    case ChunkKind::kEntries: isValid = ReadEntries(frame.chunks[index], raw); break;
    case ChunkKind::kChanges: isValid = ReadChanges(chunk, raw); break;
    case ChunkKind::kRemoved: isValid = ReadRemoved(chunk, raw); break;
    case ChunkKind::kHost: break;
  }
  return isValid ? HVC_OK : HVC_SNAPSHOT_DAMAGED;
}

bool SampleTable::ReadEntries(const ChunkPlace &place, std::span<const std::byte> raw) {
  const Chunk &chunk = place.chunk;
  if (filter_ == nullptr ? chunk.firstId != nextId_ : chunk.firstId < nextId_) return false;
  EntryChunkReader reader(raw);
  uint64_t id = chunk.firstId;
  for (; !reader.isAtEnd(); ++id) {
    Entry entry;
    if (id > chunk.lastId || !reader.Next(entry)) return false;
    // A filter selects chunks by the keys in the directory, so these keys must be right.
    if (id == chunk.firstId && entry.key != place.firstKey) return false;
    if (lastKey_ && entry.key <= *lastKey_) return false;
    lastKey_ = entry.key;
    const bool isKept = filter_ == nullptr || filter_->Contains(entry.key);
    if (isKept && !Keep(static_cast<uint32_t>(id), entry.key, entry.type, entry.payload)) return false;
  }
  nextId_ = chunk.lastId + 1;
  return id == nextId_;
}

bool SampleTable::Keep(uint32_t id, std::string_view key, ValueType type, Payload payload) {
  liveBytes_ += key.size() + payload.size();
  if (liveBytes_ > maxBytes_ || slots_.size() == kMaxEntries) return false;
  slots_.push_back({.id = id,
                    .keyBytes = static_cast<uint32_t>(key.size()),
                    .key = keys_.size(),
                    .payload = payloads_.size(),
                    .payloadBytes = static_cast<uint32_t>(payload.size()),
                    .type = type,
                    .isLive = true});
  keys_ += key;
  AppendBytes(payloads_, payload);
  ++liveEntries_;
  return true;
}

// Chunks list their entries in ascending order, so an entry is often near the previous one.
SampleTable::Slot *SampleTable::FindSlot(uint32_t id) {
  constexpr size_t kNear = 8;
  for (size_t i = hint_; i < std::min(slots_.size(), hint_ + kNear); ++i) {
    if (slots_[i].id != id) continue;
    hint_ = i + 1;
    return &slots_[i];
  }
  const auto found = std::ranges::lower_bound(slots_, id, {}, &Slot::id);
  if (found == slots_.end() || found->id != id) return nullptr;
  hint_ = static_cast<size_t>(found - slots_.begin()) + 1;
  return &*found;
}

// Each change is a varint and the coded payload. The lowest bits of the varint are the coding. The others are the
// difference between the numbers of this entry and the previous one of the chunk, or 0 for the first entry.
bool SampleTable::ReadChanges(const Chunk &chunk, std::span<const std::byte> raw) {
  if (chunk.firstId < nextChange_) return false;
  nextChange_ = chunk.lastId + 1;
  ByteReader reader(raw);
  uint64_t id = chunk.firstId;
  for (bool isFirst = true; !reader.isAtEnd(); isFirst = false) {
    uint64_t form;
    if (!reader.Varint(form)) return false;
    const uint64_t distance = form >> kCodingBits;
    if ((distance == 0) != isFirst || distance > chunk.lastId - id) return false;
    id += distance;
    const auto coding = static_cast<Coding>(form & ((1u << kCodingBits) - 1));
    Slot *slot = FindSlot(static_cast<uint32_t>(id));
    if (filter_ == nullptr && slot == nullptr) return false;
    if (slot != nullptr && !slot->isLive) return false;
    if (!ReadChange(reader, coding, slot)) return false;
  }
  return id == chunk.lastId;
}

// `slot` is null for an entry that the filter does not contain.
bool SampleTable::ReadChange(ByteReader &reader, Coding coding, Slot *slot) {
  uint32_t size;
  if (!reader.Varint(kMaxPayloadBytes, size)) return false;
  if (coding == Coding::kWords) {
    if (slot == nullptr) return SkipWords(reader, size);
    return size == slot->payloadBytes && ApplyWords(reader, PayloadOf(*slot));
  }
  if (coding == Coding::kSteps) {
    if (!reader.HasBytes(size / 8)) return false;
    if (slot == nullptr) return SkipSteps(reader, size);
    std::span<std::byte> payload;
    return Replace(*slot, size, payload) && ReadSteps(reader, payload);
  }
  uint32_t start = 0, end = 0;
  if (coding == Coding::kSplice && (!reader.Varint(size, start) || !reader.Varint(size - start, end))) return false;
  Payload middle;
  if (!reader.Bytes(size - start - end, middle)) return false;
  if (slot == nullptr) return true;
  if (coding == Coding::kSplice && (start > slot->payloadBytes || end > slot->payloadBytes - start)) return false;
  const size_t oldEnd = slot->payload + slot->payloadBytes - end;
  const size_t oldStart = slot->payload;
  std::span<std::byte> payload;
  if (!Replace(*slot, size, payload)) return false;
  if (slot->payload != oldStart) {
    std::memcpy(payload.data(), payloads_.data() + oldStart, start);
    std::memcpy(payload.data() + size - end, payloads_.data() + oldEnd, end);
  }
  std::ranges::copy(middle, payload.begin() + start);
  return true;
}

// Changes the size of the payload. If the size differs, the payload moves to a new place; the bytes at the old place
// stay until Compact. Returns false if a limit is exceeded.
bool SampleTable::Replace(Slot &slot, uint32_t payloadBytes, std::span<std::byte> &payload) {
  if (payloadBytes != slot.payloadBytes) {
    liveBytes_ += payloadBytes;
    liveBytes_ -= slot.payloadBytes;
    movedBytes_ += payloadBytes;
    if (liveBytes_ > maxBytes_ || movedBytes_ > MaxMovedBytes(chainBytes_)) return false;
    slot.payload = payloads_.size();
    slot.payloadBytes = payloadBytes;
    payloads_.resize(payloads_.size() + payloadBytes);
  }
  payload = PayloadOf(slot);
  return true;
}

// Moves the payloads together if much of their memory is unused, and forgets removed entries if they take much memory.
void SampleTable::Compact() {
  constexpr size_t kSmall = size_t{1} << 20;
  if (keys_.size() > kSmall + liveBytes_ + liveBytes_ / 4 || slots_.size() > kSmall / sizeof(Slot) + 2 * liveEntries_)
    ForgetRemoved();
  if (payloads_.size() <= kSmall + liveBytes_ + liveBytes_ / 4) return;
  ByteVector payloads;
  payloads.reserve(liveBytes_);
  for (Slot &slot : slots_) {
    const size_t start = payloads.size();
    if (slot.isLive) AppendBytes(payloads, PayloadOf(slot));
    slot.payload = start;
    if (!slot.isLive) slot.payloadBytes = 0;
  }
  payloads_.swap(payloads);
}

void SampleTable::ForgetRemoved() {
  std::erase_if(slots_, [](const Slot &slot) { return !slot.isLive; });
  std::string keys;
  for (Slot &slot : slots_) {
    const size_t start = keys.size();
    keys.append(keys_, slot.key, slot.keyBytes);
    slot.key = start;
  }
  keys_.swap(keys);
  hint_ = 0;
}

// Each removed entry is a varint: the difference between its number and the previous one, or 0 for the first entry.
bool SampleTable::ReadRemoved(const Chunk &chunk, std::span<const std::byte> raw) {
  ByteReader reader(raw);
  uint64_t id = chunk.firstId;
  for (bool isFirst = true; !reader.isAtEnd(); isFirst = false) {
    uint32_t distance;
    if (!reader.Varint(chunk.lastId - id, distance) || (distance == 0) != isFirst) return false;
    id += distance;
    Slot *slot = FindSlot(static_cast<uint32_t>(id));
    if (slot == nullptr ? filter_ == nullptr : !slot->isLive) return false;
    if (slot != nullptr) Remove(*slot);
  }
  return id == chunk.lastId;
}

void SampleTable::Remove(Slot &slot) {
  slot.isLive = false;
  liveBytes_ -= slot.keyBytes + slot.payloadBytes;
  --liveEntries_;
}

HVC_ReturnStatus SampleTable::CopyTo(Sample &sample) const {
  sample.Clear();
  for (const Slot &slot : slots_) {
    if (!slot.isLive) continue;
    const Payload payload = std::span(payloads_).subspan(slot.payload, slot.payloadBytes);
    sample.Add(std::string_view(keys_).substr(slot.key, slot.keyBytes), slot.type, payload);
  }
  sample.Sort();
  for (size_t i = 1; i < sample.size(); ++i) {
    if (sample[i - 1].key == sample[i].key) return HVC_SNAPSHOT_DAMAGED;
  }
  return HVC_OK;
}

}  // namespace platkit::history
