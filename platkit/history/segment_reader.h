// Reads the samples of a segment.
//
// The file may be hostile, and it may change while it is read. The reader therefore copies it with pread into its own
// memory and checks the copy. It checks every size against the limits of the format before it allocates memory.
//
// If memory runs out, an operation throws std::bad_alloc or returns HVC_NO_MEMORY. The reader can still be used.
#ifndef PLATKIT_HISTORY_SEGMENT_READER_H
#define PLATKIT_HISTORY_SEGMENT_READER_H

#include <cstdint>
#include <memory>
#include <vector>

#include "platkit/history/format.h"
#include "platkit/history/sample.h"
#include "platkit/status.h"

namespace platkit::history {

// A part of a segment that is not a valid frame: `bytes` bytes, from byte `start` on.
struct DamagedPart {
  uint64_t start;
  uint64_t bytes;
  bool isIncompleteEnd;  // the file ends within a frame: it is being written, or its writer was killed
};

class KeyFilter;

class SegmentReader {
 public:
  SegmentReader();
  ~SegmentReader();
  SegmentReader(const SegmentReader &) = delete;
  SegmentReader &operator=(const SegmentReader &) = delete;

  // Opens the segment `name` of an open folder, and finds its frames by their heads. Frames that are appended later are
  // not seen.
  //
  // HVC_NOT_A_SNAPSHOT: the file is not regular, or has contents but no frame. HVC_SNAPSHOT_TOO_NEW: a frame has a
  // newer format. HVC_LIMIT_EXCEEDED: the file is larger or has more frames than a segment can have. Other statuses as
  // for StatusOfErrno.
  [[nodiscard]] HVC_ReturnStatus Open(int folder, const char *name);

  // Reads an open regular file, which is closed with the reader. Statuses as above.
  [[nodiscard]] HVC_ReturnStatus Open(int fd);

  // A frame of the segment: a sample, or the end of a recording.
  struct Frame {
    uint64_t start;  // position in the file
    uint32_t bytes;
    bool isKey;
    bool isEnd;          // no sample: the recorder stopped normally
    bool followsDamage;  // there is damage between the previous frame and this one
    SampleInfo info;
    uint32_t entries;  // of the sample
    uint32_t check;    // identifies the frame
    uint32_t base;     // `check` of the frame that this one continues
  };
  const std::vector<Frame> &frames() const;
  const std::vector<DamagedPart> &damage() const;

  // The indexes of the frames with samples, in chronological order. The file has this order unless the clock was set
  // back.
  std::vector<size_t> InOrderOfTime() const;

  // The number of damaged parts, without an incomplete end, which may be a frame that is being written.
  size_t lostParts() const;

  // Whether the frame is a key frame, or the heads of its key frame and of all frames between the two are valid.
  bool hasBase(size_t frame) const;

  // Reads the sample of a frame. Reading the frames in order decodes each of them once.
  //
  // HVC_SNAPSHOT_DAMAGED: the frame, its key frame, or a frame between the two is damaged. HVC_NOT_FOUND: the frame has
  // no sample. HVC_IO_ERROR.
  [[nodiscard]] HVC_ReturnStatus Read(size_t frame, Sample &sample);

  // Selects the entries that Read returns from now on; null selects all. Reading only a few entries is much faster, but
  // finds damage only in the chunks that are read. The filter must live as long as the reader uses it.
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
