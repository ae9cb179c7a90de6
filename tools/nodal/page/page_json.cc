#include "tools/nodal/page/page_json.h"

#include <algorithm>

#include "platkit/version.h"
#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/field_value.h"

namespace nodal {
namespace {

using platkit::Field;
using platkit::FieldType;

// A column of one value takes the place of equal values.
OrderedJson Packed(OrderedJson values) {
  const bool allEqual = std::ranges::all_of(values, [&](const OrderedJson &value) { return value == values[0]; });
  return allEqual && !values.empty() ? OrderedJson(values[0]) : values;
}

// The values of one field of the records. `entry` is the offset of an array's entry in the record.
OrderedJson Values(const PageRecords &records, const Field &field, uint32_t entry) {
  OrderedJson values = OrderedJson::array();
  for (const auto &[row, bytes] : records.bytes) {
    const auto record = BytesOf(bytes).subspan(entry);
    values.push_back(FieldToJson(field, BytesOfField(field, record)));
  }
  return Packed(std::move(values));
}

OrderedJson Column(const PageRecords &records, const Field &field, const std::string &name, uint32_t entry = 0) {
  OrderedJson column = {{"name", name},
                        {"unit", UnitInWords(field.unit)},
                        {"meaning", field.description},
                        {"values", OrderedJson::array({Values(records, field, entry)})}};
  if (IsLimit(*records.node->record, field)) column["limit"] = true;
  return column;
}

void AddColumns(const PageRecords &records, const Field &field, OrderedJson &columns) {
  if (field.type == FieldType::kGap || field.type == FieldType::kText) return;
  if (field.type != FieldType::kEntries) return columns.push_back(Column(records, field, std::string(field.name)));
  for (uint32_t i = 0; i < field.count; ++i) {
    for (const Field &part : field.entry->fields) {
      if (part.type == FieldType::kGap) continue;
      const std::string name = std::string(field.name) + "[" + std::to_string(i) + "]." + std::string(part.name);
      columns.push_back(Column(records, part, name, field.offset + i * field.size));
    }
  }
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
  for (const Field &field : records.node->record->fields)
    AddColumns(records, field, columns);
  return json;
}

template <typename Value>
OrderedJson Row(const PageFamily &family, Value value) {
  OrderedJson values = OrderedJson::array();
  for (const PageRow &row : family.rows)
    values.push_back(value(row));
  return Packed(std::move(values));
}

// The identifier of an instance of the kind `what`, or null.
OrderedJson Identifier(const PageRow &row, std::string_view what) {
  const auto found = row.instances.find(what);
  return found == row.instances.end() ? OrderedJson() : OrderedJson(found->second.integer);
}

OrderedJson FamilyToJson(const PageFamily &family) {
  OrderedJson json = {{"count", family.rows.size()},
                      {"name", Row(family, [](const PageRow &row) { return row.name; })},
                      {"id", Row(family, [](const PageRow &row) { return row.id; })}};
  OrderedJson &records = json["records"] = OrderedJson::array();
  for (const PageRecords &each : family.records)
    records.push_back(RecordsToJson(each, family.rows.size()));
  return json;
}

OrderedJson GroupsToJson(const PageFamily &groups) {
  OrderedJson json = FamilyToJson(groups);
  json["parent"] = Row(groups, [](const PageRow &row) { return row.parent; });
  json["tag"] = Row(groups, [](const PageRow &row) { return row.tag; });
  json["client"] = Row(groups, [](const PageRow &row) { return Identifier(row, "client"); });
  json["monitor"] = Row(groups, [](const PageRow &row) { return Identifier(row, "monitor"); });
  return json;
}

OrderedJson UnreadableListsToJson(const PageData &data) {
  OrderedJson json = OrderedJson::array();
  for (const UnreadableList &list : data.unreadableLists)
    json.push_back({list.path, StatusText(list.status)});
  return json;
}

}  // namespace

std::string PageJson(const PageData &data) {
  const OrderedJson json = {{"format", 1},
                            {"version", PLATKIT_VERSION},
                            {"host", data.host},
                            {"source", data.source},
                            {"instants", OrderedJson::array({data.time})},
                            {"families",
                             {{"host", FamilyToJson(data.hostFigures)},
                              {"state", FamilyToJson(data.states)},
                              {"group", GroupsToJson(data.groups)},
                              {"buddy", FamilyToJson(data.buddies)},
                              {"pool", FamilyToJson(data.pools)},
                              {"heap", FamilyToJson(data.heaps)}}},
                            {"unreadableLists", UnreadableListsToJson(data)}};
  return json.dump();
}

}  // namespace nodal
