#include "tools/nodal/metrics/metric_value.h"

#include "tools/nodal/tree/field_value.h"

namespace nodal {

using platkit::Field;
using platkit::FieldUnit;

std::optional<double> ValueOf(const Field &field, std::span<const std::byte> bytes) {
  if (IsNone(field, bytes)) return std::nullopt;
  const double number = NumberOf(field, bytes);
  switch (field.unit) {
    case FieldUnit::PERCENT: return number / 100;
    case FieldUnit::USEC: return number / 1e6;
    case FieldUnit::BOOL: return number == 0 ? 0 : 1;
    default: return InBytes(number, field.unit);
  }
}

}  // namespace nodal
