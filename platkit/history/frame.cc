#include "platkit/history/frame.h"

#include <algorithm>
#include <cstring>

namespace platkit::history {
namespace {

constexpr size_t kUncheckedBytes = offsetof(FrameHead, headBytes);

bool IsFrameKind(FrameKind kind) {
  return kind == FrameKind::kKey || kind == FrameKind::kDelta || kind == FrameKind::kEnd;
}

bool IsChunkKind(ChunkKind kind) {
  return kind == ChunkKind::kHost || kind == ChunkKind::kEntries || kind == ChunkKind::kChanges ||
         kind == ChunkKind::kRemoved;
}

bool IsPossible(const Chunk &chunk) {
  return IsChunkKind(chunk.kind) && chunk.rawBytes <= kMaxChunkBytes && chunk.storedBytes <= chunk.rawBytes &&
         chunk.storedBytes > 0 && chunk.firstId <= chunk.lastId && chunk.lastId < kMaxEntries &&
         chunk.keyBytes <= snapshot::kMaxKeyBytes;
}

bool HasPossibleSizes(const FrameHead &head) {
  return head.headBytes >= sizeof head && head.headBytes <= kMaxHeadBytes && head.headBytes <= head.frameBytes &&
         head.frameBytes <= kMaxFrameBytes;
}

void AppendText(std::string_view text, ByteVector &bytes) {
  AppendVarint(bytes, text.size());
  AppendBytes(bytes, std::as_bytes(std::span(text)));
}

bool ReadText(ByteReader &reader, std::string &text) {
  uint32_t size;
  std::span<const std::byte> bytes;
  if (!reader.Varint(kMaxHostText, size) || !reader.Bytes(size, bytes)) return false;
  text.assign(reinterpret_cast<const char *>(bytes.data()), bytes.size());
  return text.find('\0') == std::string::npos;
}

}  // namespace

bool IsPossibleHead(const FrameHead &head, uint64_t fileBytes) {
  return std::string_view(head.magic.data(), head.magic.size()) == kMagic && HasPossibleSizes(head) &&
         head.frameBytes <= fileBytes;
}

bool IsPossibleCutFrame(std::span<const std::byte> bytes, uint64_t fileBytes) {
  FrameHead head = {};
  std::memcpy(&head, bytes.data(), std::min(bytes.size(), sizeof head));
  const size_t magicBytes = std::min(bytes.size(), kMagic.size());
  if (std::string_view(head.magic.data(), magicBytes) != kMagic.substr(0, magicBytes)) return false;
  return bytes.size() < sizeof head || (HasPossibleSizes(head) && head.frameBytes > fileBytes);
}

bool UnmaskAndCheck(std::span<std::byte> bytes) {
  FrameHead head;
  std::memcpy(&head, bytes.data(), sizeof head);
  for (std::byte &byte : bytes.subspan(sizeof head))
    byte ^= std::byte{head.mask};
  return snapshot::Check(bytes.subspan(kUncheckedBytes)) == head.check;
}

bool ReadDirectory(std::span<const std::byte> bytes, std::vector<ChunkPlace> &places) {
  FrameHead head;
  std::memcpy(&head, bytes.data(), sizeof head);
  places.clear();
  if (!IsFrameKind(head.kind) || head.entries > kMaxEntries || head.nextId > kMaxEntries) return false;
  ByteReader reader(bytes.subspan(sizeof head));
  uint64_t start = head.headBytes, rawBytes = 0;
  for (uint16_t i = 0; i < head.chunks; ++i) {
    ChunkPlace place;
    std::span<const std::byte> key;
    if (!reader.Fixed(place.chunk) || !IsPossible(place.chunk) || !reader.Bytes(place.chunk.keyBytes, key))
      return false;
    place.firstKey = {reinterpret_cast<const char *>(key.data()), key.size()};
    place.start = static_cast<uint32_t>(start);
    start += place.chunk.storedBytes;
    rawBytes += place.chunk.rawBytes;
    if (start > head.frameBytes || rawBytes > 2 * kMaxSampleBytes) return false;
    places.push_back(place);
  }
  return reader.isAtEnd() && start == head.frameBytes;
}

void AppendHost(const HostHeader &host, ByteVector &bytes) {
  for (const std::string_view text :
       {std::string_view(host.definitions.signature), std::string_view(host.definitions.build),
        std::string_view(host.host), std::string_view(host.kernel)})
    AppendText(text, bytes);
  AppendBytes(bytes, host.bootId);
  AppendVarint(bytes, host.intervalMillis);
}

bool ReadHost(std::span<const std::byte> bytes, HostHeader &host) {
  ByteReader reader(bytes);
  for (std::string *text : {&host.definitions.signature, &host.definitions.build, &host.host, &host.kernel}) {
    if (!ReadText(reader, *text)) return false;
  }
  return reader.Fixed(host.bootId) && reader.Varint(UINT32_MAX, host.intervalMillis) && reader.isAtEnd();
}

}  // namespace platkit::history
