// The columns of the live view. Each screen has one table of them.
#ifndef NODAL_TOP_COLUMN_H
#define NODAL_TOP_COLUMN_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platkit/node_ref.h"
#include "tools/nodal/top/cell.h"

namespace nodal::top {

enum class Use : uint8_t {
  kText,         // a text of the record
  kLevel,        // a current amount or number, which adds up over rows
  kCounter,      // only grows, and adds up; NAME/s is its change per second
  kHostCounter,  // a counter of the whole host: each row has the same figure, which does not add up
  kSetting,      // a limit, a share or an identifier: does not add up, and is no sign of activity
  kRow,          // each row shows a figure of its own
};

// A field of a node's record.
struct Term {
  platkit::NodeId node = platkit::NodeId::kNone;
  uint32_t offset = 0;
  int factor = 1;
  uint8_t state = 0;            // for a count of state transitions: the state
  bool isBufferMemory = false;  // the memory of the buffers of all sizes; the field is the smallest size's

  explicit constexpr operator bool() const { return node != platkit::NodeId::kNone; }
};

// A node or a field that does not exist is a compile error.
#define TOP_FIELD(node, field) \
  Term { platkit::NodeId::node, offsetof(decltype(platkit::nodes::node)::Record, field) }
#define TOP_TIMES(node, field, factor) \
  Term { platkit::NodeId::node, offsetof(decltype(platkit::nodes::node)::Record, field), factor }

struct Column {
  std::string_view name;  // the name in the reports
  Use use;
  std::array<Term, 4> terms = {};  // their sum is the figure
  Term otherwise = {};             // the figure of rows without the record of the first term
  bool isDefault = false;
  // Set only if the quantity does not follow from the unit of the field.
  Quantity quantity = Quantity::kCount;
  std::string_view meaning = {};  // instead of the field's description
  // Instead of terms: the columns whose figures add up to this one.
  std::array<std::string_view, 2> sumOf = {};

  const platkit::Node &node() const;
  const platkit::Field &field() const;
  Quantity ShownQuantity() const;
  std::string_view Description() const;
  bool isSum() const { return !sumOf[0].empty(); }
  bool isCounter() const { return use == Use::kCounter || use == Use::kHostCounter; }
  bool AddsUp() const { return use == Use::kLevel || use == Use::kCounter; }
};

// Returns the field at an offset of a record, which may be in an entry of an array.
const platkit::Field &FieldAt(const platkit::RecordLayout &layout, uint32_t offset);

// A shown column: its figure, or the rate of this figure.
struct ColumnChoice {
  const Column *column = nullptr;
  bool isRate = false;

  std::string name() const { return std::string(column->name) + (isRate ? "/s" : ""); }
  bool operator==(const ColumnChoice &) const = default;
};

}  // namespace nodal::top

#endif  // NODAL_TOP_COLUMN_H
