#include "tools/nodal/history/believed_clock.h"

#include "tests/tools/nodal/history/recorder_support.h"

namespace nodal {
namespace {

SampleTime At(int64_t wall, int64_t boot) { return {.wall = wall, .boot = boot, .monotonic = boot}; }

TEST(BelievedClock, FollowsTheWallClock) {
  BelievedClock clock(At(kNewYear, kHour), std::nullopt);
  EXPECT_EQ(clock.Wall(At(kNewYear, kHour)), kNewYear);
  EXPECT_EQ(clock.Wall(At(kNewYear + kDay + 30 * kSecond, kHour + kDay)), kNewYear + kDay + 30 * kSecond)
      << "a correction";
  EXPECT_EQ(clock.Wall(At(kNewYear - kDay, kHour + kDay)), kNewYear - kDay) << "set back";
}

TEST(BelievedClock, BelievesALeapForwardAfterADay) {
  BelievedClock clock(At(kNewYear, kHour), std::nullopt);
  constexpr int64_t kLeap = 365 * kDay;
  for (int64_t time = 0; time < kDay; time += kHour)
    EXPECT_EQ(clock.Wall(At(kNewYear + kLeap + time, kHour + time)), kNewYear + time);
  EXPECT_EQ(clock.Wall(At(kNewYear + kLeap + kDay, kHour + kDay)), kNewYear + kLeap + kDay);
}

TEST(BelievedClock, ALeapThatIsTakenBackIsForgotten) {
  BelievedClock clock(At(kNewYear, kHour), std::nullopt);
  constexpr int64_t kLeap = 365 * kDay;
  clock.Wall(At(kNewYear + kLeap, kHour));
  EXPECT_EQ(clock.Wall(At(kNewYear + 23 * kHour, 24 * kHour)), kNewYear + 23 * kHour);
  EXPECT_EQ(clock.Wall(At(kNewYear + kLeap + 2 * kDay, kHour + 2 * kDay)), kNewYear + 2 * kDay) << "a day from now on";
}

TEST(BelievedClock, StartsAtMostAWeekAfterTheNewestSample) {
  BelievedClock near(At(kNewYear, kHour), kNewYear - 6 * kDay);
  EXPECT_EQ(near.Wall(At(kNewYear, kHour)), kNewYear);
  BelievedClock far(At(kNewYear, kHour), kNewYear - 60 * kDay);
  EXPECT_EQ(far.Wall(At(kNewYear, kHour)), kNewYear - 53 * kDay);
  EXPECT_EQ(far.Wall(At(kNewYear + kDay, kHour + kDay)), kNewYear + kDay);
}

}  // namespace
}  // namespace nodal
