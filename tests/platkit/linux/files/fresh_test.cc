#include "platkit/linux/files/fresh.h"

#include <gtest/gtest.h>

namespace platkit {
namespace {

using std::chrono::nanoseconds;

TEST(Fresh, AValueIsReadAgainAfter100Milliseconds) {
  Clock::Time now;
  const Clock clock([&now] { return now; });
  Fresh<int> value;
  int reads = 0;
  const auto get = [&] { return value.Get(clock, [&reads] { return ++reads; }); };
  EXPECT_FALSE(value.IsFresh(clock));
  EXPECT_EQ(value.IfFresh(clock), nullptr);
  EXPECT_EQ(get(), 1);
  ASSERT_NE(value.IfFresh(clock), nullptr);
  EXPECT_EQ(*value.IfFresh(clock), 1);
  now += kFreshTime - nanoseconds(1);
  EXPECT_EQ(get(), 1);
  EXPECT_TRUE(value.IsFresh(clock));
  now += nanoseconds(1);
  EXPECT_FALSE(value.IsFresh(clock));
  EXPECT_EQ(value.IfFresh(clock), nullptr);
  EXPECT_EQ(get(), 2);
}

TEST(Fresh, AgeCountsFromTheStartOfTheRead) {
  Clock::Time now;
  const Clock clock([&now] { return now; });
  Fresh<int> value;
  value.Get(clock, [&now] {
    now += kFreshTime;
    return 1;
  });
  EXPECT_FALSE(value.IsFresh(clock));
}

TEST(Fresh, AMadeValueIsAsOldAsWhatItIsMadeOf) {
  Clock::Time now;
  const Clock clock([&now] { return now; });
  Fresh<int> value;
  int makes = 0;
  const Clock::Time start = now;
  const auto get = [&] { return value.GetMade(clock, [&] { return Fresh<int>(++makes, start); }); };
  now += kFreshTime - nanoseconds(1);
  EXPECT_EQ(get(), 1);
  EXPECT_EQ(get(), 1);
  EXPECT_EQ(value.readAt(), start);
  now += nanoseconds(1);
  EXPECT_EQ(get(), 2);
}

TEST(Fresh, AValueThatWasReadBefore) {
  Clock::Time now;
  const Clock clock([&now] { return now; });
  Fresh<int> value(7, now);
  now += kFreshTime - nanoseconds(1);
  EXPECT_EQ(value.Get(clock, [] { return 8; }), 7);
  now += nanoseconds(1);
  EXPECT_EQ(value.Get(clock, [] { return 8; }), 8);
}

TEST(Fresh, TheClockIsMonotonicUnlessItIsSet) {
  const Clock clock;
  const Clock::Time first = clock.Now();
  const Clock::Time second = clock.Now();
  EXPECT_LE(first, second);
  EXPECT_LE(second, std::chrono::steady_clock::now());
}

}  // namespace
}  // namespace platkit
