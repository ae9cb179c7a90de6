// Reads the samples of a segment.
//
// The file may be hostile, and it may change while it is read. Therefore the reader copies it with pread into its own
// memory, and checks it there. It checks every size against the limits of the format before it allocates memory.
//
// If memory runs out, an operation throws std::bad_alloc or returns HVC_NO_MEMORY. The reader can be used again.
#ifndef PLATKIT_HISTORY_SEGMENT_READER_H
#define PLATKIT_HISTORY_SEGMENT_READER_H

#include <cstdint>
#include <memory>
#include <vector>

#include "platkit/history/format.h"
#include "platkit/history/sample.h"
#include "platkit/status.h"

namespace platkit::history {

// A part of a segment that is no valid frame: from byte `start`, `bytes` long.
struct DamagedPart {
  uint64_t start;
  uint64_t bytes;
  bool isIncompleteEnd;  // a frame that the file ends in: it is being written, or its writer was stopped
};

class KeyFilter;

class SegmentReader {
 public:
  SegmentReader();
  ~SegmentReader();
  SegmentReader(const SegmentReader &) = delete;
  SegmentReader &operator=(const SegmentReader &) = delete;

  // Opens the segment `name` of an open folder, and finds its frames from their heads. A later frame of a growing
  // segment is not seen.
  //
  // HVC_NOT_A_SNAPSHOT: not a regular file, or without any frame. HVC_SNAPSHOT_TOO_NEW: of a newer format.
  // HVC_LIMIT_EXCEEDED: larger than a segment can be. Other statuses as for StatusOfErrno.
  [[nodiscard]] HVC_ReturnStatus Open(int folder, const char *name);

  // Reads an open regular file, which is closed with the reader. Statuses as above.
  [[nodiscard]] HVC_ReturnStatus Open(int fd);

  // A sample, by its place in the segment.
  struct Frame {
    uint64_t start;  // byte in the file
    uint32_t bytes;
    bool isKey;
    bool isEnd;          // no sample: the recorder ended by itself
    bool followsDamage;  // a damaged part lies between the frame before and this one
    SampleInfo info;
    uint32_t entries;  // of the sample
    uint32_t check;    // identifies the frame
    uint32_t base;     // the frame that this one continues
  };
  const std::vector<Frame> &frames() const;
  const std::vector<DamagedPart> &damage() const;

  // The indexes of the frames with samples, in the order of time. The file has this order unless the clock was set
  // back.
  std::vector<size_t> InOrderOfTime() const;

  // The number of damaged parts, without an incomplete end, which may be a frame that is being written.
  size_t lostParts() const;

  // True if the key frame before this frame, and all frames between the two, exist and are whole.
  bool hasBase(size_t frame) const;

  // Reads the sample of a frame. Reading the frames in order decodes each of them once.
  //
  // HVC_SNAPSHOT_DAMAGED: the frame, or one between it and the key frame before, is damaged. HVC_NOT_FOUND: an end
  // frame. HVC_IO_ERROR.
  [[nodiscard]] HVC_ReturnStatus Read(size_t frame, Sample &sample);

  // Selects the entries that later samples have; null: all of them. A reader that follows a few entries is much faster
  // this way, but finds damage only in what it reads. The filter must live as long as the reader uses it.
  void Select(const KeyFilter *filter);

  // The size of the segment when it was opened.
  uint64_t bytes() const;

  // Reads only the host of a sample. Statuses as for Read.
  [[nodiscard]] HVC_ReturnStatus ReadHost(size_t frame, HostHeader &host);

  // The host of the sample that was read last.
  const HostHeader &host() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_SEGMENT_READER_H
