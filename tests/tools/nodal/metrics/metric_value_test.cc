#include "tools/nodal/metrics/metric_value.h"

#include <gtest/gtest.h>

namespace nodal {
namespace {

using platkit::FieldUnit;

std::optional<double> Value(platkit::FieldType type, FieldUnit unit, uint64_t value, uint32_t size = 8) {
  const platkit::Field field = {.offset = 0, .size = size, .type = type, .unit = unit, .name = "x", .description = ""};
  return ValueOf(field, std::as_bytes(std::span(&value, 1)).first(size));
}

TEST(MetricValue, AreInBaseUnits) {
  using enum platkit::FieldType;
  EXPECT_EQ(Value(kU64, FieldUnit::KB, 3), 3072);
  EXPECT_EQ(Value(kU32, FieldUnit::BYTES, 3, 4), 3);
  EXPECT_EQ(Value(kU64, FieldUnit::PAGES, 3), 12288);
  EXPECT_EQ(Value(kU64, FieldUnit::BLOCKS, 3), 6291456);
  EXPECT_EQ(Value(kU8, FieldUnit::PERCENT, 42, 1), 0.42);
  EXPECT_EQ(Value(kU64, FieldUnit::USEC, 1500000), 1.5);
  EXPECT_EQ(Value(kU8, FieldUnit::BOOL, 7, 1), 1);
  EXPECT_EQ(Value(kU64, FieldUnit::COUNT, 0), 0);
  EXPECT_EQ(Value(kI32, FieldUnit::COUNT, static_cast<uint32_t>(-5), 4), -5);
  EXPECT_EQ(Value(kI64, FieldUnit::COUNT, static_cast<uint64_t>(-5)), -5);
}

TEST(MetricValue, WithAllBitsSetAreNone) {
  using enum platkit::FieldType;
  EXPECT_EQ(Value(kU64, FieldUnit::KB, UINT64_MAX), std::nullopt);
  EXPECT_EQ(Value(kU32, FieldUnit::COUNT, UINT32_MAX, 4), std::nullopt);
  EXPECT_EQ(Value(kI32, FieldUnit::KB, UINT32_MAX, 4), std::nullopt);
  EXPECT_EQ(Value(kU8, FieldUnit::BOOL, 255, 1), 1);
  EXPECT_NE(Value(kU64, FieldUnit::KB, UINT64_MAX - 1), std::nullopt);
  EXPECT_NE(Value(kU64, FieldUnit::KB, UINT32_MAX), std::nullopt);
}

}  // namespace
}  // namespace nodal
