#include "tools/nodal/page/page_json.h"

#include <algorithm>

#include "platkit/version.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/field_value.h"

namespace nodal {
namespace {

using platkit::Field;

// Replaces the values with a single one if all are equal.
OrderedJson Packed(OrderedJson values) {
  const bool allEqual = std::ranges::all_of(values, [&](const OrderedJson &value) { return value == values[0]; });
  return allEqual && !values.empty() ? OrderedJson(values[0]) : values;
}

OrderedJson Values(const PageRecords &records, const Column &column) {
  OrderedJson values = OrderedJson::array();
  for (const auto &[row, bytes] : records.bytes)
    values.push_back(FieldToJson(*column.field, column.BytesIn(BytesOf(bytes))));
  return Packed(std::move(values));
}

OrderedJson RowsOf(const PageRecords &records) {
  OrderedJson rows = OrderedJson::array();
  for (const auto &[row, bytes] : records.bytes)
    rows.push_back(row);
  return rows;
}

OrderedJson RecordsToJson(const PageRecords &records, size_t rows) {
  OrderedJson json = {{"record", records.node->record->name}, {"node", records.node->path}};
  if (records.bytes.size() != rows) json["rows"] = RowsOf(records);
  for (const auto &[row, status] : records.unreadable)
    json["unreadable"].push_back({row, StatusText(status)});
  OrderedJson &columns = json["fields"] = OrderedJson::array();
  for (const Column &column : ColumnsOf(*records.node->record)) {
    columns.push_back(ColumnToJson(*records.node->record, column));
    columns.back()["values"] = OrderedJson::array({Values(records, column)});
  }
  return json;
}

template <typename Value>
OrderedJson OfEach(const std::vector<PageRow> &rows, Value value) {
  OrderedJson values = OrderedJson::array();
  for (const PageRow &row : rows)
    values.push_back(value(row));
  return Packed(std::move(values));
}

// Returns the identifier of an instance of the kind `what`, or null.
OrderedJson Identifier(const PageRow &row, std::string_view what) {
  const auto found = row.instances.find(what);
  return found == row.instances.end() ? OrderedJson() : OrderedJson(found->second.integer);
}

OrderedJson FamilyToJson(const PageFamily &family, RowKind kind = RowKind::kOther) {
  OrderedJson json = RowsToJson(family.rows, kind);
  OrderedJson &records = json["records"] = OrderedJson::array();
  for (const PageRecords &each : family.records)
    records.push_back(RecordsToJson(each, family.rows.size()));
  return json;
}

OrderedJson UnreadableListsToJson(const PageData &data) {
  OrderedJson json = OrderedJson::array();
  for (const UnreadableList &list : data.unreadableLists)
    json.push_back({list.path, StatusText(list.status)});
  return json;
}

}  // namespace

OrderedJson RowsToJson(const std::vector<PageRow> &rows, RowKind kind) {
  OrderedJson json = {{"count", rows.size()},
                      {"name", OfEach(rows, [](const PageRow &row) { return row.name; })},
                      {"id", OfEach(rows, [](const PageRow &row) { return row.id; })}};
  if (kind != RowKind::kGroup) return json;
  json["parent"] = OfEach(rows, [](const PageRow &row) { return row.parent; });
  json["tag"] = OfEach(rows, [](const PageRow &row) { return row.tag; });
  json["client"] = OfEach(rows, [](const PageRow &row) { return Identifier(row, "client"); });
  json["monitor"] = OfEach(rows, [](const PageRow &row) { return Identifier(row, "monitor"); });
  return json;
}

OrderedJson ColumnToJson(const platkit::RecordLayout &record, const Column &column) {
  OrderedJson json = {
      {"name", column.name}, {"unit", UnitInWords(column.field->unit)}, {"meaning", column.field->description}};
  if (IsLimit(record, *column.field)) json["limit"] = true;
  return json;
}

std::string PageJson(const PageData &data) {
  const OrderedJson json = {{"format", 1},
                            {"version", PLATKIT_VERSION},
                            {"host", data.host},
                            {"source", data.source},
                            {"instants", OrderedJson::array({data.time})},
                            {"families",
                             {{"host", FamilyToJson(data.hostFigures)},
                              {"state", FamilyToJson(data.states)},
                              {"group", FamilyToJson(data.groups, RowKind::kGroup)},
                              {"buddy", FamilyToJson(data.buddies)},
                              {"pool", FamilyToJson(data.pools)},
                              {"heap", FamilyToJson(data.heaps)}}},
                            {"unreadableLists", UnreadableListsToJson(data)}};
  return json.dump();
}

}  // namespace nodal
