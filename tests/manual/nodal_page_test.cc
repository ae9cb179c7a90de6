// Compares nodal(1) with the program's help.
#include <gtest/gtest.h>

#include "tests/manual/page.h"
#include "tests/support/process.h"

namespace manual {
namespace {

std::string Help(const std::vector<std::string> &arguments) {
  const testing_support::Outcome outcome = testing_support::Run({.program = NODAL_PROGRAM, .arguments = arguments});
  EXPECT_EQ(outcome.exitStatus, 0) << outcome;
  return outcome.output;
}

std::set<std::string> Commands() {
  const std::string help = Help({"--help"});
  return FindAll(help.substr(help.find("\nCommands:")), "\n  ([a-z]+) ");
}

std::set<std::string> Options(const std::string &text) { return FindAll(text, "(--[a-z]+(?:-[a-z]+)*)"); }

TEST(NodalPage, HasEachCommand) { EXPECT_EQ(Page("nodal.1").Subsections("COMMANDS"), Commands()); }

TEST(NodalPage, HasEachOptionAndNoOther) {
  std::set<std::string> options = Options(Help({"--help"}));
  for (const std::string &command : Commands())
    options.merge(Options(Help({command, "--help"})));
  EXPECT_GT(options.size(), 8u);
  // The page must not mention options of other programs.
  EXPECT_EQ(Options(Page("nodal.1").Text()), options);
}

}  // namespace
}  // namespace manual
