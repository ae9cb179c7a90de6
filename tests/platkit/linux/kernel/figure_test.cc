#include "platkit/linux/kernel/figure.h"

#include <gtest/gtest.h>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

const Figure kAbsent;
const Figure kUnreadable = Figure::Unreadable();
const Figure kUnlimited = Figure::Unlimited();

TEST(Figure, Cells) {
  EXPECT_EQ(Figure(0).Cell(7), 0u);
  EXPECT_EQ(kAbsent.Cell(7), 7u);
  EXPECT_EQ(kUnreadable.Cell(7), HVC_KB_NONE);
  EXPECT_EQ(kUnlimited.Cell(7), HVC_KB_NONE);
}

TEST(Figure, Sums) {
  EXPECT_EQ(Figure(1) + Figure(2), Figure(3));
  EXPECT_EQ(Figure(1) + kAbsent, Figure(1));
  EXPECT_EQ(kAbsent + kAbsent, kAbsent);
  EXPECT_EQ(Figure(1) + kUnreadable, kUnreadable);
  EXPECT_EQ(kUnlimited + kUnreadable, kUnreadable);
  EXPECT_EQ(kUnlimited + Figure(1), kUnlimited);
  EXPECT_EQ(Figure(UINT64_MAX) + Figure(1), kUnreadable);
}

TEST(Figure, Differences) {
  EXPECT_EQ(Figure(3) - Figure(2), Figure(1));
  EXPECT_EQ(Figure(2) - Figure(3), Figure(0));
  EXPECT_EQ(Figure(2) - kAbsent, Figure(2));
  EXPECT_EQ(Figure(2) - kUnlimited, Figure(0));
  EXPECT_EQ(Figure(2) - kUnreadable, kUnreadable);
  EXPECT_EQ(kUnlimited - Figure(2), kUnlimited);
  EXPECT_EQ(kAbsent - Figure(2), kAbsent);
}

TEST(Figure, Scaling) {
  EXPECT_EQ(Figure(3) * 4, Figure(12));
  EXPECT_EQ(Figure(UINT64_MAX) * 4, kUnreadable);
  EXPECT_EQ(kUnlimited * 4, kUnlimited);
  EXPECT_EQ(Figure(2047) / 1024, Figure(1));
  EXPECT_EQ(kAbsent / 1024, kAbsent);
}

TEST(Figure, Bounds) {
  EXPECT_EQ(Lower(Figure(1), Figure(2)), Figure(1));
  EXPECT_EQ(Lower(kUnlimited, Figure(2)), Figure(2));
  EXPECT_EQ(Lower(kAbsent, Figure(2)), Figure(2));
  EXPECT_EQ(Lower(kUnlimited, kAbsent), kUnlimited);
  EXPECT_EQ(Lower(Figure(0), kUnreadable), kUnreadable);
}

TEST(Figure, UpperBounds) {
  EXPECT_EQ(Higher(Figure(1), Figure(2)), Figure(2));
  EXPECT_EQ(Higher(kUnlimited, Figure(2)), kUnlimited);
  EXPECT_EQ(Higher(kAbsent, Figure(2)), Figure(2));
  EXPECT_EQ(Higher(Figure(2), kUnreadable), kUnreadable);
  EXPECT_EQ(Higher(kAbsent, kAbsent), kAbsent);
}

TEST(Figure, Amounts) {
  EXPECT_EQ(ParseAmount("12\n"), Figure(12));
  EXPECT_EQ(ParseAmount("max\n"), kUnlimited);
  EXPECT_EQ(ParseAmount("9223372036854771712"), kUnlimited);
  EXPECT_EQ(ParseAmount("9223372036854710272"), kUnlimited);
  EXPECT_EQ(ParseAmount("9000000000000000000"), Figure(9000000000000000000u));
  for (const char *bad : {"", "\n", "maximum", "0x10", "+1", "-1", "1.5", "1 2", "18446744073709551616"}) {
    EXPECT_EQ(ParseAmount(bad), kUnreadable) << bad;
  }
}

}  // namespace
}  // namespace platkit
