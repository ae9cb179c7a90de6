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
  // The seconds for which the history has an answer: from `first`, its first sample, to `validTo`, one interval after
  // its last sample.
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

  // Opens a segment. HVC_SNAPSHOT_DAMAGED: the file is not a segment, or larger than one can be. HVC_NOT_FOUND: it was
  // removed since the folder was listed. Other statuses as for SegmentReader::Open.
  [[nodiscard]] HVC_ReturnStatus Open(SegmentName name, SegmentReader &segment) const;

  // HVC_SNAPSHOT_DAMAGED: no segment has a sample. Other statuses as for SegmentReader::Open.
  [[nodiscard]] HVC_ReturnStatus FindSpan(Span &span);

  // Reads the last sample at or before this second: of the samples with the latest wall time, the one that was recorded
  // last.
  //
  // HVC_OUT_OF_RANGE: the second is outside of the span. HVC_SNAPSHOT_DAMAGED: that sample, or one that may have been
  // taken after it, is damaged. Other statuses as for SegmentReader.
  [[nodiscard]] HVC_ReturnStatus Read(int64_t second, Sample &sample, SampleInfo &info, HostHeader &host);

 private:
  HVC_ReturnStatus FindFirst(Span &span);
  HVC_ReturnStatus FindLast(Span &span);

  HistoryFolder folder_;
  std::vector<SegmentName> segments_;
  SegmentReader reader_;
};

// The frame with the latest sample at or before this second, or frames().size().
size_t FindFrame(const SegmentReader &segment, int64_t second);

}  // namespace platkit::history

#endif  // PLATKIT_HISTORY_HISTORY_H
