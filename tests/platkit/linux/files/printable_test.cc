#include "platkit/linux/files/printable.h"

#include <gtest/gtest.h>

namespace platkit {
namespace {

std::string Shown(std::string_view name) { return PrintableName(name, 1000); }

TEST(Printable, OrdinaryNamesStay) {
  for (const char *name : {"", "init", "tmux: server", "(sd-pam)", "kworker/0:1H", "machine-qemu\\x2d1\\x2dweb.scope",
                           "a'b;c$d|e<f>g&h", "caf\xc3\xa9", "\xd0\xbf\xd1\x80\xd0\xb8", "\xe6\x97\xa5\xe6\x9c\xac",
                           "\xf0\x9f\x90\xa7", "\xc2\xa0", "\xef\xbf\xbd"}) {
    EXPECT_EQ(Shown(name), name);
  }
}

TEST(Printable, ControlCharactersAndSeparatorsOfFieldsAreReplaced) {
  for (int c = 0; c < 0x20; ++c)
    EXPECT_EQ(Shown(std::string(1, static_cast<char>(c))), "?") << c;
  for (int c = 0x80; c < 0xa0; ++c)
    EXPECT_EQ(Shown("a\xc2" + std::string(1, static_cast<char>(c)) + "b"), "a?b") << c;
  EXPECT_EQ(Shown("a,b\"c\x7f"
                  "d\ne"),
            "a?b?c?d?e");
}

TEST(Printable, MalformedSequencesAreReplaced) {
  const struct {
    std::string_view name, shown;
  } cases[] = {
      {"a\x9b"
       "b",
       "a?b"},                                  // a continuation byte alone
      {"\x80\x81", "??"},                       //
      {"a\xc3", "a?"},                          // the kernel truncates names in the middle of a character
      {"a\xe6\x97", "a?"},                      //
      {"\xe6\x97z", "?z"},                      //
      {"\xc0\xaf", "??"},                       // an overlong encoding
      {"\xe0\x80\xaf", "?"},                    //
      {"\xf0\x80\x80\xaf", "?"},                //
      {"\xed\xa0\x80", "?"},                    // a surrogate
      {"\xf4\x90\x80\x80", "?"},                // beyond Unicode
      {"\xf5\x80\x80\x80", "????"},             //
      {"\xff\xfe", "??"},                       //
      {std::string_view("\xc3\0x", 3), "??x"},  //
  };
  for (const auto &c : cases)
    EXPECT_EQ(Shown(c.name), c.shown);
}

TEST(Printable, InvisibleCharactersAndChangesOfDirectionAreReplaced) {
  for (const char *character :
       {"\xc2\xad", "\xd8\x9c", "\xe1\x85\x9f", "\xe2\x80\x8b", "\xe2\x80\x8f", "\xe2\x80\xa8", "\xe2\x80\xae",
        "\xe2\x81\xa0", "\xe2\x81\xa9", "\xe3\x85\xa4", "\xef\xb7\x90", "\xef\xb8\x8f", "\xef\xbb\xbf", "\xef\xbf\xbb",
        "\xef\xbf\xbe", "\xf0\x9f\xbf\xbf", "\xf3\xa0\x81\x81", "\xf4\x8f\xbf\xbf"}) {
    EXPECT_EQ(Shown(std::string("a") + character + "b"), "a?b") << character;
  }
}

TEST(Printable, TruncationKeepsCharactersWhole) {
  EXPECT_EQ(PrintableName("abc", 3), "abc");
  EXPECT_EQ(PrintableName("abcd", 3), "abc");
  EXPECT_EQ(PrintableName("ab\xc3\xa9", 3), "ab");
  EXPECT_EQ(PrintableName("a\xc3\xa9z", 3), "a\xc3\xa9");
  EXPECT_EQ(PrintableName("a\xf0\x9f\x90\xa7", 4), "a");
  EXPECT_EQ(PrintableName("\xc2\x9b\xc2\x9b", 1), "?") << "the substitute fits";
  EXPECT_EQ(PrintableName("a", 0), "");
}

TEST(Printable, PrintableNamesStayTheSame) {
  std::string all;
  for (int c = 0; c < 256; ++c)
    all += static_cast<char>(c);
  EXPECT_EQ(Shown(Shown(all)), Shown(all));
}

}  // namespace
}  // namespace platkit
