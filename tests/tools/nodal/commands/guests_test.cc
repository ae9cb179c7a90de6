// nodal guests, with a stand-in for nodal-guests.
#include <filesystem>

#include "tests/tools/nodal/program.h"

namespace {

namespace fs = std::filesystem;

// A copy of nodal in a separate folder, because nodal looks for nodal-guests in its own folder.
class Guests : public testing::Test {
 protected:
  Guests() { fs::copy_file(NODAL_PROGRAM, scratch_.Path("nodal")); }

  void AddProgram(const std::string &script) {
    fs::permissions(scratch_.Write("nodal-guests", "#!/bin/sh\n" + script), fs::perms::owner_all);
  }

  testing_support::Outcome RunNodal(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "guests");
    return testing_support::Run({.program = scratch_.Path("nodal"), .arguments = std::move(arguments)});
  }

  Scratch scratch_;
};

TEST_F(Guests, PassesAllArgumentsOn) {
  AddProgram("for word; do echo \"<$word>\"; done; exit 7\n");
  const testing_support::Outcome outcome = RunNodal({"--cache", "a b", "-o", "", "--version", "--", "x"});
  EXPECT_EQ(outcome.exitStatus, 7);
  EXPECT_EQ(outcome.output, "<--cache>\n<a b>\n<-o>\n<>\n<--version>\n<-->\n<x>\n");
  EXPECT_EQ(RunNodal({}).output, "");
}

TEST_F(Guests, SaysWhichPackageIsMissing) {
  const testing_support::Outcome outcome = RunNodal({"--json"});
  EXPECT_EQ(outcome.exitStatus, 1);
  EXPECT_EQ(outcome.errors,
            "nodal: " + scratch_.Path("nodal-guests") + ": not installed; install the Debian package nodal-guests\n");
}

TEST_F(Guests, HasAHelpOfItsOwn) {
  AddProgram("exit 7\n");
  const testing_support::Outcome outcome = RunNodal({"--help"});
  EXPECT_EQ(outcome.exitStatus, 0);
  EXPECT_NE(outcome.output.find("See nodal-guests(1)"), std::string::npos) << outcome;
}

}  // namespace
