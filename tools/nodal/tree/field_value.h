// The values of integer fields of records.
#ifndef NODAL_TREE_FIELD_VALUE_H
#define NODAL_TREE_FIELD_VALUE_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "platkit/record_layout.h"

namespace nodal {

bool IsSigned(platkit::FieldType type);

// The integer in a field's bytes, sign-extended to 64 bits if its type is signed.
uint64_t IntegerOf(const platkit::Field &field, std::span<const std::byte> bytes);

// Whether the integer means unavailable or unlimited: all bits are set. In a field of one or two bytes, they are a
// value.
bool IsNone(const platkit::Field &field, std::span<const std::byte> bytes);

// Whether all ones in a field mean unlimited.
bool IsLimit(const platkit::RecordLayout &record, const platkit::Field &field);

}  // namespace nodal

#endif  // NODAL_TREE_FIELD_VALUE_H
