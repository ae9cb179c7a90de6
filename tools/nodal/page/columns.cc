#include "tools/nodal/page/columns.h"

#include "tools/nodal/snapshot/record_json.h"

namespace nodal {
namespace {

using platkit::Field;
using platkit::FieldType;

void AddColumns(const Field &field, std::vector<Column> &columns) {
  if (field.type == FieldType::kGap || field.type == FieldType::kText) return;
  if (field.type != FieldType::kEntries) {
    columns.push_back({&field, std::string(field.name)});
    return;
  }
  for (uint32_t i = 0; i < field.count; ++i) {
    for (const Field &part : field.entry->fields) {
      if (part.type == FieldType::kGap) continue;
      const std::string name = std::string(field.name) + "[" + std::to_string(i) + "]." + std::string(part.name);
      columns.push_back({&part, name, field.offset + i * field.size});
    }
  }
}

}  // namespace

std::span<const std::byte> Column::BytesIn(std::span<const std::byte> record) const {
  return BytesOfField(*field, record.subspan(base));
}

std::vector<Column> ColumnsOf(const platkit::RecordLayout &layout) {
  std::vector<Column> columns;
  for (const Field &field : layout.fields)
    AddColumns(field, columns);
  return columns;
}

}  // namespace nodal
