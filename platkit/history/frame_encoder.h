// Encodes samples as frames.
#ifndef PLATKIT_HISTORY_FRAME_ENCODER_H
#define PLATKIT_HISTORY_FRAME_ENCODER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/history/entry_chunk.h"
#include "platkit/history/frame.h"
#include "platkit/history/sample.h"
#include "platkit/status.h"

struct ZSTD_CCtx_s;

namespace platkit::history {

class FrameEncoder {
 public:
  FrameEncoder();
  ~FrameEncoder();
  FrameEncoder(const FrameEncoder &) = delete;
  FrameEncoder &operator=(const FrameEncoder &) = delete;

  // Encode a sample, or the end of a recording. A delta frame continues the last accepted frame; `before` is the sample
  // of that frame. The frame stays valid until the next call. REQUIRES: the entries of the samples are sorted.
  //
  // HVC_LIMIT_EXCEEDED: the frame exceeds a limit of the format. HVC_BAD_PARAM: the format has no entries of this type.
  // HVC_NO_MEMORY.
  [[nodiscard]] HVC_ReturnStatus EncodeKey(const HostHeader &host, const SampleInfo &info, const Sample &sample);
  [[nodiscard]] HVC_ReturnStatus EncodeDelta(const SampleInfo &info, const Sample &sample, const Sample &before);
  [[nodiscard]] HVC_ReturnStatus EncodeEnd(const SampleTime &time);

  std::span<const std::byte> frame() const { return frame_; }

  // The total size of the payloads whose size changes in this frame; see MaxMovedBytes.
  uint64_t movedBytes() const { return movedBytes_; }

  // Call this after the frame was written. The next delta frame then continues it.
  void Accept();

 private:
  struct Change {
    uint32_t id;
    size_t index;   // in the sample
    size_t before;  // in the previous sample
  };

  void Begin();
  HVC_ReturnStatus Finish(FrameKind kind, const SampleInfo &info, uint32_t entries);
  HVC_ReturnStatus AddEntries(const Sample &sample, std::span<const size_t> indexes);
  HVC_ReturnStatus AddChanges(const Sample &sample, const Sample &before);
  HVC_ReturnStatus AddRemoved();
  void Compare(const Sample &sample, const Sample &before);
  HVC_ReturnStatus AddChunk(ChunkKind kind, std::span<const std::byte> raw, uint32_t firstId, uint32_t lastId,
                            std::string_view firstKey = "");
  void Mask();

  ByteVector frame_;
  ByteVector directory_;
  ByteVector body_;
  ByteVector raw_;
  ByteVector coded_;
  ByteVector compressed_;
  uint64_t movedBytes_ = 0;
  uint16_t chunks_ = 0;
  uint32_t base_ = 0;          // the check of the accepted frame
  uint32_t nextId_ = 0;        // the next number of the accepted frame
  std::vector<uint32_t> ids_;  // the numbers of the entries of the accepted sample
  // The same for the frame that is being encoded, until it is accepted.
  uint32_t newNextId_ = 0;
  std::vector<uint32_t> newIds_;
  std::vector<size_t> added_;
  std::vector<Change> changes_;
  std::vector<uint32_t> removed_;
  EntryChunkWriter entries_;
  struct FreeContext {
    void operator()(ZSTD_CCtx_s *context) const;
  };
  std::unique_ptr<ZSTD_CCtx_s, FreeContext> context_;
};

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_FRAME_ENCODER_H
