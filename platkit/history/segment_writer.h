// Appends samples to a segment.
//
// Each sample is one frame, written by one system call. A frame that could not be written whole is removed again, so
// the segment ends with a whole frame unless the process or the machine stopped during the call.
//
// If memory runs out, an operation throws std::bad_alloc or returns HVC_NO_MEMORY; nothing is written then.
#ifndef PLATKIT_HISTORY_SEGMENT_WRITER_H
#define PLATKIT_HISTORY_SEGMENT_WRITER_H

#include <cstdint>
#include <memory>
#include <string>

#include "platkit/history/format.h"
#include "platkit/history/sample.h"
#include "platkit/status.h"

namespace platkit::history {

class FrameEncoder;

class SegmentWriter {
 public:
  // The default time between two key frames. After a damaged frame, the samples up to the next key frame are lost. If
  // samples are more than half of this time apart, every frame is a key frame, so their writer needs a longer interval.
  static constexpr int64_t kKeyInterval = 60 * kNanosInSecond;

  explicit SegmentWriter(int64_t keyInterval = kKeyInterval);
  ~SegmentWriter();
  SegmentWriter(const SegmentWriter &) = delete;
  SegmentWriter &operator=(const SegmentWriter &) = delete;

  // Opens or creates the segment `name` in an open folder. The name is a SegmentName::text or a temporary name. A new
  // file is readable by its owner only. Removes an incomplete frame from the end of the file. The next frame is a key
  // frame. Closes the segment that was open until now.
  //
  // HVC_NOT_A_SNAPSHOT: the file is not regular, or not a segment. HVC_SNAPSHOT_TOO_NEW: the segment has a newer
  // format. HVC_LIMIT_EXCEEDED: the segment is full. Other statuses as for StatusOfErrno.
  [[nodiscard]] HVC_ReturnStatus Open(int folder, const char *name);

  // Appends a sample, and exchanges it with the previous one: last() then has the entries of this sample, and `sample`
  // has those of the previous sample, for the caller to clear. Sorts the entries. After a failure, `sample` keeps its
  // entries, and the segment is unchanged.
  //
  // HVC_ALREADY_EXISTS: two entries have the same key. HVC_LIMIT_EXCEEDED: the sample exceeds a limit of the format, or
  // the segment is full. HVC_BAD_PARAM: no segment is open, a text of the header contains a NUL, or samples cannot have
  // an entry of this type. Other statuses as for StatusOfErrno, with HVC_WRITE_ERROR for other errors, such as a full
  // disk.
  [[nodiscard]] HVC_ReturnStatus Append(const HostHeader &host, const SampleInfo &info, Sample &sample);

  // Appends a frame without a sample, which records that the recorder stopped normally. Statuses as for Append.
  [[nodiscard]] HVC_ReturnStatus AppendEnd(const SampleTime &time);

  // Waits until everything is on the disk, which may take long. Statuses as for Append.
  [[nodiscard]] HVC_ReturnStatus Sync();

  void Close();

  bool isOpen() const { return fd_ >= 0; }

  // The size of the open segment, and of the frame that was written last, in bytes.
  uint64_t segmentBytes() const { return segmentBytes_; }
  uint64_t frameBytes() const { return frameBytes_; }

  // The size of the incomplete frame that Open removed; 0 if there was none.
  uint64_t removedBytes() const { return removedBytes_; }

  // The sample that was appended last, also after Close; empty before the first one.
  const Sample &last() const { return last_; }

  // Whether a sample of this host at this time must be written as a key frame.
  bool NeedsKeyFrame(const HostHeader &host, const SampleTime &time) const;

 private:
  HVC_ReturnStatus FindEnd(int folder, const char *name);
  HVC_ReturnStatus Write(std::span<const std::byte> frame);

  const int64_t keyInterval_;
  int fd_ = -1;
  uint64_t segmentBytes_ = 0;
  uint64_t frameBytes_ = 0;
  uint64_t removedBytes_ = 0;
  uint32_t frames_ = 0;
  uint32_t deltaFrames_ = 0;  // since the key frame
  uint64_t chainBytes_ = 0;   // of the key frame and the frames since
  uint64_t movedBytes_ = 0;   // in the frames since the key frame
  bool hasChain_ = false;     // the segment ends with the frame of last_
  SampleTime keyTime_ = {};
  HostHeader host_;
  Sample last_;
  std::unique_ptr<FrameEncoder> encoder_;
};

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_SEGMENT_WRITER_H
