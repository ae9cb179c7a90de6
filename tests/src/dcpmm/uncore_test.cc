// Operations on registers reject names that are not in their tables.
#include "src/dcpmm/uncore.h"

#include <gtest/gtest.h>

namespace kestrel {
namespace {

constexpr UncoreUnit kUnit = {.segment = 0, .bus = 58, .slot = 10, .function = 2};

TEST(Uncore, AnUnknownEventIsRefused) {
  testing::internal::CaptureStdout();
  const HVC_ReturnStatus status = KestrelDCPMMProgramEvent(kUnit, "NO_EVENT");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "KestrelDCPMMProgramEvent: Invalid eventName NO_EVENT\n");
  EXPECT_EQ(status, HVC_FAILURE);
}

TEST(Uncore, AnUnknownCounterIsRefused) {
  const CounterOutput output(true);
  testing::internal::CaptureStdout();
  const HVC_ReturnStatus status = KestrelDCPMMReadCounters(kUnit, "NO_COUNTER", output);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "KestrelDCPMMReadCounters: Invalid event NO_COUNTER\n");
  EXPECT_EQ(status, HVC_FAILURE);
}

}  // namespace
}  // namespace kestrel
