// Compares the examples of nodal-snapshot(5) with a snapshot: the first bytes of the file, and its JSON form.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/manual/page.h"
#include "tests/support/process.h"
#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace manual {
namespace {

// The only example that contains this text.
std::string Example(const std::string &text) {
  std::string found;
  for (const std::string &example : Page("nodal-snapshot.5").Examples()) {
    if (example.find(text) == example.npos) continue;
    EXPECT_EQ(found, "");
    found = example;
  }
  EXPECT_NE(found, "") << text;
  return found;
}

std::string WithoutBlanks(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
  return text;
}

TEST(SnapshotPage, MagicAndVersionAreAtTheirPosition) {
  const std::vector<std::string> bytes = testing_support::Words(Example("0e 00"));
  EXPECT_EQ(bytes.size(), 4u + 4 + 14 + 1);
  const std::string file = testing_support::ReadFile(SAMPLE_SNAPSHOT);
  for (size_t i = 0; i < bytes.size(); ++i)
    EXPECT_EQ(static_cast<unsigned char>(file.at(2048 + i)), std::stoul(bytes[i], nullptr, 16)) << i;
}

TEST(SnapshotPage, JsonExampleIsTheDumpOfItsSnapshot) {
  const testing_support::ScratchDirectory scratch;
  const std::string json = Example("\"signature\"");
  testing_support::WriteFile(scratch.File("host.json"), json);
  const testing_support::Outcome build = testing_support::Run(
      {.program = NODAL_PROGRAM, .arguments = {"build", scratch.File("host.json"), "-o", scratch.File("host.nodal")}});
  ASSERT_EQ(build.exitStatus, 0) << build;
  const testing_support::Outcome dump =
      testing_support::Run({.program = NODAL_PROGRAM, .arguments = {"dump", scratch.File("host.nodal")}});
  EXPECT_EQ(dump.exitStatus, 0) << dump;
  EXPECT_EQ(WithoutBlanks(dump.output), WithoutBlanks(json));
}

}  // namespace
}  // namespace manual
