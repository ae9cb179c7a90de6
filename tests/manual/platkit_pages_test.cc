// Compares platkit(3) and platkit-nodes(3) with the library and its header.
#include <gtest/gtest.h>

#include "tests/manual/page.h"
#include "tests/support/process.h"
#include "tests/support/scratch.h"

namespace manual {
namespace {

TEST(PlatkitPages, HaveEachSymbolOfTheLibrary) {
  const testing_support::Outcome symbols = testing_support::Run(
      {.program = NM_PROGRAM, .arguments = {"--dynamic", "--defined-only", "--format=posix", PLATKIT_LIBRARY}});
  ASSERT_EQ(symbols.exitStatus, 0) << symbols;
  const std::string pages = Page("platkit.3").Text() + Page("platkit-nodes.3").Text();
  const std::set<std::string> words = FindAll(pages, "([A-Za-z_0-9]+)");
  // The version itself is an absolute symbol, of kind A.
  const std::set<std::string> exported = FindAll("\n" + symbols.output, "\n([A-Za-z_0-9]+)[@A-Z_0-9]* [^A]");
  EXPECT_GT(exported.size(), 60u);
  for (const std::string &symbol : exported)
    EXPECT_TRUE(words.contains(symbol)) << symbol;
}

TEST(PlatkitPages, HaveEachStatusAndConstantOfTheHeader) {
  const std::string header = testing_support::ReadFile(NODAL_HEADER);
  const std::string expression = "\\b((?:HVC|NODAL)_[A-Z_]*[A-Z])(?=[^A-Za-z_])";
  const std::set<std::string> named = FindAll(Page("platkit.3").Text(), expression);
  const std::set<std::string> declared = FindAll(header, expression);
  EXPECT_GT(declared.size(), 20u);
  for (const std::string &name : declared)
    EXPECT_TRUE(named.contains(name)) << name;
}

}  // namespace
}  // namespace manual
