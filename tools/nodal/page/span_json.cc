#include "tools/nodal/page/span_json.h"

#include <algorithm>

#include "platkit/history/moment.h"
#include "platkit/version.h"
#include "tools/nodal/page/compression.h"
#include "tools/nodal/page/page_json.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::FieldUnit;

constexpr double kTolerances[] = {0, 0.001, 0.002, 0.005, 0.01, 0.02, 0.03};

// Whether small changes of a figure may be omitted, as for amounts and counts of free blocks.
bool IsTolerant(const Column &column) {
  switch (column.field->unit) {
    case FieldUnit::KB:
    case FieldUnit::BYTES:
    case FieldUnit::PAGES: return true;
    case FieldUnit::COUNT: return column.name.ends_with("].free");
    default: return false;
  }
}

// Returns the distance of the band from the kept values. A distance that is a small part of the value becomes 0.
FigureChanges BandAround(const FigureChanges &values, const FigureChanges &kept, const FigureChanges &band, int sign,
                         double tolerance) {
  FigureChanges around;
  auto value = values.begin();
  auto part = band.begin();
  while (value != values.end() || part != band.end()) {
    const uint32_t instant =
        std::min(value == values.end() ? UINT32_MAX : value->instant, part == band.end() ? UINT32_MAX : part->instant);
    if (value != values.end() && value->instant == instant) ++value;
    if (part != band.end() && part->instant == instant) ++part;
    const FigureValue exact = ValueAt(values, instant), inBand = ValueAt(band, instant);
    if (exact.kind != FigureValue::kNumber || inBand.kind != FigureValue::kNumber) {
      AddValue(around, instant, inBand);
      continue;
    }
    const int64_t edge = exact.number + sign * inBand.number;
    const int64_t from = ValueAt(kept, instant).number;
    const int64_t reach = std::max<int64_t>(sign * (edge - from), 0);
    const bool isSmall = static_cast<double>(reach) <= tolerance * static_cast<double>(from);
    AddValue(around, instant, NumberValue(isSmall ? 0 : reach));
  }
  return WithoutSmallChanges(around, tolerance);
}

// Keeps all changes of the first `exactRows` rows.
std::string EncodedColumns(const SpanColumn &column, double tolerance, size_t exactRows) {
  if (tolerance == 0 || !IsTolerant(column.column)) {
    std::string bytes = EncodedColumn(column.values);
    if (column.hasBand) bytes += EncodedColumn(column.below) + EncodedColumn(column.above);
    return bytes;
  }
  std::vector<FigureChanges> values, below, above;
  for (size_t row = 0; row < column.values.size(); ++row) {
    const FigureChanges &all = column.values[row];
    const double ofRow = row < exactRows ? 0 : tolerance;
    values.push_back(WithoutSmallChanges(all, ofRow));
    if (!column.hasBand) continue;
    below.push_back(BandAround(all, values.back(), column.below[row], -1, ofRow));
    above.push_back(BandAround(all, values.back(), column.above[row], 1, ofRow));
  }
  std::string bytes = EncodedColumn(values);
  if (column.hasBand) bytes += EncodedColumn(below) + EncodedColumn(above);
  return bytes;
}

std::string Encoded(const SpanFamily &family, double tolerance, size_t exactRows = 0) {
  std::string bytes = EncodedColumn(family.lives);
  for (const SpanRecords &records : family.records) {
    for (const SpanColumn &column : records.columns)
      bytes += EncodedColumns(column, tolerance, exactRows);
  }
  return bytes;
}

// Encodes the figures in the order of the JSON. The figures of the host and of the first group, which is the host's,
// are exact.
std::string Encoded(const PageSpan &span, double tolerance) {
  return Encoded(span.hostFigures, 0) + Encoded(span.states, 0) + Encoded(span.groups, tolerance, 1) +
         Encoded(span.buddies, tolerance) + Encoded(span.pools, tolerance) + Encoded(span.heaps, tolerance);
}

OrderedJson RecordsToJson(const SpanRecords &records) {
  OrderedJson json = {{"record", records.node->record->name}, {"node", records.node->path}};
  for (const auto &[row, statuses] : records.unreadable) {
    for (const auto &[instant, status] : statuses)
      json["unreadable"].push_back({row, StatusText(static_cast<HVC_ReturnStatus>(status.number)), instant});
  }
  OrderedJson &columns = json["fields"] = OrderedJson::array();
  for (const SpanColumn &column : records.columns) {
    columns.push_back(ColumnToJson(*records.node->record, column.column));
    if (column.hasBand) columns.back()["band"] = true;
  }
  return json;
}

OrderedJson FamilyToJson(const SpanFamily &family, RowKind kind = RowKind::kOther) {
  OrderedJson json = RowsToJson(family.rows, kind);
  OrderedJson &records = json["records"] = OrderedJson::array();
  for (const SpanRecords &each : family.records)
    records.push_back(RecordsToJson(each));
  return json;
}

OrderedJson InstantsToJson(const PageSpan &span) {
  OrderedJson json = OrderedJson::array();
  for (const int64_t second : span.seconds)
    json.push_back(platkit::history::TimeText(second));
  return json;
}

OrderedJson EventsToJson(const PageSpan &span) {
  OrderedJson json = OrderedJson::array();
  for (const SpanEvent &event : span.events)
    json.push_back({event.from, event.to, event.reasons});
  return json;
}

OrderedJson UnreadableListsToJson(const PageSpan &span) {
  OrderedJson json = OrderedJson::array();
  for (const SpanUnreadableList &list : span.unreadableLists) {
    OrderedJson instants = OrderedJson::array();
    for (const auto &[from, to] : list.instants)
      instants.insert(instants.end(), {from, std::min<size_t>(to, span.seconds.size())});
    json.push_back({list.path, StatusText(list.status), instants});
  }
  return json;
}

}  // namespace

PackedSpan Packed(const PageSpan &span, size_t mostBytes) {
  PackedSpan packed;
  for (const double tolerance : kTolerances) {
    packed = {.values = CompressedBase64(Encoded(span, tolerance)), .tolerance = tolerance};
    if (packed.values.size() <= mostBytes) break;
  }
  return packed;
}

std::string SpanJson(const PageSpan &span, const PageData &last, double tolerance) {
  const OrderedJson json = {{"format", 1},
                            {"version", PLATKIT_VERSION},
                            {"host", last.host},
                            {"source", last.source},
                            {"instants", InstantsToJson(span)},
                            {"span",
                             {{"step", span.step},
                              {"samples", span.samples},
                              {"tolerance", tolerance},
                              {"events", EventsToJson(span)},
                              {"omittedEvents", span.omittedEvents}}},
                            {"families",
                             {{"host", FamilyToJson(span.hostFigures)},
                              {"state", FamilyToJson(span.states)},
                              {"group", FamilyToJson(span.groups, RowKind::kGroup)},
                              {"buddy", FamilyToJson(span.buddies)},
                              {"pool", FamilyToJson(span.pools)},
                              {"heap", FamilyToJson(span.heaps)}}},
                            {"unreadableLists", UnreadableListsToJson(span)}};
  return json.dump();
}

}  // namespace nodal
