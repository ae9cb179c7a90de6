#include "tools/nodal/commands/get.h"

#include <algorithm>
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/tree.h"

namespace nodal {
namespace {

using platkit::RecordLayout;

struct Row {
  std::string name;
  std::string value;
  std::string_view unit;
  std::string_view description;
};

// Adds a row for each named field. Unnamed bytes appear only in the JSON and the raw form.
void AddRows(const RecordLayout &layout, const OrderedJson &record, const std::string &prefix, std::vector<Row> &rows) {
  for (const platkit::Field &field : layout.fields) {
    if (field.type == platkit::FieldType::kGap) continue;
    const std::string name = prefix + std::string(field.name);
    const OrderedJson &value = record[std::string(field.name)];
    if (field.type == platkit::FieldType::kEntries) {
      for (size_t i = 0; i < value.size(); ++i)
        AddRows(*field.entry, value[i], name + "[" + std::to_string(i) + "].", rows);
    } else {
      rows.push_back({name, ShownValue(field, value), platkit::UnitName(field.unit), field.description});
    }
  }
}

void PrintRows(const std::vector<Row> &rows, bool descriptions) {
  const auto widest = [&rows](auto member) {
    size_t width = 0;
    for (const Row &row : rows)
      width = std::max(width, (row.*member).size());
    return width;
  };
  const size_t nameWidth = widest(&Row::name), valueWidth = widest(&Row::value), unitWidth = widest(&Row::unit);
  for (const Row &row : rows) {
    std::string line = row.name + std::string(nameWidth - row.name.size() + 2, ' ');
    line += std::string(valueWidth - row.value.size(), ' ') + row.value;
    if (!row.unit.empty() || descriptions) line += "  " + std::string(row.unit);
    if (descriptions) line += std::string(unitWidth - row.unit.size() + 2, ' ') + std::string(row.description);
    Print(line + "\n");
  }
}

void GetRecord(const platkit::PathTarget &target, const GetOptions &options) {
  const RecordLayout &layout = *target.node->record;
  std::string record(layout.size, '\0');
  const HVC_ReturnStatus status =
      HostTree().Get(*target.node, target.arguments, std::as_writable_bytes(std::span(record)));
  if (status != HVC_OK) throw Failure(options.path, status);
  if (options.raw) return Print(record);
  const OrderedJson json = RecordToJson(layout, BytesOf(record));
  if (options.json) return Print(json.dump(2, ' ', true) + "\n");
  std::vector<Row> rows;
  AddRows(layout, json, "", rows);
  PrintRows(rows, options.descriptions);
}

void GetList(const platkit::PathTarget &target, const GetOptions &options) {
  Arguments entries;
  const HVC_ReturnStatus status = HostTree().List(*target.node, target.arguments, entries);
  if (status != HVC_OK) throw Failure(options.path, status);
  OrderedJson json = OrderedJson::array();
  for (const Argument &entry : entries) {
    const bool isInt = entry.kind == ParamKind::kInt;
    if (options.json) {
      json.push_back(isInt ? OrderedJson(entry.integer) : TextToJson(entry.text));
    } else if (!options.raw) {
      Print((isInt ? std::to_string(entry.integer) : Printable(entry.text)) + "\n");
    } else if (isInt) {
      Print({reinterpret_cast<const char *>(&entry.integer), sizeof entry.integer});
    } else {
      Print(entry.text + '\0');
    }
  }
  if (options.json) Print(json.dump(2, ' ', true) + "\n");
}

}  // namespace

void Get(const GetOptions &options) {
  const platkit::PathTarget target = platkit::ParsePath(options.path);
  if (target.node == nullptr) throw Failure(options.path, HVC_NO_SUCH_NODE);
  if (target.asRecord) {
    GetRecord(target, options);
  } else {
    GetList(target, options);
  }
}

Run DeclareGet(OptionSet &options, const SourceOptions &source) {
  const auto values = std::make_shared<GetOptions>();
  options.Add("path", values->path, "The path of a node, such as /sched/groups/0/groupName").Required();
  const Option descriptions = options.AddFlag("-v,--verbose", values->descriptions, "Describe the fields");
  const Option json = options.AddFlag("--json", values->json, "Show JSON").Excludes(descriptions);
  options.AddFlag("--raw", values->raw, "Write the raw bytes").Excludes(json).Excludes(descriptions);
  return [values, &source] {
    UseSource(source);
    Get(*values);
    return kSuccess;
  };
}

}  // namespace nodal
