#include "tools/nodal/page/static_span.h"

#include <algorithm>
#include <optional>

#include "platkit/history/moment.h"
#include "platkit/memory_states.h"
#include "tools/nodal/page/html.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::history::TimeText;
using Cells = std::vector<std::string>;

// A value of the figure's first row, and the instant of its step.
struct Extreme {
  int64_t value;
  uint32_t instant;
};

struct Extremes {
  std::optional<Extreme> least;
  std::optional<Extreme> largest;
};

const SpanColumn *ColumnNamed(const SpanFamily &family, const Node &node, std::string_view name) {
  for (const SpanRecords &records : family.records) {
    if (records.node != &node) continue;
    const auto found =
        std::ranges::find(records.columns, name, [](const SpanColumn &each) { return each.column.name; });
    if (found != records.columns.end()) return &*found;
  }
  return nullptr;
}

Extremes ExtremesOf(const SpanColumn *column, size_t instants) {
  Extremes extremes;
  if (column == nullptr || column->values.empty()) return extremes;
  for (uint32_t i = 0; i < instants; ++i) {
    const FigureValue value = ValueAt(column->values[0], i);
    const FigureValue below = ValueAt(column->below[0], i), above = ValueAt(column->above[0], i);
    if (below.kind != FigureValue::kNumber) continue;
    const int64_t least = value.number - below.number;
    const int64_t largest = value.number + above.number;
    if (!extremes.least || least < extremes.least->value) extremes.least = {least, i};
    if (!extremes.largest || largest > extremes.largest->value) extremes.largest = {largest, i};
  }
  return extremes;
}

template <typename Text>
Cells RowOf(const PageSpan &span, std::string what, const Extremes &extremes, Text text) {
  Cells cells = {std::move(what)};
  for (const std::optional<Extreme> &extreme : {extremes.least, extremes.largest}) {
    cells.push_back(extreme ? text(extreme->value) : "n/a");
    cells.push_back(extreme ? TimeText(span.seconds[extreme->instant]) : "");
  }
  return cells;
}

std::string StateText(int64_t state) {
  const bool isKnown = state >= 0 && static_cast<size_t>(state) < platkit::kMemoryStates.size();
  return isKnown ? std::string(platkit::kMemoryStates[static_cast<size_t>(state)]) : "unknown";
}

std::string SpanAmount(int64_t kb) { return AmountText(static_cast<uint64_t>(kb)); }

}  // namespace

std::string StaticSpan(const PageSpan &span) {
  const size_t instants = span.seconds.size();
  const Extremes state =
      ExtremesOf(ColumnNamed(span.hostFigures, nodes::sched_globalStats_memory_kestrel, "memState"), instants);
  const Extremes free = ExtremesOf(ColumnNamed(span.hostFigures, nodes::memory_comprehensive, "free"), instants);
  const Extremes consumed =
      ExtremesOf(ColumnNamed(span.groups, nodes::sched_groups_stats_memoryStats, "consumed"), instants);
  const std::string text = Plural(span.samples, "sample") + " from " + TimeText(span.seconds.front()) + " to " +
                           TimeText(span.seconds.back()) + ", in steps of " + std::to_string(span.step) +
                           " s. Without scripts, the views below show the last step.";
  return Element("p", text) +
         HtmlTable("The host in this span", {"figure", "least", "in the step of", "most", "in the step of"},
                   {RowOf(span, "memory state", state, StateText), RowOf(span, "free memory", free, SpanAmount),
                    RowOf(span, "consumed by groups", consumed, SpanAmount)});
}

}  // namespace nodal
