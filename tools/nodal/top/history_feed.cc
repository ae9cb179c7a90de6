#include <algorithm>
#include <optional>
#include <utility>

#include "platkit/history/history_source.h"
#include "platkit/history/moment.h"
#include "tools/nodal/history/moment_file.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/top/feed.h"

namespace nodal::top {
namespace {

using platkit::history::History;
using platkit::history::SegmentName;
using platkit::history::SegmentReader;

// The samples of a history, in the order of their time.
class HistoryCursor {
 public:
  // The place of a sample: its segment, and its index among the samples of the segment in the order of time.
  struct Place {
    SegmentName segment;
    size_t index = 0;
  };

  explicit HistoryCursor(const std::string &folder) : folder_(folder) { Reopen(); }

  History::Span Span() { return SpanOf(folder_, *history_); }

  // Lists the segments again: a recorder may have added some.
  void Reopen() {
    auto history = std::make_unique<History>();
    OpenHistory(folder_, *history);
    history_ = std::move(history);
    open_.reset();
  }

  // Finds the last sample at or before a second.
  std::optional<Place> FindLast(int64_t second) {
    const auto &segments = history_->segments();
    auto name = std::ranges::upper_bound(segments, SegmentName::AtSecond(second));
    while (name != segments.begin()) {
      if (!Open(*--name)) continue;
      for (size_t index = order_.size(); index-- > 0;) {
        if (platkit::history::SecondsOf(InfoAt(index).time.wall) <= second) return Place{*name, index};
      }
    }
    return std::nullopt;
  }

  std::optional<Place> Neighbour(const Place &place, bool isBack) {
    const auto &segments = history_->segments();
    if (Open(place.segment)) {
      if (isBack && place.index > 0) return Place{place.segment, place.index - 1};
      if (!isBack && place.index + 1 < order_.size()) return Place{place.segment, place.index + 1};
    }
    if (isBack) {
      auto before = std::ranges::lower_bound(segments, place.segment);
      while (before != segments.begin()) {
        if (Open(*--before) && !order_.empty()) return Place{*before, order_.size() - 1};
      }
      return std::nullopt;
    }
    for (auto after = std::ranges::upper_bound(segments, place.segment); after != segments.end(); ++after) {
      if (Open(*after) && !order_.empty()) return Place{*after, 0};
    }
    return std::nullopt;
  }

  bool Read(const Place &place, platkit::Moment &moment) {
    if (!Open(place.segment) || place.index >= order_.size()) return false;
    if (ThrowIfOutOfMemory(reader_.Read(order_[place.index], moment.sample)) != HVC_OK) return false;
    moment.info = InfoAt(place.index);
    moment.host = reader_.host();
    return true;
  }

 private:
  const platkit::history::SampleInfo &InfoAt(size_t index) const { return reader_.frames()[order_[index]].info; }

  // Returns false for a segment that was removed or is damaged.
  bool Open(const SegmentName &name) {
    if (open_ == name) return true;
    open_.reset();
    order_.clear();
    if (ThrowIfOutOfMemory(history_->Open(name, reader_)) != HVC_OK) return false;
    order_ = reader_.InOrderOfTime();
    open_ = name;
    return true;
  }

  const std::string folder_;
  std::unique_ptr<History> history_;
  SegmentReader reader_;
  std::optional<SegmentName> open_;
  std::vector<size_t> order_;  // the frames of the open segment, in the order of time
};

// A sample that was read, and its place.
struct HistorySample {
  explicit HistorySample(const HistoryCursor::Place &where) : place(where) {}

  HistoryCursor::Place place;
  platkit::Moment moment = {};
  platkit::SampleSource source{moment.sample, moment.host.definitions};
};

class HistoryFeed final : public Feed {
 public:
  HistoryFeed(const std::string &folder, const std::string &time) : folder_(folder), cursor_(folder) {
    const History::Span span = cursor_.Span();
    const std::string path = folder + "@" + time;
    std::optional<int64_t> second = span.last;
    if (!time.empty()) second = platkit::history::ParseTime(time, span.last);
    if (!second) throw MomentFailure(path, HVC_BAD_PARAM);
    if (*second < span.first || *second > span.validTo) throw MomentFailure(path, HVC_OUT_OF_RANGE);
    if (!time.empty()) CheckMoment(path);
    const std::optional<HistoryCursor::Place> place = cursor_.FindLast(*second);
    now_ = ReadFrom(place, true, skipped_);
    if (now_ == nullptr && skipped_.others > 0) throw Failure(folder, HVC_DEFINITIONS_DIFFER);
    if (now_ == nullptr) throw MomentFailure(path, HVC_SNAPSHOT_DAMAGED);
    before_ = NeighbourOf(*now_, true, skippedBefore_);
  }

  // The first call reads nothing, because the constructor has read the first sample.
  bool Step(bool isBack) override {
    if (!std::exchange(isTaken_, true)) return true;
    return isBack ? StepBack() : StepForth();
  }

  platkit::Source &Now() override { return now_->source; }
  platkit::Source *Before() override { return before_ == nullptr ? nullptr : &before_->source; }

  double Seconds() const override {
    const bool isSameBoot = before_ != nullptr && before_->moment.host.bootId == now_->moment.host.bootId;
    if (!isSameBoot) return 0;
    return static_cast<double>(now_->moment.info.time.boot - before_->moment.info.time.boot) /
           platkit::history::kNanosInSecond;
  }

  std::string Host() const override { return Printable(now_->moment.host.host); }
  std::string Time() const override {
    return platkit::history::TimeText(platkit::history::SecondsOf(now_->moment.info.time.wall));
  }
  std::string Kind() const override { return "history"; }
  bool isHistory() const override { return true; }
  std::string Moment() const override { return folder_ + "@" + Time(); }

  std::string Problem() const override {
    std::string text;
    if (skipped_.damaged > 0) text = Plural(skipped_.damaged, "damaged sample");
    if (skipped_.others > 0)
      text += (text.empty() ? "" : " and ") + Plural(skipped_.others, "sample") + " of another version";
    return text.empty() ? text : "left out: " + text;
  }

 private:
  using SamplePointer = std::unique_ptr<HistorySample>;

  // The numbers of samples that a step left out.
  struct Skipped {
    size_t damaged = 0;
    size_t others = 0;  // of another version, whose records may differ from this program's
  };

  // Throws a Failure if the moment that the user named cannot be shown, so that no earlier moment replaces it.
  static void CheckMoment(const std::string &path) {
    platkit::Moment moment;
    const HVC_ReturnStatus status = ThrowIfOutOfMemory(platkit::ReadMoment(path.c_str(), moment));
    if (status != HVC_OK) throw MomentFailure(path, status);
    if (!IsOwn(moment)) throw Failure(path, HVC_DEFINITIONS_DIFFER);
  }

  static bool IsOwn(const platkit::Moment &moment) { return HaveOwnSignature(moment.host.definitions); }

  // Returns the sample at a place, or the next one in that direction that can be shown, or null.
  SamplePointer ReadFrom(std::optional<HistoryCursor::Place> place, bool isBack, Skipped &skipped) {
    skipped = {};
    while (place) {
      auto sample = std::make_unique<HistorySample>(*place);
      const bool isRead = cursor_.Read(*place, sample->moment);
      if (isRead && IsOwn(sample->moment)) return sample;
      ++(isRead ? skipped.others : skipped.damaged);
      place = cursor_.Neighbour(*place, isBack);
    }
    return nullptr;
  }

  SamplePointer NeighbourOf(const HistorySample &sample, bool isBack, Skipped &skipped) {
    return ReadFrom(cursor_.Neighbour(sample.place, isBack), isBack, skipped);
  }

  bool StepForth() {
    SamplePointer next = NeighbourOf(*now_, false, skipped_);
    if (next == nullptr) {
      cursor_.Reopen();
      next = NeighbourOf(*now_, false, skipped_);
    }
    if (next == nullptr) return false;
    before_ = std::exchange(now_, std::move(next));
    skippedBefore_ = skipped_;
    return true;
  }

  bool StepBack() {
    skipped_ = skippedBefore_;
    if (before_ == nullptr) return false;
    now_ = std::move(before_);
    before_ = NeighbourOf(*now_, true, skippedBefore_);
    return true;
  }

  const std::string folder_;
  HistoryCursor cursor_;
  SamplePointer now_, before_;
  bool isTaken_ = false;
  Skipped skipped_;        // the samples that the last step left out
  Skipped skippedBefore_;  // the samples left out between the previous sample and the present one
};

}  // namespace

std::unique_ptr<Feed> OpenHistoryFeed(const std::string &path) {
  if (!IsMoment(path)) return std::make_unique<HistoryFeed>(path, "");
  const platkit::history::MomentPath parts = *platkit::history::SplitMoment(path);
  return std::make_unique<HistoryFeed>(parts.folder, parts.time);
}

}  // namespace nodal::top
