#include "tools/nodal/top/frame.h"

#include <gtest/gtest.h>

#include <clocale>

namespace nodal::top {
namespace {

class TopFrame : public testing::Test {
 protected:
  TopFrame() { Use("C.UTF-8"); }
  ~TopFrame() override { Use("C"); }

  static void Use(const char *locale) { ASSERT_NE(std::setlocale(LC_CTYPE, locale), nullptr); }
};

TEST_F(TopFrame, TextsArePaddedOrCut) {
  EXPECT_EQ(Fit("ab", 4), "ab  ");
  EXPECT_EQ(Fit("ab", 4, Align::kRight), "  ab");
  EXPECT_EQ(Fit("abcd", 4), "abcd");
  EXPECT_EQ(Fit("abcde", 4), "abc~");
  EXPECT_EQ(Fit("abcde", 0), "");
  EXPECT_EQ(Fit("", 2), "  ");
}

TEST_F(TopFrame, WidthsAreThoseOfTheTerminal) {
  EXPECT_EQ(WidthOf("\u732b\u732b"), 4u);  // two wide characters
  EXPECT_EQ(WidthOf("e\u0301"), 1u);       // a combining accent
  EXPECT_EQ(Fit("\u732b\u732b\u732b", 4), "\u732b~ ");
  EXPECT_EQ(Fit("\u732b\u732b", 4), "\u732b\u732b");
  EXPECT_EQ(Fit("caf\u00e9", 5), "caf\u00e9 ");
  EXPECT_EQ(Clip("a\u732b", 2), "a");
}

TEST_F(TopFrame, WithoutUtf8OnlyAsciiIsShown) {
  Use("C");
  EXPECT_EQ(Fit("caf\u00e9 \u732b", 8), "caf? ?  ");
  EXPECT_EQ(WidthOf("caf\u00e9"), 4u);
}

}  // namespace
}  // namespace nodal::top
