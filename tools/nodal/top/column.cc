#include "tools/nodal/top/column.h"

namespace nodal::top {

using platkit::Field;
using platkit::FieldType;
using platkit::FieldUnit;

const Field &FieldAt(const platkit::RecordLayout &layout, uint32_t offset) {
  for (const Field &field : layout.fields) {
    const uint32_t end = field.offset + field.size * field.count;
    if (offset < field.offset || offset >= end) continue;
    if (field.type != FieldType::kEntries) return field;
    return FieldAt(*field.entry, (offset - field.offset) % field.size);
  }
  return layout.fields.front();
}

const platkit::Node &Column::node() const { return *platkit::FindNode(static_cast<uint32_t>(terms[0].node)); }

const Field &Column::field() const { return FieldAt(*node().record, terms[0].offset); }

Quantity Column::ShownQuantity() const {
  if (quantity != Quantity::kCount || !terms[0]) return quantity;
  switch (field().unit) {
    case FieldUnit::KB:
    case FieldUnit::BYTES:
    case FieldUnit::PAGES:
    case FieldUnit::BLOCKS: return Quantity::kAmount;
    case FieldUnit::ID: return Quantity::kIdentifier;
    case FieldUnit::BOOL: return Quantity::kYesNo;
    default: return Quantity::kCount;
  }
}

std::string_view Column::Description() const {
  if (!meaning.empty() || !terms[0]) return meaning;
  return field().description;
}

}  // namespace nodal::top
