#include "tools/nodal/metrics/metric_value.h"

#include <cstring>

namespace nodal {
namespace {

using platkit::Field;
using platkit::FieldType;
using platkit::FieldUnit;

// All ones mean unavailable or unlimited. In a field of one or two bytes they are a value.
bool IsAllOnes(const Field &field, std::span<const std::byte> bytes) {
  if (field.size < sizeof(uint32_t)) return false;
  for (const std::byte byte : bytes) {
    if (byte != std::byte{0xff}) return false;
  }
  return true;
}

double NumberOf(const Field &field, std::span<const std::byte> bytes) {
  if (field.type == FieldType::kI32) {
    int32_t value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
  }
  uint64_t value = 0;
  std::memcpy(&value, bytes.data(), bytes.size());
  return field.type == FieldType::kI64 ? static_cast<double>(static_cast<int64_t>(value)) : static_cast<double>(value);
}

}  // namespace

std::optional<double> ValueOf(const Field &field, std::span<const std::byte> bytes) {
  if (IsAllOnes(field, bytes)) return std::nullopt;
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
