#include "tools/nodal/history/history_range.h"

#include <algorithm>

#include "platkit/history/moment.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::history::KeyFilter;
using platkit::history::Sample;
using platkit::history::SecondsOf;
using platkit::history::SegmentName;
using platkit::history::SegmentReader;

int64_t SecondOf(const SegmentReader &segment, size_t frame) {
  return SecondsOf(segment.frames()[frame].info.time.wall);
}

// Leaves only the last frame of each second.
void KeepLastOfSeconds(const SegmentReader &segment, std::vector<size_t> &order) {
  std::vector<size_t> last;
  for (size_t i = 0; i < order.size(); ++i) {
    const bool isLast = i + 1 == order.size() || SecondOf(segment, order[i]) != SecondOf(segment, order[i + 1]);
    if (isLast) last.push_back(order[i]);
  }
  order = std::move(last);
}

}  // namespace

int64_t StepOption(const std::string &text) {
  if (text.empty()) return 0;
  const std::optional<int64_t> seconds = platkit::history::ParseDuration(text);
  if (!seconds || *seconds == 0) throw UsageError("--step " + text, "expected a number and s, m, h or d, such as 10s");
  return *seconds;
}

HistoryRange::HistoryRange(const RangeOptions &options)
    : folder_(options.folder),
      step_(StepOption(options.step)),
      lastOfSecond_(options.lastOfSecond),
      isQuiet_(options.isQuiet) {
  OpenHistory(folder_, history_);
  const platkit::history::History::Span span = SpanOf(folder_, history_);
  from_ = options.from.empty() ? span.first : TimeOption("--from", options.from, span);
  to_ = options.to.empty() ? span.last : TimeOption("--to", options.to, span);
  if (options.to.empty() && from_ > to_)
    throw Failure(folder_, "the history ends before --from, at " + platkit::history::TimeText(to_));
  if (options.from.empty() && from_ > to_)
    throw Failure(folder_, "the history starts after --to, at " + platkit::history::TimeText(from_));
  if (from_ > to_) throw UsageError("--from " + options.from, "after --to " + options.to);
}

void HistoryRange::Visit(const KeyFilter *filter, const Visitor &visitor) {
  lost_ = damagedParts_ = 0;
  lastStep_ = -1;
  for (const SegmentName name : history_.segments()) {
    if (name >= SegmentName::AtSecond(from_) && name <= SegmentName::AtSecond(to_)) VisitSegment(filter, name, visitor);
  }
  if (!isQuiet_ && lost_ + damagedParts_ > 0)
    Complain(folder_ + ": " + Plural(lost_, "damaged sample") + " left out, " + Plural(damagedParts_, "damaged part") +
             " skipped (nodal verify shows details)");
}

void HistoryRange::VisitSegment(const KeyFilter *filter, SegmentName name, const Visitor &visitor) {
  SegmentReader segment;
  segment.Select(filter);
  HVC_ReturnStatus status = history_.Open(name, segment);
  if (status == HVC_NOT_FOUND) return;  // the segment was removed after the folder was listed
  if (status == HVC_SNAPSHOT_DAMAGED) {
    ++damagedParts_;
    return;
  }
  if (status != HVC_OK) throw Failure(folder_ + "/" + name.text(), status);
  damagedParts_ += segment.lostParts();
  Sample sample;
  std::vector<size_t> order = segment.InOrderOfTime();
  if (lastOfSecond_) KeepLastOfSeconds(segment, order);
  for (const size_t i : order) {
    const SegmentReader::Frame &frame = segment.frames()[i];
    const int64_t second = SecondOf(segment, i);
    if (second < from_ || second > to_ || (step_ > 0 && second / step_ == lastStep_)) continue;
    status = ThrowIfOutOfMemory(segment.Read(i, sample));
    if (status == HVC_SNAPSHOT_DAMAGED) {
      ++lost_;
      continue;
    }
    if (status != HVC_OK) throw Failure(folder_ + "/" + name.text(), status);
    if (step_ > 0) lastStep_ = second / step_;
    visitor(frame.info, sample, segment.host());
  }
}

}  // namespace nodal
