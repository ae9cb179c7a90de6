#include "platkit/history/frame_encoder.h"

#include <zstd.h>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace platkit::history {
namespace {

// Raw sizes at which a chunk is complete. Larger chunks compress better; smaller ones let a reader that needs only a
// few entries skip more.
constexpr size_t kEntriesBytes = size_t{12} << 10;
constexpr size_t kChangesBytes = 768;

constexpr int kLevel = 3;

bool IsEntryType(ValueType type) {
  return type == ValueType::kRecord || type == ValueType::kIntegers || type == ValueType::kTexts;
}

void AppendChange(Payload payload, Payload before, ValueType type, ByteVector &coded, Coding &coding) {
  coded.clear();
  AppendVarint(coded, payload.size());
  if (type == ValueType::kRecord && payload.size() == before.size()) {
    coding = Coding::kWords;
    AppendWords(payload, before, coded);
    if (coded.size() <= payload.size()) return;
  } else {
    coding = Coding::kSplice;
    const Splice splice = FindSplice(payload, before);
    AppendVarint(coded, splice.start);
    AppendVarint(coded, splice.end);
    AppendBytes(coded, payload.subspan(splice.start, payload.size() - splice.start - splice.end));
    if (type != ValueType::kIntegers || coded.size() <= payload.size() / 4) return;
    ByteVector steps;
    AppendVarint(steps, payload.size());
    AppendSteps(payload, steps);
    if (steps.size() >= coded.size()) return;
    coding = Coding::kSteps;
    coded.swap(steps);
    return;
  }
  coding = Coding::kWhole;
  coded.clear();
  AppendVarint(coded, payload.size());
  AppendBytes(coded, payload);
}

}  // namespace

FrameEncoder::FrameEncoder() = default;
FrameEncoder::~FrameEncoder() = default;

void FrameEncoder::FreeContext::operator()(ZSTD_CCtx_s *context) const { ZSTD_freeCCtx(context); }

void FrameEncoder::Begin() {
  directory_.clear();
  body_.clear();
  newIds_.clear();
  added_.clear();
  changes_.clear();
  removed_.clear();
  chunks_ = 0;
  movedBytes_ = 0;
}

HVC_ReturnStatus FrameEncoder::EncodeKey(const HostHeader &host, const SampleInfo &info, const Sample &sample) {
  Begin();
  if (sample.size() > kMaxEntries) return HVC_LIMIT_EXCEEDED;
  newNextId_ = 0;
  newIds_.resize(sample.size());
  added_.resize(sample.size());
  std::iota(added_.begin(), added_.end(), size_t{0});
  raw_.clear();
  AppendHost(host, raw_);
  HVC_ReturnStatus status = AddChunk(ChunkKind::kHost, raw_, 0, 0);
  if (status == HVC_OK) status = AddEntries(sample, added_);
  return status == HVC_OK ? Finish(FrameKind::kKey, info, static_cast<uint32_t>(sample.size())) : status;
}

HVC_ReturnStatus FrameEncoder::EncodeDelta(const SampleInfo &info, const Sample &sample, const Sample &before) {
  Begin();
  if (sample.size() > kMaxEntries || nextId_ + sample.size() > kMaxEntries) return HVC_LIMIT_EXCEEDED;
  newNextId_ = nextId_;
  newIds_.resize(sample.size());
  Compare(sample, before);
  HVC_ReturnStatus status = AddRemoved();
  if (status == HVC_OK) status = AddChanges(sample, before);
  if (status == HVC_OK) status = AddEntries(sample, added_);
  return status == HVC_OK ? Finish(FrameKind::kDelta, info, static_cast<uint32_t>(sample.size())) : status;
}

HVC_ReturnStatus FrameEncoder::EncodeEnd(const SampleTime &time) {
  Begin();
  newNextId_ = 0;
  return Finish(FrameKind::kEnd, {.time = time}, 0);
}

void FrameEncoder::Compare(const Sample &sample, const Sample &before) {
  size_t old = 0;
  for (size_t i = 0; i < sample.size(); ++i) {
    const Entry entry = sample[i];
    while (old < before.size() && before[old].key < entry.key)
      removed_.push_back(ids_[old++]);
    const bool isKnown = old < before.size() && before[old].key == entry.key;
    if (isKnown && before[old].type == entry.type) {
      newIds_[i] = ids_[old];
      if (!std::ranges::equal(entry.payload, before[old].payload)) changes_.push_back({ids_[old], i, old});
      ++old;
    } else {
      if (isKnown) removed_.push_back(ids_[old++]);
      added_.push_back(i);
    }
  }
  removed_.insert(removed_.end(), ids_.begin() + static_cast<ptrdiff_t>(old), ids_.end());
  std::ranges::sort(removed_);
  if (!std::ranges::is_sorted(changes_, {}, &Change::id)) std::ranges::sort(changes_, {}, &Change::id);
}

HVC_ReturnStatus FrameEncoder::AddEntries(const Sample &sample, std::span<const size_t> indexes) {
  uint32_t firstId = newNextId_;
  const auto flush = [&] {
    if (firstId == newNextId_) return HVC_ReturnStatus{HVC_OK};
    const HVC_ReturnStatus status =
        AddChunk(ChunkKind::kEntries, entries_.raw(), firstId, newNextId_ - 1, entries_.firstKey());
    entries_.Clear();
    firstId = newNextId_;
    return status;
  };
  entries_.Clear();
  for (const size_t index : indexes) {
    const Entry entry = sample[index];
    if (entry.key.size() > snapshot::kMaxKeyBytes || entry.payload.size() > kMaxPayloadBytes) return HVC_LIMIT_EXCEEDED;
    if (!IsEntryType(entry.type)) return HVC_BAD_PARAM;
    entries_.Add(entry);
    newIds_[index] = newNextId_++;
    if (entries_.raw().size() < kEntriesBytes) continue;
    const HVC_ReturnStatus status = flush();
    if (status != HVC_OK) return status;
  }
  return flush();
}

HVC_ReturnStatus FrameEncoder::AddChanges(const Sample &sample, const Sample &before) {
  raw_.clear();
  uint32_t firstId = 0, lastId = 0;
  for (size_t i = 0; i < changes_.size(); ++i) {
    const Change &change = changes_[i];
    const Entry entry = sample[change.index];
    if (entry.payload.size() > kMaxPayloadBytes) return HVC_LIMIT_EXCEEDED;
    if (entry.payload.size() != before[change.before].payload.size()) movedBytes_ += entry.payload.size();
    if (raw_.empty()) firstId = lastId = change.id;
    Coding coding;
    AppendChange(entry.payload, before[change.before].payload, entry.type, coded_, coding);
    AppendVarint(raw_, uint64_t{change.id - lastId} << kCodingBits | static_cast<unsigned>(coding));
    AppendBytes(raw_, coded_);
    lastId = change.id;
    if (raw_.size() < kChangesBytes && i + 1 < changes_.size()) continue;
    const HVC_ReturnStatus status = AddChunk(ChunkKind::kChanges, raw_, firstId, lastId);
    if (status != HVC_OK) return status;
    raw_.clear();
  }
  return HVC_OK;
}

HVC_ReturnStatus FrameEncoder::AddRemoved() {
  if (removed_.empty()) return HVC_OK;
  raw_.clear();
  uint32_t last = removed_.front();
  for (const uint32_t id : removed_) {
    AppendVarint(raw_, id - last);
    last = id;
  }
  return AddChunk(ChunkKind::kRemoved, raw_, removed_.front(), removed_.back());
}

HVC_ReturnStatus FrameEncoder::AddChunk(ChunkKind kind, std::span<const std::byte> raw, uint32_t firstId,
                                        uint32_t lastId, std::string_view firstKey) {
  if (chunks_ == UINT16_MAX || raw.size() > kMaxChunkBytes) return HVC_LIMIT_EXCEEDED;
  if (context_ == nullptr) context_.reset(ZSTD_createCCtx());
  if (context_ == nullptr) return HVC_NO_MEMORY;
  compressed_.resize(ZSTD_compressBound(raw.size()));
  const size_t size =
      ZSTD_compressCCtx(context_.get(), compressed_.data(), compressed_.size(), raw.data(), raw.size(), kLevel);
  if (ZSTD_isError(size) != 0) return HVC_NO_MEMORY;
  const bool isSmaller = size < raw.size();
  const std::span<const std::byte> stored = isSmaller ? std::span<const std::byte>(compressed_).first(size) : raw;
  const Chunk chunk = {.storedBytes = static_cast<uint32_t>(stored.size()),
                       .rawBytes = static_cast<uint32_t>(raw.size()),
                       .check = snapshot::Check(stored),
                       .firstId = firstId,
                       .lastId = lastId,
                       .kind = kind,
                       .keyBytes = static_cast<uint16_t>(firstKey.size())};
  AppendBytes(directory_, std::as_bytes(std::span(&chunk, 1)));
  AppendBytes(directory_, std::as_bytes(std::span(firstKey)));
  AppendBytes(body_, stored);
  ++chunks_;
  return sizeof(FrameHead) + directory_.size() > kMaxHeadBytes || body_.size() > kMaxFrameBytes - kMaxHeadBytes
             ? HVC_LIMIT_EXCEEDED
             : HVC_OK;
}

HVC_ReturnStatus FrameEncoder::Finish(FrameKind kind, const SampleInfo &info, uint32_t entries) {
  FrameHead head = {};
  std::ranges::copy(kMagic, head.magic.begin());
  head.headBytes = static_cast<uint32_t>(sizeof head + directory_.size());
  head.frameBytes = static_cast<uint32_t>(head.headBytes + body_.size());
  head.version = kVersion;
  head.kind = kind;
  head.marks = info.marks;
  head.base = kind == FrameKind::kDelta ? base_ : 0;
  head.entries = entries;
  head.time = info.time;
  head.availableBytes = info.availableBytes;
  head.chunks = chunks_;
  head.nextId = newNextId_;
  frame_.clear();
  AppendBytes(frame_, std::as_bytes(std::span(&head, 1)));
  AppendBytes(frame_, directory_);
  AppendBytes(frame_, body_);
  Mask();
  return HVC_OK;
}

// Masks the frame so that the magic occurs only at its start. Without a mask, the magic could also be in a text of the
// host.
void FrameEncoder::Mask() {
  const auto rest = std::span(frame_).subspan(kMagic.size());
  const auto hasMagic = [&] {
    return std::string_view(reinterpret_cast<const char *>(rest.data()), rest.size()).find(kMagic) !=
           std::string_view::npos;
  };
  FrameHead head;
  std::memcpy(&head, frame_.data(), sizeof head);
  const auto headBytes = std::span(frame_).first(head.headBytes);
  for (;;) {
    // The checksum covers the unmasked head, including its `mask` field.
    head.check = 0;
    std::memcpy(frame_.data(), &head, sizeof head);
    head.check = snapshot::Check(headBytes.subspan(offsetof(FrameHead, headBytes)));
    std::memcpy(frame_.data(), &head, sizeof head);
    const auto apply = [&] {
      for (std::byte &byte : std::span(frame_).subspan(sizeof head))
        byte ^= std::byte{head.mask};
    };
    if (head.mask != 0) apply();
    if (!hasMagic() || head.mask == UINT8_MAX) return;
    if (head.mask != 0) apply();
    ++head.mask;
  }
}

void FrameEncoder::Accept() {
  FrameHead head;
  std::memcpy(&head, frame_.data(), sizeof head);
  base_ = head.check;
  nextId_ = newNextId_;
  ids_.swap(newIds_);
}

}  // namespace platkit::history
