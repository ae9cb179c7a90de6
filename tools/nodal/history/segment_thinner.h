// Thins a segment of a history to one sample per minute.
#ifndef NODAL_HISTORY_SEGMENT_THINNER_H
#define NODAL_HISTORY_SEGMENT_THINNER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platkit/history/sample.h"
#include "platkit/history/segment_reader.h"
#include "platkit/history/segment_writer.h"
#include "platkit/status.h"

namespace nodal {

// The samples of one minute, by the indexes of their frames in the segment. One of the samples is kept.
struct MinuteOfSamples {
  std::vector<size_t> frames;  // the one with the least memory available first
  uint8_t marks = 0;           // the marks of the sample that is kept
  bool isEnd = false;          // contains no samples, but the end of a recording
};

// Divides samples into minutes. A restart of the recorder or of the host begins a new minute.
std::vector<MinuteOfSamples> MinutesOf(const std::vector<platkit::history::SegmentReader::Frame> &frames);

// Writes the samples to keep to a temporary file, one per step, and then renames the file over the segment.
class SegmentThinner {
 public:
  static constexpr char kTemporary[] = "thinning.tmp";

  // Opens the segment `name` of an open folder. Returns HVC_ALREADY_EXISTS if the segment has no more than one sample
  // per minute, or a status of SegmentReader::Open or SegmentWriter::Open.
  [[nodiscard]] HVC_ReturnStatus Start(int folder, const std::string &name);

  // Copies the kept sample of the next minute or, after the last minute, replaces the segment. If the step fails, the
  // segment is unchanged, the work is over, and the status is that of reading, writing or renaming.
  [[nodiscard]] HVC_ReturnStatus Step();

  bool isBusy() const { return work_ != nullptr; }

  // Abandons the work. The segment stays as it is.
  void Stop();

  // The size of the temporary file.
  uint64_t bytes() const { return work_ == nullptr ? 0 : work_->writer.segmentBytes(); }

 private:
  struct Work {
    int folder;
    std::string name;
    platkit::history::SegmentReader reader;
    platkit::history::SegmentWriter writer;
    std::vector<MinuteOfSamples> minutes = {};
    size_t next = 0;
    platkit::history::Sample sample = {};

    Work(int openFolder, std::string segment);
  };

  HVC_ReturnStatus CopyMinute(const MinuteOfSamples &minute);
  HVC_ReturnStatus Replace();

  std::unique_ptr<Work> work_;
};

}  // namespace nodal

#endif  // NODAL_HISTORY_SEGMENT_THINNER_H
