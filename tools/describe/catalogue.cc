// Prints the nodes and the records of the tree.
#include "platkit/catalogue.h"

#include <algorithm>
#include <vector>

#include "tools/describe/roff.h"
#include "tools/describe/writers.h"

namespace describe::manual {
namespace {

using platkit::Field;
using platkit::FieldType;
using platkit::Instance;
using platkit::Node;
using platkit::RecordLayout;

std::string Name(const Instance &instance) {
  const std::string_view kind = instance.kind == platkit::ParamKind::kInt ? "integer" : "text";
  return Italic(instance.what) + " (" + std::string(kind) + ")";
}

std::string Path(const Node &node) {
  std::string path;
  for (uint32_t i = 0; i <= node.pathArguments; ++i) {
    path += Bold(node.pieces[i]);
    if (i < node.pathArguments) path += "\\:" + Italic(node.arguments[i].what);
  }
  return path;
}

std::string Arguments(const Node &node) {
  if (node.pathArguments == 0) return "No arguments.";
  std::string text = "Arguments:";
  for (uint32_t i = 0; i < node.pathArguments; ++i)
    text += (i == 0 ? " " : ", ") + Name(node.arguments[i]);
  return text + ".";
}

std::string Result(const Node &node) {
  if (!node.isList) return "Record: " + Bold(node.record->name) + ".";
  const std::string list = "List: " + Name(node.entry);
  if (!node.isRecord()) return list + ".";
  return list + ". Record, with an entry as the last argument: " + Bold(node.record->name) + ".";
}

void AddRecord(const RecordLayout &record, std::vector<const RecordLayout *> &records) {
  if (std::ranges::find(records, &record) != records.end()) return;
  for (const Field &field : record.fields) {
    if (field.type == FieldType::kEntries) AddRecord(*field.entry, records);
  }
  records.push_back(&record);
}

// Lists all records. A record that is part of another precedes it, as in the header.
std::vector<const RecordLayout *> Records() {
  std::vector<const RecordLayout *> records;
  for (const Node &node : platkit::Nodes()) {
    if (node.isRecord()) AddRecord(*node.record, records);
  }
  return records;
}

std::string_view TypeName(const Field &field) {
  switch (field.type) {
    case FieldType::kU8: return "uint8_t";
    case FieldType::kU16: return "uint16_t";
    case FieldType::kU32: return "uint32_t";
    case FieldType::kU64: return "uint64_t";
    case FieldType::kI32: return "int32_t";
    case FieldType::kI64: return "int64_t";
    case FieldType::kText: return "char";
    case FieldType::kEntries: return field.entry->name;
    case FieldType::kGap: break;
  }
  return "";
}

std::string MemberDeclaration(const Field &field) {
  std::string text = Literal(TypeName(field)) + " " + Bold(field.name);
  if (field.type == FieldType::kText) text += "[" + std::to_string(field.size) + "]";
  if (field.type == FieldType::kEntries) text += "[" + std::to_string(field.count) + "]";
  const std::string_view unit = platkit::UnitName(field.unit);
  return unit.empty() ? text : text + " (" + std::string(unit) + ")";
}

}  // namespace

void PrintNodes(std::ostream &out) {
  // No adjustment and no hyphenation: long paths break only at \:.
  out << ".ad l\n.nh\n";
  for (const Node &node : platkit::Nodes()) {
    out << ".TP 4\n"
        << Path(node) << "\n"
        << Bold("NODAL_NODE_") << "\\:" << Bold(node.name) << "\n.br\n"
        << Arguments(node) << "\n.br\n"
        << Result(node) << "\n";
  }
  out << ".hy\n.ad b\n";
}

void PrintRecords(std::ostream &out) {
  for (const RecordLayout *record : Records()) {
    out << ".SS " << Literal(record->name) << " (" << record->size << " bytes)\n.PD 0\n";
    for (const Field &field : record->fields) {
      if (field.type == FieldType::kGap) continue;
      out << ".TP\n" << MemberDeclaration(field) << "\n" << Prose(field.description) << "\n";
    }
    out << ".PD\n";
  }
}

}  // namespace describe::manual
