#include "tools/nodal/tree/field_value.h"

#include <gtest/gtest.h>

namespace nodal {
namespace {

using enum platkit::FieldType;

platkit::Field Integer(platkit::FieldType type, uint32_t size) {
  return {
      .offset = 0, .size = size, .type = type, .unit = platkit::FieldUnit::COUNT, .name = "field", .description = ""};
}

std::span<const std::byte> Bytes(const uint64_t &value, uint32_t size) {
  return std::as_bytes(std::span(&value, 1)).first(size);
}

TEST(FieldValue, OnlySignedIntegersAreSignExtended) {
  const uint64_t value = 0xffff'fffe;
  EXPECT_EQ(IntegerOf(Integer(kU32, 4), Bytes(value, 4)), value);
  EXPECT_EQ(IntegerOf(Integer(kI32, 4), Bytes(value, 4)), UINT64_MAX - 1);
  EXPECT_EQ(IntegerOf(Integer(kI64, 8), Bytes(value, 8)), value);
  EXPECT_EQ(IntegerOf(Integer(kU8, 1), Bytes(value, 1)), 0xfeu);
}

TEST(FieldValue, AllOnesAreAValueInFieldsOfOneOrTwoBytes) {
  const uint64_t ones = UINT64_MAX;
  EXPECT_FALSE(IsNone(Integer(kU8, 1), Bytes(ones, 1)));
  EXPECT_FALSE(IsNone(Integer(kU16, 2), Bytes(ones, 2)));
  EXPECT_TRUE(IsNone(Integer(kU32, 4), Bytes(ones, 4)));
  EXPECT_TRUE(IsNone(Integer(kI64, 8), Bytes(ones, 8)));
  const uint64_t almost = UINT64_MAX - 1;
  EXPECT_FALSE(IsNone(Integer(kU64, 8), Bytes(almost, 8)));
}

}  // namespace
}  // namespace nodal
