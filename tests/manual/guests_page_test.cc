// Compares nodal-guests(1) with the program's help and with the keys of its file.
#include <gtest/gtest.h>

#include "platkit/linux/kernel/guests_file.h"
#include "tests/manual/page.h"
#include "tests/support/process.h"

namespace manual {
namespace {

constexpr char kOption[] = "(--[a-z-]+)";

TEST(GuestsPage, HasEachOptionAndNoOther) {
  const testing_support::Outcome help =
      testing_support::Run({.program = NODAL_GUESTS_PROGRAM, .arguments = {"--help"}});
  EXPECT_EQ(help.exitStatus, 0) << help;
  std::set<std::string> options = FindAll(help.output, kOption);
  EXPECT_GT(options.size(), 7u);
  // The examples of the page also use options of other programs.
  options.insert({"--live", "--now"});
  EXPECT_EQ(FindAll(Page("nodal-guests.1").Text(), kOption), options);
}

TEST(GuestsPage, HasEachKeyOfTheFile) {
  std::set<std::string> keys;
  for (size_t i = 0; i < platkit::kGuestFigures; ++i)
    keys.emplace(KeyOf(static_cast<platkit::GuestFigure>(i)));
  const std::string text = Page("nodal-guests.1").Text();
  const std::string table = text.substr(text.find("\tmeaning\nmemory-kb\t") + 8);
  EXPECT_EQ(FindAll(table.substr(0, table.find(".TE")), "\n([a-z-]+)\t"), keys) << table;
}

}  // namespace
}  // namespace manual
