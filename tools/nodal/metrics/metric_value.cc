#include "tools/nodal/metrics/metric_value.h"

#include "tools/nodal/tree/field_value.h"

namespace nodal {
namespace {

using platkit::Field;
using platkit::FieldUnit;

double NumberOf(const Field &field, std::span<const std::byte> bytes) {
  const uint64_t value = IntegerOf(field, bytes);
  return IsSigned(field.type) ? static_cast<double>(static_cast<int64_t>(value)) : static_cast<double>(value);
}

}  // namespace

std::optional<double> ValueOf(const Field &field, std::span<const std::byte> bytes) {
  if (IsNone(field, bytes)) return std::nullopt;
  const double number = NumberOf(field, bytes);
  switch (field.unit) {
    case FieldUnit::KB: return number * 1024;
    case FieldUnit::PAGES: return number * 4096;
    case FieldUnit::BLOCKS: return number * (2 << 20);
    case FieldUnit::PERCENT: return number / 100;
    case FieldUnit::USEC: return number / 1e6;
    case FieldUnit::BOOL: return number == 0 ? 0 : 1;
    default: return number;
  }
}

}  // namespace nodal
