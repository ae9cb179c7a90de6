#include "tools/nodal/support/text.h"

#include <gtest/gtest.h>

#include "platkit/status_texts.h"

namespace nodal {
namespace {

TEST(Text, Utf8) {
  for (const char *text : {"", "abc", "\x7f", "\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xf4\x8f\xbf\xbf"})
    EXPECT_TRUE(IsUtf8(text)) << text;
  for (const char *text : {"\x80", "\xc3", "\xc0\x80", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xf0\x8f\xbf\xbf",
                           "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xc3z", "a\xff"})
    EXPECT_FALSE(IsUtf8(text)) << text;
}

TEST(Text, PrintableHasNoControlCharacters) {
  EXPECT_EQ(Printable("a\x1b[31m\n\x7f"), "a?[31m??");
  EXPECT_EQ(Printable("caf\xc3\xa9 \xff"), "caf\xc3\xa9 ?");
  EXPECT_EQ(Printable("\xc2\x9b"), "?") << "a control sequence may begin with one character";
}

TEST(Text, PrintableHasNoCharactersThatChangeTheDirection) {
  for (const char *character : {"\u061c", "\u200e", "\u200f", "\u202a", "\u202e", "\u2066", "\u2069"})
    EXPECT_EQ(Printable(std::string("a") + character + "b"), "a?b") << ToHex(BytesOf(character));
  for (const char *character : {"\u061b", "\u061d", "\u200d", "\u2010", "\u2029", "\u202f", "\u2065", "\u206a"})
    EXPECT_EQ(Printable(character), character) << ToHex(BytesOf(character));
}

TEST(Text, Hex) {
  EXPECT_EQ(ToHex(BytesOf(std::string_view("\x00\x7f\xff", 3))), "007fff");
  EXPECT_EQ(FromHex("007fff"), std::string("\x00\x7f\xff", 3));
  EXPECT_EQ(FromHex(""), "");
  for (const char *digits : {"0", "0g", "FF", "0x", " 0"})
    EXPECT_EQ(FromHex(digits), std::nullopt) << digits;
}

TEST(Text, Statuses) {
  EXPECT_EQ(StatusText(HVC_NOT_FOUND), "Not found");
  EXPECT_EQ(StatusText(0x0bad0163), "Status 195887459");
  for (const platkit::StatusText &row : platkit::kStatusTexts)
    EXPECT_EQ(StatusOfText(StatusText(row.status)), row.status) << row.text;
  EXPECT_EQ(StatusOfText("Status 195887459"), std::nullopt);
}

}  // namespace
}  // namespace nodal
