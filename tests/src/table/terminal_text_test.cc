#include "src/table/terminal_text.h"

#include <gtest/gtest.h>

#include <string>

namespace kestrel {
namespace {

std::string Masked(const std::string &text) {
  std::string masked;
  for (std::string_view rest = text; !rest.empty();)
    masked += TakeMasked(rest);
  EXPECT_EQ(NeedsMask(text), masked != text) << text;
  EXPECT_EQ(masked.size(), text.size());
  return masked;
}

TEST(TerminalText, KeepsOrdinaryText) {
  for (const std::string text : {"", "web-1 [a] ~", "M\xc3\xbcller", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xc2\xa0",
                                 "\xed\x9f\xbf", "\xee\x80\x80", "\xf4\x8f\xbf\xbf"})
    EXPECT_EQ(Masked(text), text);
}

TEST(TerminalText, MasksControlCharacters) {
  EXPECT_EQ(Masked("a\x1b[31mb\tc\nd\x7f\x01"), "a?[31mb?c?d??");
  EXPECT_EQ(Masked(std::string("a\0b", 3)), "a?b");
  EXPECT_EQ(Masked("\xc2\x80 \xc2\x9b \xc2\x9f"), "?? ?? ??");
  EXPECT_EQ(Masked("\x80\x9b\x9f"), "???") << "raw C1 controls";
}

TEST(TerminalText, MasksInvalidUtf8) {
  EXPECT_EQ(Masked("a\xff\xfe"), "a??");
  EXPECT_EQ(Masked("\xbf"), "?") << "a continuation byte alone";
  EXPECT_EQ(Masked("\xc2"), "?") << "truncated";
  EXPECT_EQ(Masked("\xe2\x82"), "??");
  EXPECT_EQ(Masked("\xe2\x82x"), "??x");
  EXPECT_EQ(Masked("\xf0\x9f\x98"), "???");
  EXPECT_EQ(Masked("\xc0\x9b \xc1\xbf"), "?? ??") << "overlong";
  EXPECT_EQ(Masked("\xe0\x82\x9b \xf0\x82\x82\xac"), "??? ????") << "overlong";
  EXPECT_EQ(Masked("\xed\xa0\x80 \xed\xbf\xbf"), "??? ???") << "surrogates";
  EXPECT_EQ(Masked("\xf4\x90\x80\x80 \xf8\x88\x80\x80\x80"), "???? ?????") << "beyond U+10FFFF";
}

TEST(TerminalText, MasksWhatChangesTheDirectionOfText) {
  for (const std::string text :
       {"\xd8\x9c", "\xe2\x80\x8e", "\xe2\x80\x8f", "\xe2\x80\xaa", "\xe2\x80\xae", "\xe2\x81\xa6", "\xe2\x81\xa9"})
    EXPECT_EQ(Masked("a" + text + "b"), "a" + std::string(text.size(), '?') + "b");
  // The characters next to these in Unicode are not masked.
  for (const std::string text : {"\xd8\x9b", "\xd8\x9d", "\xe2\x80\x8d", "\xe2\x80\x90", "\xe2\x80\xa9", "\xe2\x80\xaf",
                                 "\xe2\x81\xa5", "\xe2\x81\xaa"})
    EXPECT_EQ(Masked(text), text);
}

}  // namespace
}  // namespace kestrel
