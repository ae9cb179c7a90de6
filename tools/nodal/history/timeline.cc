#include "tools/nodal/history/timeline.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "platkit/history/moment.h"

namespace nodal {
namespace {

using platkit::history::History;
using platkit::history::HostHeader;
using platkit::history::SampleInfo;
using platkit::history::SecondsOf;
using platkit::history::SegmentName;
using platkit::history::SegmentReader;
using platkit::history::TimeText;

// Thinning keeps one sample of each minute.
constexpr double kThinnedInterval = 60;

// A sample, and what happened between it and the previous sample.
struct Point {
  SampleInfo info;
  size_t host;  // index of its header
  size_t boot;  // index of its boot
  bool afterEnd = false;
  bool afterDamage = false;
};

double Seconds(int64_t nanos) { return static_cast<double>(nanos) / 1e9; }

// Formats a duration, such as 3 h 12 min.
std::string DurationText(double seconds) {
  char text[48];
  const auto whole = static_cast<int64_t>(std::llround(seconds));
  const auto unit = [&](int64_t large, const char *largeName, int64_t small, const char *smallName) {
    std::snprintf(text, sizeof text, "%lld %s %lld %s", static_cast<long long>(whole / large), largeName,
                  static_cast<long long>(whole % large / small), smallName);
  };
  if (whole >= 86400) {
    unit(86400, "d", 3600, "h");
  } else if (whole >= 3600) {
    unit(3600, "h", 60, "min");
  } else if (whole >= 60) {
    unit(60, "min", 1, "s");
  } else {
    std::snprintf(text, sizeof text, "%lld s", static_cast<long long>(whole));
  }
  return text;
}

class TimelineReader {
 public:
  TimelineReader(const std::string &folder, int64_t from, int64_t to) : folder_(folder), from_(from), to_(to) {}

  Timeline Read() {
    OpenHistory(folder_, history_);
    const History::Span span = SpanOf(folder_, history_);
    timeline_.first = span.first;
    timeline_.last = span.last;
    for (const SegmentName name : history_.segments()) {
      if (name >= SegmentName::AtSecond(from_) && name <= SegmentName::AtSecond(to_)) ReadSegment(name);
    }
    timeline_.samples = points_.size();
    SortByRecording();
    for (size_t i = 1; i < points_.size(); ++i)
      AddEvents(points_[i - 1], points_[i]);
    if (!points_.empty()) timeline_.host = hosts_[points_.back().host];
    return std::move(timeline_);
  }

 private:
  void ReadSegment(SegmentName name) {
    const std::string text = name.text();
    SegmentReader segment;
    const HVC_ReturnStatus status = history_.Open(name, segment);
    if (status == HVC_NOT_FOUND) return;  // the segment was removed after the folder was listed
    if (status != HVC_OK && status != HVC_SNAPSHOT_DAMAGED) throw Failure(folder_ + "/" + text, status);
    TimelineDay &day = timeline_.days[text.substr(0, text.find('T'))];
    day.bytes += segment.bytes();
    timeline_.bytes += segment.bytes();
    timeline_.damagedParts += status == HVC_OK ? segment.lostParts() : 1;
    if (status == HVC_OK) AddPoints(segment, day);
  }

  void AddPoints(SegmentReader &segment, TimelineDay &day) {
    size_t host = SIZE_MAX;
    bool isAfterLoss = false;
    for (size_t i = 0; i < segment.frames().size(); ++i) {
      const SegmentReader::Frame &frame = segment.frames()[i];
      if (frame.isEnd) {
        afterEnd_ = true;
        continue;
      }
      if (!segment.hasBase(i)) {
        isAfterLoss = true;
        continue;
      }
      HostHeader header;
      if (frame.isKey && segment.ReadHost(i, header) == HVC_OK) host = IndexOf(header);
      if (host == SIZE_MAX) continue;  // before the first readable key frame
      points_.push_back(
          {frame.info, host, boots_.at(hosts_[host].bootId), afterEnd_, frame.followsDamage || isAfterLoss});
      isAfterLoss = false;
      afterEnd_ = false;
      ++day.samples;
    }
  }

  size_t IndexOf(const HostHeader &header) {
    const auto [found, isNew] = indexes_.emplace(header, hosts_.size());
    if (isNew) {
      hosts_.push_back(header);
      boots_.emplace(header.bootId, boots_.size());
    }
    return found->second;
  }

  // Segments are in the order of the wall clock, which may have been set back. The boot clock is never set back.
  void SortByRecording() {
    std::ranges::stable_sort(points_, {},
                             [](const Point &point) { return std::pair(point.boot, point.info.time.boot); });
  }

  void AddEvents(const Point &before, const Point &after) {
    const bool isReboot = before.boot != after.boot;
    const auto passed = [&](auto clock) { return Seconds(after.info.time.*clock - before.info.time.*clock); };
    const double wall = passed(&platkit::history::SampleTime::wall);
    const double boot = passed(&platkit::history::SampleTime::boot);
    const double elapsed = isReboot ? wall : boot;
    std::vector<std::string> reasons = isReboot
                                           ? std::vector<std::string>{"the host was rebooted"}
                                           : ClockReasons(wall, boot, passed(&platkit::history::SampleTime::monotonic));
    timeline_.reboots += isReboot ? 1 : 0;
    const std::string &oldKernel = hosts_[before.host].kernel, &newKernel = hosts_[after.host].kernel;
    if (oldKernel != newKernel) reasons.push_back("the kernel changed from " + oldKernel + " to " + newKernel);
    const bool isStart = (after.info.marks & platkit::history::kRecorderStarted) != 0;
    if (after.afterEnd && isStart) {
      reasons.push_back("the recorder was stopped");
    } else if (isStart && !isReboot) {
      reasons.push_back("the recorder ended unexpectedly");
    }
    if (after.afterDamage) reasons.push_back("the file is damaged");
    const bool isGap = elapsed >= LongestInterval(after);
    if (reasons.empty() && isGap) reasons.push_back("no samples were taken");
    if (!reasons.empty()) AddEvent(before, after, elapsed, reasons);
  }

  static std::vector<std::string> ClockReasons(double wall, double boot, double monotonic) {
    std::vector<std::string> reasons;
    const double asleep = boot - monotonic;
    // A clock that is slewed gains or loses at most 0.05 %.
    const double shift = wall - boot, tolerance = 1 + boot / 1000;
    if (asleep > 1) reasons.push_back("the host was asleep for " + DurationText(asleep));
    if (std::abs(shift) > tolerance)
      reasons.push_back((shift < 0 ? "the clock was set back by " : "the clock was set forward by ") +
                        DurationText(std::abs(shift)));
    return reasons;
  }

  // If two samples are at least this many seconds apart, a sample between them is missing.
  double LongestInterval(const Point &point) const {
    const bool isThinned = (point.info.marks & platkit::history::kThinned) != 0;
    const double interval = hosts_[point.host].intervalMillis / 1000.0;
    return 2 * std::max(isThinned ? kThinnedInterval : 0.0, std::max(interval, 1.0));
  }

  void AddEvent(const Point &before, const Point &after, double elapsed, const std::vector<std::string> &reasons) {
    TimelineEvent event = {SecondsOf(before.info.time.wall), SecondsOf(after.info.time.wall), elapsed, ""};
    for (const std::string &reason : reasons)
      event.reasons += (event.reasons.empty() ? "" : "; ") + reason;
    timeline_.events.push_back(std::move(event));
  }

  const std::string folder_;
  const int64_t from_;
  const int64_t to_;
  History history_;
  Timeline timeline_;
  std::vector<HostHeader> hosts_;
  std::map<HostHeader, size_t> indexes_;  // indexes in hosts_
  std::map<decltype(HostHeader::bootId), size_t> boots_;
  std::vector<Point> points_;
  bool afterEnd_ = false;
};

}  // namespace

Timeline ReadTimeline(const std::string &folder, int64_t from, int64_t to) {
  return TimelineReader(folder, from, to).Read();
}

}  // namespace nodal
