// nodal-snapshot(5) against the text that it is made of.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <regex>

#include "tests/manual/page.h"
#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace manual {
namespace {

std::vector<std::string> WordsOf(std::string text) {
  std::ranges::replace_if(
      text, [](unsigned char c) { return std::isalnum(c) == 0; }, ' ');
  return testing_support::Words(text);
}

TEST(SnapshotPage, HasEveryWordOfTheText) {
  const std::string text = testing_support::ReadFile(SNAPSHOT_TEXT);
  const std::string body = std::regex_replace(text.substr(text.find('\n')), std::regex("```[a-z]*"), "");
  const std::vector<std::string> words = WordsOf(body);
  const std::vector<std::string> page = WordsOf(Page("nodal-snapshot.5").Text());
  EXPECT_GT(words.size(), 1000u);
  auto place = page.begin();
  for (const std::string &word : words) {
    place = std::find(place, page.end(), word);
    ASSERT_TRUE(place != page.end()) << word;
    ++place;
  }
}

TEST(SnapshotPage, HasNoMarkupOfTheText) {
  const std::string page = Page("nodal-snapshot.5").Text();
  for (const char *markup : {"`", "**", "##", "| "})
    EXPECT_EQ(page.find(markup), std::string::npos) << markup;
}

}  // namespace
}  // namespace manual
