#include "tools/nodal/page/span_bands.h"

#include <algorithm>

#include "platkit/history/moment.h"
#include "platkit/path.h"
#include "tools/nodal/history/figure.h"
#include "tools/nodal/page/figure_changes.h"
#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/support/signals.h"
#include "tools/nodal/tree/field_value.h"
#include "tools/nodal/tree/tree.h"

namespace nodal {
namespace {

using platkit::history::Entry;
using platkit::history::Sample;

// A figure that the lanes of the page show: a field, and the paths of its records.
struct BandFigure {
  uint32_t node;
  std::string_view field;
  std::string_view paths;
};

constexpr BandFigure kBandFigures[] = {
    {nodes::memory_comprehensive.id(), "free", "/memory/comprehensive"},
    {nodes::sched_globalStats_memory_kestrel.id(), "memState", "/sched/globalStats/memory/kestrel"},
    {nodes::sched_groups_stats_memoryStats.id(), "consumed", "/sched/groups/*/stats/memoryStats"},
};

std::vector<FigurePattern> BandPatterns() {
  std::vector<FigurePattern> patterns;
  for (const BandFigure &figure : kBandFigures)
    patterns.emplace_back(std::string(figure.paths) + "." + std::string(figure.field));
  return patterns;
}

}  // namespace

std::string_view FieldWithBand(const platkit::Node &node) {
  const auto *const figure = std::ranges::find(kBandFigures, node.id, &BandFigure::node);
  return figure == std::end(kBandFigures) ? "" : figure->field;
}

SpanBands::SpanBands(HistoryRange &range, int64_t step, FigureBudget &budget, Progress &progress) : budget_(budget) {
  const std::vector<FigurePattern> patterns = BandPatterns();
  const FigureFilter filter(patterns);
  range.Visit(&filter, [&](const auto &info, const Sample &sample, const auto &host) {
    ThrowIfSignalled();
    progress.Advance();
    if (!HaveOwnSignature(host.definitions)) return;
    ++samples_;
    AddSample(sample, platkit::history::SecondsOf(info.time.wall) / step);
  });
}

void SpanBands::AddSample(const Sample &sample, int64_t step) {
  for (size_t i = 0; i < sample.size(); ++i) {
    const Entry entry = sample[i];
    if (i == inOrder_.size()) inOrder_.push_back(nullptr);
    // Most samples have the same keys as the previous sample.
    if (inOrder_[i] == nullptr || inOrder_[i]->first != entry.key) inOrder_[i] = &SeriesOf(entry.key);
    Series &series = inOrder_[i]->second;
    if (series.field == nullptr || entry.payload.size() != series.node->record->size) continue;
    const auto bytes = BytesOfField(*series.field, entry.payload);
    if (!IsNone(*series.field, bytes)) AddValue(series, step, AmountOf(IntegerOf(*series.field, bytes)));
  }
}

void SpanBands::AddValue(Series &series, int64_t step, int64_t value) {
  if (series.bands.empty() || series.bands.back().step != step) {
    budget_.Take();
    series.bands.push_back({step, value, value});
  }
  Band &band = series.bands.back();
  band.least = std::min(band.least, value);
  band.largest = std::max(band.largest, value);
}

SpanBands::PathSeries &SpanBands::SeriesOf(std::string_view path) {
  const auto known = series_.find(path);
  if (known != series_.end()) return *known;
  budget_.TakeRow(path.size());
  PathSeries &made = *series_.try_emplace(std::string(path)).first;
  Series &series = made.second;
  const platkit::PathTarget target = platkit::ParsePath(path);
  if (target.node == nullptr || !target.asRecord) return made;
  const auto found = std::ranges::find(target.node->record->fields, FieldWithBand(*target.node), &platkit::Field::name);
  series.node = target.node;
  if (found != target.node->record->fields.end()) series.field = &*found;
  return made;
}

const SpanBands::Band *SpanBands::Find(std::string_view path, int64_t step) const {
  const auto series = series_.find(path);
  if (series == series_.end()) return nullptr;
  const auto band = std::ranges::lower_bound(series->second.bands, step, {}, &Band::step);
  return band == series->second.bands.end() || band->step != step ? nullptr : &*band;
}

}  // namespace nodal
