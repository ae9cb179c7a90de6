// The values of fields of records.
#ifndef NODAL_TREE_FIELD_VALUE_H
#define NODAL_TREE_FIELD_VALUE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platkit/record_layout.h"

namespace nodal {

bool IsSigned(platkit::FieldType type);

// The integer in a field's bytes, sign-extended to 64 bits if its type is signed.
uint64_t IntegerOf(const platkit::Field &field, std::span<const std::byte> bytes);

// The same as a number.
double NumberOf(const platkit::Field &field, std::span<const std::byte> bytes);

// Converts a number of this unit to bytes, if the unit is an amount of memory.
double InBytes(double number, platkit::FieldUnit unit);

// Whether the integer means unavailable or unlimited: all bits are set. In a field of one or two bytes, they are a
// value.
bool IsNone(const platkit::Field &field, std::span<const std::byte> bytes);

// Whether all ones in a field mean unlimited.
bool IsLimit(const platkit::RecordLayout &record, const platkit::Field &field);

// The text of a field that may lack a terminator.
template <size_t kSize>
std::string_view TextOf(const char (&field)[kSize]) {
  const std::string_view all(field, kSize);
  return all.substr(0, all.find('\0'));
}

}  // namespace nodal

#endif  // NODAL_TREE_FIELD_VALUE_H
