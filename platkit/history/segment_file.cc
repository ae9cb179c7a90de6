#include "platkit/history/segment_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zstd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platkit/history/history_folder.h"

namespace platkit::history {
namespace {

constexpr uint64_t kMaxWrongHeadBytes = uint64_t{64} << 20;

}  // namespace

SegmentFile::SegmentFile() = default;
SegmentFile::~SegmentFile() { Close(); }

void SegmentFile::FreeContext::operator()(ZSTD_DCtx_s *context) const { ZSTD_freeDCtx(context); }

void SegmentFile::Close() {
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
  size_ = 0;
  window_.Resize(0);
}

HVC_ReturnStatus SegmentFile::Open(int folder, const char *name) {
  int fd;
  const HVC_ReturnStatus status = OpenSegmentFile(folder, name, O_RDONLY, fd);
  return status == HVC_OK ? Open(fd) : status;
}

HVC_ReturnStatus SegmentFile::Open(int fd) {
  Close();
  fd_ = fd;
  struct stat info;
  if (fstat(fd_, &info) != 0) return HVC_IO_ERROR;
  wrongHeadBytes_ = 0;
  size_ = static_cast<uint64_t>(info.st_size);
  return size_ > kMaxSegmentBytes ? HVC_LIMIT_EXCEEDED : HVC_OK;
}

HVC_ReturnStatus SegmentFile::Fill(uint64_t position, std::span<std::byte> bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = pread(fd_, bytes.data(), bytes.size(), static_cast<off_t>(position));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return HVC_IO_ERROR;
    if (count == 0) return HVC_SNAPSHOT_DAMAGED;
    bytes = bytes.subspan(static_cast<size_t>(count));
    position += static_cast<uint64_t>(count);
  }
  return HVC_OK;
}

HVC_ReturnStatus SegmentFile::Load(uint64_t position, size_t size, std::span<std::byte> &bytes) {
  position = std::min(position, size_);
  size = static_cast<size_t>(std::min<uint64_t>(size, size_ - position));
  const std::span<std::byte> window = window_.bytes();
  const bool isLoaded = position >= windowStart_ && position + size <= windowStart_ + window.size();
  if (!isLoaded) {
    const auto wanted = static_cast<size_t>(std::min<uint64_t>(std::max(size, kWindowBytes), size_ - position));
    window_.Resize(wanted);
    windowStart_ = position;
    const HVC_ReturnStatus status = Fill(position, window_.bytes());
    if (status != HVC_OK) {
      window_.Resize(0);
      return status;
    }
  }
  bytes = window_.bytes().subspan(static_cast<size_t>(position - windowStart_), size);
  return HVC_OK;
}

HVC_ReturnStatus SegmentFile::LoadHead(uint64_t position, LoadedFrame &frame) {
  std::span<std::byte> bytes;
  HVC_ReturnStatus status = Load(position, sizeof frame.head, bytes);
  if (status != HVC_OK) return status;
  if (bytes.size() < sizeof frame.head) return HVC_SNAPSHOT_DAMAGED;
  std::memcpy(&frame.head, bytes.data(), sizeof frame.head);
  if (!IsPossibleHead(frame.head, size_ - position)) return HVC_SNAPSHOT_DAMAGED;
  status = Load(position, frame.head.headBytes, bytes);
  if (status != HVC_OK) return status;
  frame.headBytes.assign(bytes.begin(), bytes.end());
  if (!UnmaskAndCheck(frame.headBytes)) {
    // Without this limit, a small file with many magics could keep the reader busy for hours.
    wrongHeadBytes_ += frame.headBytes.size();
    return wrongHeadBytes_ > kMaxWrongHeadBytes + 4 * size_ ? HVC_LIMIT_EXCEEDED : HVC_SNAPSHOT_DAMAGED;
  }
  // Another process may have changed the file between the two loads.
  std::memcpy(&frame.head, frame.headBytes.data(), sizeof frame.head);
  if (frame.head.headBytes != frame.headBytes.size() || !IsPossibleHead(frame.head, size_ - position))
    return HVC_SNAPSHOT_DAMAGED;
  if (frame.head.version > kVersion) return HVC_SNAPSHOT_TOO_NEW;
  frame.position = position;
  return ReadDirectory(frame.headBytes, frame.chunks) ? HVC_OK : HVC_SNAPSHOT_DAMAGED;
}

HVC_ReturnStatus SegmentFile::LoadChunk(const LoadedFrame &frame, const ChunkPlace &place,
                                        std::span<const std::byte> &raw) {
  std::span<std::byte> loaded;
  const HVC_ReturnStatus status = Load(frame.position + place.start, place.chunk.storedBytes, loaded);
  if (status != HVC_OK) return status;
  std::span<const std::byte> stored = loaded;
  if (frame.head.mask != 0) {
    unmasked_.assign(loaded.begin(), loaded.end());
    for (std::byte &byte : unmasked_)
      byte ^= std::byte{frame.head.mask};
    stored = unmasked_;
  }
  if (stored.size() != place.chunk.storedBytes || snapshot::Check(stored) != place.chunk.check)
    return HVC_SNAPSHOT_DAMAGED;
  raw = stored;
  if (place.chunk.rawBytes == place.chunk.storedBytes) return HVC_OK;
  if (context_ == nullptr) context_.reset(ZSTD_createDCtx());
  if (context_ == nullptr) return HVC_NO_MEMORY;
  raw_.resize(place.chunk.rawBytes);
  const size_t size = ZSTD_decompressDCtx(context_.get(), raw_.data(), raw_.size(), stored.data(), stored.size());
  raw = raw_;
  return size == raw_.size() ? HVC_OK : HVC_SNAPSHOT_DAMAGED;
}

HVC_ReturnStatus SegmentFile::FindMagic(uint64_t position, uint64_t &found) {
  constexpr size_t kStep = size_t{1} << 20;
  for (found = position; found < size_; found += kStep) {
    std::span<std::byte> bytes;
    const HVC_ReturnStatus status = Load(found, kStep + kMagic.size() - 1, bytes);
    if (status != HVC_OK) return status;
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    const size_t place = text.find(kMagic);
    if (place != std::string_view::npos) {
      found += place;
      return HVC_OK;
    }
  }
  found = size_;
  return HVC_OK;
}

}  // namespace platkit::history
