// A history: the samples of all segments in a folder.
#ifndef PLATKIT_HISTORY_HISTORY_H
#define PLATKIT_HISTORY_HISTORY_H

#include <cstdint>
#include <vector>

#include "platkit/history/history_folder.h"
#include "platkit/history/segment_reader.h"
#include "platkit/status.h"

namespace platkit::history {

class History {
 public:
  // The times that Read accepts, in seconds since 1970: from `first`, the first sample, to `validTo`, one interval
  // after the last sample.
  struct Span {
    int64_t first = 0;
    int64_t last = 0;  // of the last sample
    int64_t validTo = 0;
  };

  // Opens the folder and lists its segments.
  //
  // HVC_NOT_A_SNAPSHOT: the folder has no segments. Other statuses as for HistoryFolder.
  [[nodiscard]] HVC_ReturnStatus Open(const char *path);

  int folder() const { return folder_.fd(); }
  const std::vector<SegmentName> &segments() const { return segments_; }

  // Opens a segment. HVC_SNAPSHOT_DAMAGED: the file is not a segment, or exceeds a limit of the format. HVC_NOT_FOUND:
  // the file was removed after the folder was listed. Other statuses as for SegmentReader::Open.
  [[nodiscard]] HVC_ReturnStatus Open(SegmentName name, SegmentReader &segment) const;

  // Finds the span of the history. HVC_SNAPSHOT_DAMAGED: no segment has a sample. Other statuses as for
  // SegmentReader::Open.
  [[nodiscard]] HVC_ReturnStatus FindSpan(Span &span);

  // Reads the last sample at or before this second. If several samples have the latest wall time, reads the one that
  // was recorded last.
  //
  // HVC_OUT_OF_RANGE: the second is outside of the span. HVC_SNAPSHOT_DAMAGED: that sample is damaged, or damage may
  // have destroyed a later one. Other statuses as for SegmentReader.
  [[nodiscard]] HVC_ReturnStatus Read(int64_t second, Sample &sample, SampleInfo &info, HostHeader &host);

 private:
  HVC_ReturnStatus FindFirst(Span &span);
  HVC_ReturnStatus FindLast(Span &span);

  HistoryFolder folder_;
  std::vector<SegmentName> segments_;
  SegmentReader reader_;
};

// The index of the frame with the latest sample at or before this second, or frames().size() if there is none.
size_t FindFrame(const SegmentReader &segment, int64_t second);

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_HISTORY_H
