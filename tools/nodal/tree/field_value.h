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

// Returns the same integer as a floating-point number.
double NumberOf(const platkit::Field &field, std::span<const std::byte> bytes);

// Converts a number to bytes if `unit` is a unit of memory. Returns any other number unchanged.
double InBytes(double number, platkit::FieldUnit unit);

// Whether all bits of the integer are set, which means unavailable or unlimited. In a field of one or two bytes, all
// bits set is an ordinary value.
bool IsNone(const platkit::Field &field, std::span<const std::byte> bytes);

// Whether all bits set in this field mean unlimited rather than unavailable.
bool IsLimit(const platkit::RecordLayout &record, const platkit::Field &field);

// Returns the text in a field, which may lack a terminating NUL.
template <size_t kSize>
std::string_view TextOf(const char (&field)[kSize]) {
  const std::string_view all(field, kSize);
  return all.substr(0, all.find('\0'));
}

}  // namespace nodal

#endif  // NODAL_TREE_FIELD_VALUE_H
