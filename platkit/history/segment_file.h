// The bytes of a segment, read into the memory of this process.
#ifndef PLATKIT_HISTORY_SEGMENT_FILE_H
#define PLATKIT_HISTORY_SEGMENT_FILE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platkit/history/frame.h"
#include "platkit/snapshot/value_buffer.h"
#include "platkit/status.h"

struct ZSTD_DCtx_s;

namespace platkit::history {

// A frame whose head was read and checked.
struct LoadedFrame {
  uint64_t position;
  FrameHead head;
  std::vector<ChunkPlace> chunks;
  ByteVector headBytes;
};

class SegmentFile {
 public:
  SegmentFile();
  ~SegmentFile();
  SegmentFile(const SegmentFile &) = delete;
  SegmentFile &operator=(const SegmentFile &) = delete;

  // Opens the file. Bytes that are appended later are not seen. Statuses as for OpenSegmentFile, and
  // HVC_LIMIT_EXCEEDED: the file is larger than a segment can be.
  [[nodiscard]] HVC_ReturnStatus Open(int folder, const char *name);

  // Takes ownership of an open file. Statuses as above.
  [[nodiscard]] HVC_ReturnStatus Open(int fd);

  uint64_t size() const { return size_; }

  // Reads and checks the head of the frame at this position.
  //
  // HVC_SNAPSHOT_DAMAGED: no valid head is at this position. HVC_SNAPSHOT_TOO_NEW: the frame has a newer format.
  // HVC_LIMIT_EXCEEDED: too many heads with wrong checksums were read. HVC_IO_ERROR.
  [[nodiscard]] HVC_ReturnStatus LoadHead(uint64_t position, LoadedFrame &frame);

  // Reads, checks and uncompresses a chunk. `raw` stays valid until the next operation.
  //
  // HVC_SNAPSHOT_DAMAGED: the chunk is damaged. HVC_IO_ERROR.
  [[nodiscard]] HVC_ReturnStatus LoadChunk(const LoadedFrame &frame, const ChunkPlace &place,
                                           std::span<const std::byte> &raw);

  // Sets `found` to the next position, from `position` on, at which the magic of a frame starts, or to size() if there
  // is none. Statuses as for Load.
  [[nodiscard]] HVC_ReturnStatus FindMagic(uint64_t position, uint64_t &found);

  // Loads `size` bytes from `position` on, or fewer if the file ends earlier. They stay valid until the next operation.
  // HVC_SNAPSHOT_DAMAGED: the file has become shorter. HVC_IO_ERROR.
  [[nodiscard]] HVC_ReturnStatus Load(uint64_t position, size_t size, std::span<std::byte> &bytes);

 private:
  static constexpr size_t kWindowBytes = size_t{16} << 10;

  void Close();
  HVC_ReturnStatus Fill(uint64_t position, std::span<std::byte> bytes) const;

  int fd_ = -1;
  uint64_t size_ = 0;
  uint64_t wrongHeadBytes_ = 0;  // bytes that were read for heads with wrong checksums
  // The bytes that were read last: reads of neighbouring frames need no further system call.
  uint64_t windowStart_ = 0;
  snapshot::ValueBuffer window_;
  ByteVector unmasked_;
  ByteVector raw_;
  struct FreeContext {
    void operator()(ZSTD_DCtx_s *context) const;
  };
  std::unique_ptr<ZSTD_DCtx_s, FreeContext> context_;
};

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_SEGMENT_FILE_H
