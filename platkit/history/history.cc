#include "platkit/history/history.h"

#include <algorithm>

#include "platkit/history/moment.h"

namespace platkit::history {
namespace {

using Frame = SegmentReader::Frame;

int64_t SecondOf(const Frame &frame) { return SecondsOf(frame.info.time.wall); }

// Whether damage may have destroyed a sample that was taken after this frame's, but not after `second`.
bool MayMissLater(const SegmentReader &segment, size_t frame, int64_t second) {
  if (SecondOf(segment.frames()[frame]) == second) return false;
  const auto isLoss = [](const DamagedPart &part) { return !part.isIncompleteEnd; };
  const auto wallOf = [](const Frame &sample) { return sample.info.time.wall; };
  // The clock was set back, so a lost sample can be of any time.
  if (std::ranges::any_of(segment.damage(), isLoss) && !std::ranges::is_sorted(segment.frames(), {}, wallOf))
    return true;
  if (frame + 1 < segment.frames().size()) return segment.frames()[frame + 1].followsDamage;
  if (segment.damage().empty() || segment.damage().back().isIncompleteEnd) return false;
  return segment.damage().back().start > segment.frames()[frame].start;
}

}  // namespace

HVC_ReturnStatus History::Open(const char *path) {
  HVC_ReturnStatus status = folder_.Open(path);
  if (status == HVC_OK) status = folder_.List(segments_);
  if (status != HVC_OK) return status;
  return segments_.empty() ? HVC_NOT_A_SNAPSHOT : HVC_OK;
}

HVC_ReturnStatus History::Open(SegmentName name, SegmentReader &segment) const {
  const HVC_ReturnStatus status = segment.Open(folder_.fd(), name.text().c_str());
  return status == HVC_NOT_A_SNAPSHOT || status == HVC_LIMIT_EXCEEDED ? HVC_SNAPSHOT_DAMAGED : status;
}

HVC_ReturnStatus History::FindFirst(Span &span) {
  for (const SegmentName name : segments_) {
    const HVC_ReturnStatus status = Open(name, reader_);
    if (status == HVC_NOT_FOUND || status == HVC_SNAPSHOT_DAMAGED) continue;
    if (status != HVC_OK) return status;
    span.first = INT64_MAX;
    for (const Frame &frame : reader_.frames()) {
      if (!frame.isEnd) span.first = std::min(span.first, SecondOf(frame));
    }
    if (span.first != INT64_MAX) return HVC_OK;
  }
  return HVC_SNAPSHOT_DAMAGED;
}

HVC_ReturnStatus History::FindLast(Span &span) {
  for (size_t i = segments_.size(); i-- > 0;) {
    const HVC_ReturnStatus status = Open(segments_[i], reader_);
    if (status == HVC_NOT_FOUND || status == HVC_SNAPSHOT_DAMAGED) continue;
    if (status != HVC_OK) return status;
    const size_t frame = FindFrame(reader_, INT64_MAX);
    if (frame == reader_.frames().size()) continue;
    const int64_t wall = reader_.frames()[frame].info.time.wall;
    span.last = span.validTo = SecondsOf(wall);
    HostHeader host;
    if (reader_.ReadHost(frame, host) != HVC_OK) return HVC_OK;
    constexpr int64_t kNanosInMilli = 1'000'000;
    const int64_t interval = int64_t{host.intervalMillis} * kNanosInMilli;
    span.validTo = SecondsOf(std::min(wall, INT64_MAX - interval) + interval);
    return HVC_OK;
  }
  return HVC_SNAPSHOT_DAMAGED;
}

HVC_ReturnStatus History::FindSpan(Span &span) {
  const HVC_ReturnStatus status = FindFirst(span);
  return status == HVC_OK ? FindLast(span) : status;
}

HVC_ReturnStatus History::Read(int64_t second, Sample &sample, SampleInfo &info, HostHeader &host) {
  Span span;
  HVC_ReturnStatus status = FindSpan(span);
  if (status != HVC_OK) return status;
  if (second < span.first || second > span.validTo) return HVC_OUT_OF_RANGE;
  const auto later = std::ranges::upper_bound(segments_, SegmentName::AtSecond(second));
  for (auto name = later; name != segments_.begin();) {
    status = Open(*--name, reader_);
    if (status == HVC_NOT_FOUND) continue;
    if (status != HVC_OK) return status;
    const size_t frame = FindFrame(reader_, second);
    const bool isFound = frame < reader_.frames().size();
    if (!isFound && reader_.damage().empty()) continue;
    if (!isFound || MayMissLater(reader_, frame, second)) return HVC_SNAPSHOT_DAMAGED;
    status = reader_.Read(frame, sample);
    info = reader_.frames()[frame].info;
    host = reader_.host();
    return status;
  }
  return HVC_OUT_OF_RANGE;
}

size_t FindFrame(const SegmentReader &segment, int64_t second) {
  const std::vector<Frame> &frames = segment.frames();
  size_t best = frames.size();
  for (size_t i = 0; i < frames.size(); ++i) {
    if (frames[i].isEnd || SecondOf(frames[i]) > second) continue;
    if (best == frames.size() || frames[i].info.time.wall >= frames[best].info.time.wall) best = i;
  }
  return best;
}

}  // namespace platkit::history
