#include "tools/nodal/top/reading.h"

#include <algorithm>
#include <cstring>

#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/field_value.h"

namespace nodal::top {
namespace {

using platkit::Field;
using platkit::FieldUnit;

double InKB(double number, FieldUnit unit) {
  switch (unit) {
    case FieldUnit::BYTES:
    case FieldUnit::PAGES:
    case FieldUnit::BLOCKS: return InBytes(number, unit) / 1024;
    default: return number;
  }
}

Cell FieldCell(const Field &field, std::span<const std::byte> bytes, bool isLimit) {
  // In an identifier, -1 is a number, such as the parent of the top group.
  const bool isNumber = field.unit == FieldUnit::ID || field.unit == FieldUnit::FLAGS;
  if (!isNumber && IsNone(field, bytes)) return {isLimit ? CellState::kUnlimited : CellState::kUnavailable};
  return ValueCell(InKB(NumberOf(field, bytes), field.unit));
}

// Returns the memory in all buffers of an allocator. The smallest buffers have 4 KB, and each next size is twice as
// large.
Cell BufferMemory(const Term &term, std::span<const std::byte> record, const Field &field) {
  Cell sum;
  double kb = 4;
  for (size_t size = 0; size < std::size(BuddyComprehensiveRecord().sizes); ++size, kb *= 2) {
    Cell cell = FieldCell(field, record.subspan(term.offset + size * sizeof(BuddySizeRecord), field.size), false);
    cell.number *= kb;
    Add(sum, cell);
  }
  return sum;
}

const platkit::RecordLayout &LayoutOf(const Term &term) {
  return *platkit::FindNode(static_cast<uint32_t>(term.node))->record;
}

Cell TermCell(const Term &term, std::span<const std::byte> record, const Field &field, bool isLimit) {
  if (term.isBufferMemory) return BufferMemory(term, record, field);
  Cell cell = FieldCell(field, record.subspan(term.offset, field.size), isLimit);
  cell.number *= term.factor;
  return cell;
}

// The figures of a row that are in no record.
Cell RowNumber(const Row &row, std::string_view name) {
  const auto number = [](int64_t value) {
    return value == Row::kUnset ? Cell() : ValueCell(static_cast<double>(value));
  };
  if (name == "gid" || name == "schedGrp") return number(row.group);
  if (name == "nChild") return ValueCell(row.members);
  if (name == "memNode") return number(row.memNode);
  return name == "numaNode" ? number(row.numaNode) : Cell();
}

}  // namespace

NodeSet NodesOf(const Screen &screen, std::span<const ColumnChoice> choices) {
  NodeSet nodes;
  for (const ColumnChoice &choice : choices) {
    if (choice.column->isSum()) {
      for (const std::string_view name : choice.column->sumOf) {
        const ColumnChoice part[] = {*FindColumn(screen, name)};
        nodes |= NodesOf(screen, part);
      }
    }
    for (const Term &term : choice.column->terms)
      nodes.set(static_cast<size_t>(term.node));
    nodes.set(static_cast<size_t>(choice.column->otherwise.node));
  }
  return nodes.reset(0);
}

const NodeRecords *Reading::Of(platkit::NodeId node) const {
  const auto found = std::ranges::find_if(
      records, [&](const NodeRecords &each) { return each.node->id == static_cast<uint32_t>(node); });
  return found == records.end() ? nullptr : &*found;
}

void Reading::MarkLate(const Reading *earlier) {
  isOwnLate = earlier == nullptr || earlier->isOwnLate;
  for (NodeRecords &each : records) {
    const NodeRecords *known = earlier == nullptr ? nullptr : earlier->Of(static_cast<platkit::NodeId>(each.node->id));
    each.isLate = known == nullptr || known->isLate;
  }
}

Cell TermValue(const Term &term, std::span<const std::byte> record) {
  const platkit::RecordLayout &layout = LayoutOf(term);
  const Field &field = FieldAt(layout, term.offset);
  return TermCell(term, record, field, IsLimit(layout, field));
}

ColumnReader::ColumnReader(const Reading &reading, const Column &column) : reading_(reading), column_(column) {
  for (const Term &term : column.terms) {
    if (term) parts_.push_back(PartOf(reading, term));
  }
  if (column.otherwise) otherwise_ = PartOf(reading, column.otherwise);
}

ColumnReader::Part ColumnReader::PartOf(const Reading &reading, const Term &term) {
  const platkit::RecordLayout &layout = LayoutOf(term);
  const Field &field = FieldAt(layout, term.offset);
  return {reading.Of(term.node), &field, term, IsLimit(layout, field)};
}

Cell ColumnReader::Value(const Part &part, size_t row) {
  if (part.records == nullptr) return UnavailableCell();  // the record was not read in this sample
  const HVC_ReturnStatus status = part.records->statuses[row];
  if (status == HVC_NOT_FOUND) return {};
  if (status != HVC_OK) return UnavailableCell();
  return TermCell(part.term, part.records->Of(row), *part.field, part.isLimit);
}

Cell ColumnReader::WithoutRecord(size_t row) const {
  return column_.use == Use::kRow ? reading_.own[row] : RowNumber(reading_.rows[row], column_.name);
}

Cell ColumnReader::operator()(size_t row) const {
  if (parts_.empty()) return WithoutRecord(row);
  Cell cell = Value(parts_[0], row);
  if (cell.state == CellState::kNone && otherwise_) return Value(*otherwise_, row);
  for (size_t i = 1; i < parts_.size(); ++i) {
    const Cell part = Value(parts_[i], row);
    // If one of its parts is not known, the figure is not known either.
    if (part.state != CellState::kValue || cell.state != CellState::kValue)
      return cell.state == CellState::kNone ? cell : UnavailableCell();
    cell.number += part.number;
  }
  return cell;
}

bool ColumnReader::isLate() const {
  if (parts_.empty()) return reading_.isOwnLate;
  return std::ranges::any_of(parts_, [](const Part &part) { return part.records != nullptr && part.records->isLate; });
}

std::string TextOf(const Reading &reading, const Column &column, size_t row) {
  const Row &own = reading.rows[row];
  if (!column.terms[0]) {
    if (own.figure == nullptr) return own.name;
    if (column.name == "report") return own.figure->report.empty() ? "." : std::string(own.figure->report);
    return column.name == "meaning" ? std::string(own.figure->figure.Description()) : own.name;
  }
  const NodeRecords *records = reading.Of(column.terms[0].node);
  if (records == nullptr) return "-";
  const HVC_ReturnStatus status = records->statuses[row];
  if (status != HVC_OK) return status == HVC_NOT_FOUND ? "." : "-";
  const auto bytes = records->Of(row).subspan(column.terms[0].offset, column.field().size);
  const std::string_view all(reinterpret_cast<const char *>(bytes.data()), bytes.size());
  return Printable(all.substr(0, all.find('\0')));
}

}  // namespace nodal::top
