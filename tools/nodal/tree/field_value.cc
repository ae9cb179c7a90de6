#include "tools/nodal/tree/field_value.h"

#include <algorithm>
#include <cstring>

namespace nodal {

using platkit::Field;
using platkit::FieldType;

bool IsSigned(FieldType type) { return type == FieldType::kI32 || type == FieldType::kI64; }

uint64_t IntegerOf(const Field &field, std::span<const std::byte> bytes) {
  if (field.type == FieldType::kI32) {
    int32_t value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return static_cast<uint64_t>(int64_t{value});
  }
  uint64_t value = 0;
  std::memcpy(&value, bytes.data(), bytes.size());
  return value;
}

double NumberOf(const Field &field, std::span<const std::byte> bytes) {
  const uint64_t value = IntegerOf(field, bytes);
  return IsSigned(field.type) ? static_cast<double>(static_cast<int64_t>(value)) : static_cast<double>(value);
}

double InBytes(double number, platkit::FieldUnit unit) {
  switch (unit) {
    case platkit::FieldUnit::KB: return number * 1024;
    case platkit::FieldUnit::PAGES: return number * 4096;
    case platkit::FieldUnit::BLOCKS: return number * (2 << 20);
    default: return number;
  }
}

bool IsNone(const Field &field, std::span<const std::byte> bytes) {
  return field.size >= sizeof(uint32_t) &&
         std::ranges::all_of(bytes, [](std::byte byte) { return byte == std::byte{0xff}; });
}

bool IsLimit(const platkit::RecordLayout &record, const Field &field) {
  if (field.description.find("unlimited") != std::string_view::npos) return true;
  return record.name == "GroupMemoryStatsRecord" && (field.name == "bMax" || field.name == "allocTgt");
}

}  // namespace nodal
