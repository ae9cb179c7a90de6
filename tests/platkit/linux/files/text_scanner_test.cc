#include "platkit/linux/files/text_scanner.h"

#include <gtest/gtest.h>

namespace platkit {
namespace {

TEST(TextScanner, Words) {
  TextScanner scanner("  one\ttwo  three four ");
  EXPECT_EQ(scanner.TakeWord(), "one");
  EXPECT_EQ(scanner.TakeLastWord(), "four");
  EXPECT_EQ(scanner.TakeWord(), "two");
  EXPECT_EQ(scanner.TakeLastWord(), "three");
  EXPECT_EQ(scanner.TakeWord(), "");
  EXPECT_EQ(scanner.TakeLastWord(), "");
  EXPECT_TRUE(scanner.AtEnd());
  EXPECT_EQ(TextScanner("word").TakeLastWord(), "word");
}

TEST(TextScanner, Separators) {
  TextScanner scanner("a:b::c");
  EXPECT_EQ(scanner.TakeUntil(':'), "a");
  EXPECT_EQ(scanner.TakeUntil(':'), "b");
  EXPECT_EQ(scanner.TakeUntil(':'), "");
  EXPECT_EQ(scanner.rest(), "c");
  EXPECT_EQ(scanner.TakeUntil(':'), "c");
  EXPECT_EQ(scanner.TakeUntil(':'), "");
}

TEST(TextScanner, ExpectedText) {
  TextScanner scanner("pages 12");
  EXPECT_FALSE(scanner.Take("page "));
  EXPECT_TRUE(scanner.Take("pages"));
  scanner.SkipBlanks();
  EXPECT_EQ(scanner.rest(), "12");
  EXPECT_TRUE(scanner.Take(""));
}

TEST(TextScanner, Numbers) {
  TextScanner scanner("12ff x");
  uint64_t number = 7;
  EXPECT_TRUE(scanner.TakeNumber(number));
  EXPECT_EQ(number, 12u);
  EXPECT_TRUE(scanner.TakeNumber(number, 16));
  EXPECT_EQ(number, 0xffu);
  for (const char *text : {"", " 1", "-1", "+1", "x", "18446744073709551616"}) {
    TextScanner other(text);
    EXPECT_FALSE(other.TakeNumber(number)) << text;
    EXPECT_EQ(other.rest(), text);
  }
  uint8_t small = 0;
  EXPECT_FALSE(TextScanner("256").TakeNumber(small));
}

TEST(TextScanner, WholeTexts) {
  uint64_t number = 0;
  EXPECT_TRUE(ParseNumber(" 12\n", number));
  EXPECT_EQ(number, 12u);
  EXPECT_TRUE(ParseHexNumber("0x1a", number));
  EXPECT_EQ(number, 0x1au);
  for (const char *bad : {"", "\n", "1 2", "0x1", "1.5"})
    EXPECT_FALSE(ParseNumber(bad, number)) << bad;
  for (const char *bad : {"", "1a", "0x", "0x1a ", "0x1g", "0x10000000000000000"})
    EXPECT_FALSE(ParseHexNumber(bad, number)) << bad;
  EXPECT_EQ(Trim(" \t a b \n\n"), "a b");
  EXPECT_EQ(Trim(" \n"), "");
}

}  // namespace
}  // namespace platkit
