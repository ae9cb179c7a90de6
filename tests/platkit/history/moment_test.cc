#include "platkit/history/moment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace platkit::history {
namespace {

constexpr int64_t kEnd = 1'763'694'720;  // 2025-11-21T03:12:00Z

// The tests' time zone is two hours east of UTC in winter.
class Time : public testing::Test {
 protected:
  Time() { SetZone("EET-2EEST,M3.5.0/3,M10.5.0/4"); }
  ~Time() override { SetZone("UTC0"); }

  static void SetZone(const char *zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
};

TEST_F(Time, IsInUtcWithZ) {
  EXPECT_EQ(ParseTime("2025-11-21T03:12:00Z", kEnd), kEnd);
  EXPECT_EQ(ParseTime("2025-11-21T03:12Z", kEnd), kEnd);
  EXPECT_EQ(ParseTime("2025-11-21 03:11:59Z", kEnd), kEnd - 1);
}

TEST_F(Time, IsLocalWithoutZ) {
  EXPECT_EQ(ParseTime("2025-11-21 05:12", kEnd), kEnd);
  EXPECT_EQ(ParseTime("2025-11-21T05:12:07", kEnd), kEnd + 7);
  EXPECT_EQ(ParseTime("2025-07-21 06:12", kEnd), ParseTime("2025-07-21T03:12:00Z", kEnd));
}

TEST_F(Time, CountsSeconds) {
  EXPECT_EQ(ParseTime("@1763694720", 0), kEnd);
  EXPECT_EQ(ParseTime("1763694720", 0), kEnd);
  EXPECT_EQ(ParseTime("@0", 0), 0);
}

TEST_F(Time, IsTheLastOneWithoutADate) {
  EXPECT_EQ(ParseTime("05:12", kEnd), kEnd);
  EXPECT_EQ(ParseTime("05:12:01", kEnd), kEnd + 1 - 86400);
  EXPECT_EQ(ParseTime("00:00", kEnd), ParseTime("2025-11-21 00:00", kEnd));
  EXPECT_EQ(ParseTime("23:59", kEnd), ParseTime("2025-11-20 23:59", kEnd));
}

// On 26 October 2025, the clock was set back from 04:00 to 03:00, at 01:00 UTC.
TEST_F(Time, IsTheLastOneOfARepeatedHour) {
  const auto second = ParseTime("2025-10-26T01:30:00Z", 0);
  EXPECT_EQ(ParseTime("2025-10-26 03:30", kEnd), second);
  EXPECT_EQ(ParseTime("03:30", *second + 60), second);
  EXPECT_EQ(ParseTime("03:30", *second - 60), *second - 3600);
  EXPECT_EQ(ParseTime("03:30", *second - 3601), *second - 90000);
}

TEST_F(Time, IsBeforeTheEnd) {
  EXPECT_EQ(ParseTime("-30s", kEnd), kEnd - 30);
  EXPECT_EQ(ParseTime("-10m", kEnd), kEnd - 600);
  EXPECT_EQ(ParseTime("-2h", kEnd), kEnd - 7200);
  EXPECT_EQ(ParseTime("-1d", kEnd), kEnd - 86400);
  EXPECT_EQ(ParseTime("-0s", kEnd), kEnd);
}

TEST_F(Time, HasNoOtherForm) {
  for (const char *text : {"",
                           "@",
                           "@-1",
                           "-",
                           "-10",
                           "-m",
                           "--10m",
                           "-10w",
                           "10m",
                           "+10m",
                           "3:12",
                           "24:00",
                           "03:60",
                           "03:12:60",
                           "03:12Z",
                           "2025-11-21",
                           "2025-11-21T",
                           "2025-11-21T03",
                           "2025-11-21_03:12",
                           "2025-02-29 03:12",
                           "2025-13-01 03:12",
                           "2025-11-21T03:12:00z",
                           "2025-11-21T03:12:00ZZ",
                           " 03:12",
                           "now",
                           "99999999999999999999",
                           "253402300800"})
    EXPECT_FALSE(ParseTime(text, kEnd)) << text;
}

TEST_F(Time, HasText) {
  EXPECT_EQ(TimeText(kEnd), "2025-11-21T03:12:00Z");
  EXPECT_EQ(TimeText(-1), "1970-01-01T00:00:00Z");
  EXPECT_EQ(TimeText(INT64_MAX), "9999-12-31T23:59:59Z");
  EXPECT_EQ(SecondsOf(1'999'999'999), 1);
  EXPECT_EQ(SecondsOf(-1), -1);
}

TEST(MomentPath, IsSplitAtTheLastSign) {
  const auto split = [](std::string_view path) {
    const std::optional<MomentPath> parts = SplitMoment(path);
    return parts ? parts->folder + "|" + parts->time : "none";
  };
  EXPECT_EQ(split("h@-30s"), "h|-30s");
  EXPECT_EQ(split("/a@b/h@03:12"), "/a@b/h|03:12");
  EXPECT_EQ(split("h@@1763694720"), "h|@1763694720");
  EXPECT_EQ(split("h@"), "h|");
  EXPECT_EQ(split("@03:12"), "none");
  EXPECT_EQ(split("@@1"), "@|1");
  EXPECT_EQ(split("file"), "none");
}

}  // namespace
}  // namespace platkit::history
