#include "tools/nodal/page/span_reader.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "platkit/history/history_source.h"
#include "platkit/history/moment.h"
#include "platkit/path.h"
#include "platkit/snapshot/format.h"
#include "tools/nodal/history/timeline.h"
#include "tools/nodal/page/page_reader.h"
#include "tools/nodal/page/span_bands.h"
#include "tools/nodal/page/span_rows.h"
#include "tools/nodal/support/signals.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/field_value.h"

namespace nodal {
namespace {

using platkit::SampleSource;
using platkit::history::Entry;
using platkit::history::Sample;
using platkit::history::SampleInfo;
using platkit::history::SecondsOf;
using platkit::snapshot::kFailurePrefix;

constexpr int64_t kMaxSteps = 1500;
constexpr size_t kMaxEvents = 500;

// A family in the data of one instant, and the same family in the span.
struct FamilyPair {
  PageFamily PageData::*now;
  SpanFamily PageSpan::*all;
};

constexpr FamilyPair kFamilies[] = {
    {&PageData::hostFigures, &PageSpan::hostFigures},
    {&PageData::states, &PageSpan::states},
    {&PageData::groups, &PageSpan::groups},
    {&PageData::buddies, &PageSpan::buddies},
    {&PageData::pools, &PageSpan::pools},
    {&PageData::heaps, &PageSpan::heaps},
};

bool AreEqual(const Entry &a, const Entry &b) { return a.type == b.type && std::ranges::equal(a.payload, b.payload); }

// Calls `visit` with the key of each entry that only one of the samples has, or that differs between them.
template <typename Visit>
void ForEachDifference(const Sample &before, const Sample &after, Visit visit) {
  size_t i = 0, k = 0;
  while (i < before.size() || k < after.size()) {
    const int order = i == before.size() ? 1 : k == after.size() ? -1 : before[i].key.compare(after[k].key);
    if (order != 0 || !AreEqual(before[i], after[k])) visit(order < 0 ? before[i].key : after[k].key);
    if (order <= 0) ++i;
    if (order >= 0) ++k;
  }
}

// Returns the path of an entry's node, whether the node has a value or could not be read.
std::string_view PathOfKey(std::string_view key) {
  return key.starts_with(kFailurePrefix) ? key.substr(kFailurePrefix.size()) : key;
}

FigureValue ValueOf(const Column &column, std::span<const std::byte> record) {
  const std::span<const std::byte> bytes = column.BytesIn(record);
  if (!IsSigned(column.field->type) && IsNone(*column.field, bytes)) return {.kind = FigureValue::kAllOnes};
  const uint64_t number = IntegerOf(*column.field, bytes);
  return NumberValue(IsSigned(column.field->type) ? static_cast<int64_t>(number) : AmountOf(number));
}

class SpanReader {
 public:
  SpanReader(const RangeOptions &range, Pseudonyms *pseudonyms)
      : options_(range), pseudonyms_(pseudonyms), budget_(range.folder) {
    for (const FamilyPair &family : kFamilies)
      rows_.emplace_back(span_.*family.all, budget_);
  }

  SpanReading Read() {
    FixRange();
    HistoryRange all({.folder = options_.folder, .from = options_.from, .to = options_.to});
    progress_.Begin("samples", samples_);
    const SpanBands bands(all, span_.step, budget_, progress_);
    bands_ = &bands;
    HistoryRange steps({.folder = options_.folder,
                        .from = options_.from,
                        .to = options_.to,
                        .step = std::to_string(span_.step) + "s",
                        .isQuiet = true,  // SpanBands has already reported damage
                        .lastOfSecond = true});
    progress_.Begin("steps", steps_);
    steps.Visit(nullptr, [this](const auto &info, const Sample &sample, const auto &header) {
      ThrowIfSignalled();
      progress_.Advance();
      AddSample(info, sample, header);
    });
    if (span_.seconds.empty() && others_)
      throw Failure(options_.folder, "all samples" + RangeText() + " were recorded by another version");
    if (span_.seconds.empty()) throw NoSample();
    if (others_) AddOthers(span_.seconds.back(), others_->second);
    span_.samples = bands.samples();
    return {.span = std::move(span_), .last = LastInstant(), .host = host_};
  }

 private:
  // Makes the range absolute, because times relative to the end of a history move while the history grows. Computes the
  // steps from the part of the range that has samples, and adds the events.
  void FixRange() {
    const HistoryRange range(options_);
    platkit::history::History history;
    OpenHistory(options_.folder, history);
    const platkit::history::History::Span all = SpanOf(options_.folder, history);
    options_.from = platkit::history::TimeText(range.from());
    options_.to = platkit::history::TimeText(range.to());
    const int64_t from = std::max(range.from(), all.first), to = std::min(range.to(), all.last);
    if (from > to) throw NoSample();
    options_.from = platkit::history::TimeText(from);
    options_.to = platkit::history::TimeText(to);
    const Timeline timeline = ReadTimeline(options_.folder, from, to);
    span_.step = StepOfSpan(to - from, timeline.host.intervalMillis / 1000);
    samples_ = timeline.samples;
    steps_ = std::min(samples_, static_cast<size_t>((to - from) / span_.step + 1));
    for (const TimelineEvent &event : timeline.events) {
      if (event.to >= from && event.from <= to) AddEvent({event.from, event.to, event.reasons});
    }
  }

  std::string RangeText() const { return " from " + options_.from + " to " + options_.to; }
  Failure NoSample() const { return {options_.folder, "no sample" + RangeText()}; }

  // Reasons can contain the release of the kernel, so an anonymized page has a fixed text instead.
  void AddEvent(SpanEvent event) {
    if (span_.events.size() == kMaxEvents) {
      ++span_.omittedEvents;
      return;
    }
    event.reasons = pseudonyms_ == nullptr ? Printable(event.reasons) : "the recording was interrupted";
    span_.events.push_back(std::move(event));
  }

  void AddSample(const SampleInfo &info, const Sample &sample, const platkit::history::HostHeader &header) {
    if (!HaveOwnSignature(header.definitions)) {
      const int64_t second = SecondsOf(info.time.wall);
      others_ = {others_ ? others_->first : second, second};
      return;
    }
    host_ = header.host;
    const auto instant = static_cast<uint32_t>(span_.seconds.size());
    const int64_t second = SecondsOf(info.time.wall);
    if (others_) AddOthers(instant > 0 ? span_.seconds.back() : others_->first, second);
    span_.seconds.push_back(second);
    budget_.Take();
    std::vector<std::string> changed = ChangedPaths(sample);
    previous_ = sample;
    if (AreRowsChanged(changed)) {
      ReadRows(instant);
      for (const auto &[path, place] : places_)
        AddRecord(instant, path, place);
      return;
    }
    for (const std::string &path : changed) {
      const auto [first, end] = places_.equal_range(path);
      for (auto place = first; place != end; ++place)
        AddRecord(instant, path, place->second);
    }
    // A band can change even if its figure does not.
    for (const auto &[path, place] : placesWithBands_)
      AddRecord(instant, path, place);
  }

  void AddOthers(int64_t from, int64_t to) {
    AddEvent({from, to, "samples of another version were left out"});
    others_.reset();
  }

  std::vector<std::string> ChangedPaths(const Sample &sample) const {
    std::vector<std::string> paths;
    ForEachDifference(previous_, sample, [&](std::string_view key) { paths.emplace_back(PathOfKey(key)); });
    return paths;
  }

  // Whether a node changed on which the rows depend.
  bool AreRowsChanged(const std::vector<std::string> &changed) const {
    if (span_.seconds.size() == 1) return true;
    return std::ranges::any_of(changed, [this](const std::string &path) {
      const platkit::PathTarget target = platkit::ParsePath(path);
      return target.node != nullptr && rowNodes_.contains(target.node->id);
    });
  }

  void ReadRows(uint32_t instant) {
    SampleSource source(previous_, platkit::OwnDefinitions());
    SourceTree host(source);
    CachingTree tree(host, ThrowIfSignalled);
    const PageData now = ReadPageRows(tree, pseudonyms_);
    for (const auto &[path, answer] : tree.answers())
      rowNodes_.insert(answer.node->id);
    AddUnreadableLists(instant, now.unreadableLists);
    places_.clear();
    placesWithBands_.clear();
    for (size_t family = 0; family < std::size(kFamilies); ++family) {
      const PageFamily &rowsNow = now.*kFamilies[family].now;
      rows_[family].Update(instant, rowsNow);
      FindPlaces(family, rowsNow);
    }
  }

  // A record of a row of the span.
  struct Place {
    size_t family;
    size_t records;
    size_t row;
  };

  void FindPlaces(size_t family, const PageFamily &now) {
    SpanFamily &all = span_.*kFamilies[family].all;
    for (size_t i = 0; i < all.records.size(); ++i) {
      const bool hasBand = std::ranges::any_of(all.records[i].columns, &SpanColumn::hasBand);
      for (size_t row = 0; row < now.rows.size(); ++row) {
        const std::optional<RecordPath> record = RecordOf(*all.records[i].node, now.rows[row]);
        if (!record) continue;
        const Place place = {family, i, rows_[family].rows()[row]};
        const std::string path = PathOf(*record->node, record->arguments);
        places_.emplace(path, place);
        if (hasBand) placesWithBands_.emplace_back(path, place);
      }
    }
  }

  void AddRecord(uint32_t instant, const std::string &path, const Place &place) {
    SpanFamily &family = span_.*kFamilies[place.family].all;
    SpanRecords &records = family.records[place.records];
    const bool isMachine = family.rows[place.row].instances.contains("monitor");
    Entry entry;
    const bool isThere = previous_.Find(path, entry);
    const bool isReadable = isThere && entry.type == platkit::history::ValueType::kRecord &&
                            entry.payload.size() == records.node->record->size;
    FigureValue missing;
    if (!isReadable && (isThere || HasFailed(path, entry))) {
      missing.kind = FigureValue::kUnreadable;
      AddStatus(records.unreadable[place.row], instant,
                isThere ? HVC_SNAPSHOT_DAMAGED : platkit::snapshot::FailureIn({entry.type, entry.payload}));
    }
    const SpanBands::Band *band = bands_->Find(path, span_.seconds.back() / span_.step);
    for (SpanColumn &column : records.columns) {
      if (column.isOfMachines && !isMachine) continue;
      const FigureValue value = isReadable ? ValueOf(column.column, entry.payload) : missing;
      Keep(column.values[place.row], instant, value);
      if (column.hasBand) AddBand(column, place.row, instant, value, band);
    }
  }

  void AddBand(SpanColumn &column, size_t row, uint32_t instant, const FigureValue &value,
               const SpanBands::Band *band) {
    const bool isNumber = value.kind == FigureValue::kNumber;
    FigureValue below = isNumber ? NumberValue(0) : FigureValue(), above = below;
    if (band != nullptr) {
      // The history may have grown since the bands were read.
      below = NumberValue(value.number - (isNumber ? std::min(band->least, value.number) : band->least));
      above = NumberValue(std::max(band->largest, value.number) - value.number);
    }
    Keep(column.below[row], instant, below);
    Keep(column.above[row], instant, above);
  }

  void Keep(FigureChanges &changes, uint32_t instant, const FigureValue &value) {
    if (AddValue(changes, instant, value)) budget_.Take();
  }

  // In the JSON, a status takes about as much memory as 16 figures.
  void AddStatus(FigureChanges &statuses, uint32_t instant, HVC_ReturnStatus status) {
    if (AddValue(statuses, instant, NumberValue(status))) budget_.Take(16);
  }

  bool HasFailed(const std::string &path, Entry &entry) const {
    return previous_.Find(std::string(kFailurePrefix) + path, entry);
  }

  void AddUnreadableLists(uint32_t instant, const std::vector<UnreadableList> &lists) {
    for (SpanUnreadableList &known : span_.unreadableLists) {
      if (known.instants.back().second == UINT32_MAX) known.instants.back().second = instant;
    }
    for (const UnreadableList &list : lists) {
      budget_.TakeRow(list.path.size());
      const auto [known, isNew] = unreadable_.emplace(std::pair(list.path, list.status), span_.unreadableLists.size());
      if (isNew) span_.unreadableLists.push_back({.path = list.path, .status = list.status});
      auto &instants = span_.unreadableLists[known->second].instants;
      if (!instants.empty() && instants.back().second >= instant) {
        instants.back().second = UINT32_MAX;
      } else {
        instants.emplace_back(instant, UINT32_MAX);
      }
    }
  }

  PageData LastInstant() {
    SampleSource source(previous_, platkit::OwnDefinitions());
    SourceTree host(source);
    CachingTree tree(host, ThrowIfSignalled);
    return ReadPageData(tree, pseudonyms_);
  }

  RangeOptions options_;
  Pseudonyms *const pseudonyms_;
  FigureBudget budget_;
  const SpanBands *bands_ = nullptr;
  Progress progress_;
  size_t samples_ = 0;  // the approximate number of samples in the range
  size_t steps_ = 0;
  PageSpan span_;
  // The first and the last second of the samples of another version since the last instant.
  std::optional<std::pair<int64_t, int64_t>> others_;
  std::string host_;
  std::vector<SpanRows> rows_;  // by family
  Sample previous_;
  std::map<std::pair<std::string, HVC_ReturnStatus>, size_t> unreadable_;  // indexes of span_.unreadableLists
  std::set<uint32_t> rowNodes_;                                            // the nodes on which the rows depend
  std::unordered_multimap<std::string, Place> places_;
  std::vector<std::pair<std::string, Place>> placesWithBands_;
};

}  // namespace

int64_t StepOfSpan(int64_t seconds, int64_t least) {
  constexpr int64_t kMinute = 60, kHour = 60 * kMinute, kDay = 24 * kHour;
  constexpr int64_t kSteps[] = {1,       2,           5,           10,           15,           30,
                                kMinute, 2 * kMinute, 5 * kMinute, 10 * kMinute, 15 * kMinute, 30 * kMinute,
                                kHour,   2 * kHour,   6 * kHour,   kDay};
  // A forged history may state any interval.
  const int64_t bounded = std::min(least, std::max(seconds, kMinute));
  // The steps at both ends of the span may be partial.
  constexpr int64_t kMostWhole = kMaxSteps - 2;
  for (const int64_t step : kSteps) {
    if (step >= bounded && seconds / step <= kMostWhole) return step;
  }
  return std::max(bounded, seconds / (kMostWhole + 1) + 1);
}

SpanReading ReadSpan(const RangeOptions &range, Pseudonyms *pseudonyms) { return SpanReader(range, pseudonyms).Read(); }

}  // namespace nodal
