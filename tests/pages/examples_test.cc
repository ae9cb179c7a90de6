// The examples of the pages, word for word, with what is installed: their programs are compiled, their commands run,
// and their output is what the page shows.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/pages/page.h"
#include "tests/support/process.h"
#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace pages_test {
namespace {

using testing_support::Command;
using testing_support::Outcome;

constexpr std::string_view kPrompt = "$ ";

class Examples : public testing::TestWithParam<const char *> {
 protected:
  void SetUp() override {
    const Outcome outcome = testing_support::Run(
        {.program = CMAKE_PROGRAM, .arguments = {"--install", BUILD_FOLDER, "--prefix", tree_.path()}});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome;
    std::filesystem::copy(tree_.path() / "share/doc/kestrel/examples", scratch_.path());
  }

  // Commands behind prompts, and below each of them its output.
  void RunCommands(const std::string &text) {
    const std::vector<std::string> lines = testing_support::Lines(text);
    for (size_t i = 0; i < lines.size();) {
      const std::string command = lines[i++].substr(kPrompt.size());
      std::string expected;
      for (; i < lines.size() && !lines[i].starts_with(kPrompt); ++i)
        expected += lines[i] + "\n";
      const Outcome outcome = testing_support::Run(InTree(command));
      EXPECT_EQ(outcome.exitStatus, 0) << command << "\n" << outcome;
      EXPECT_EQ(outcome.output, expected) << command;
      ++commands_;
    }
  }

  std::string File(const std::string &name) const { return scratch_.File(name); }
  unsigned commands() const { return commands_; }

 private:
  Command InTree(const std::string &command) const {
    const std::string libraries = tree_.File(LIBRARY_FOLDER);
    return {.program = "/bin/sh",
            .arguments = {"-c", command},
            .environment = {{"PATH", tree_.File("bin") + ":/usr/bin:/bin"},
                            {"LD_LIBRARY_PATH", libraries},
                            {"PKG_CONFIG_PATH", libraries + "/pkgconfig"}},
            .directory = scratch_.path()};
  }

  testing_support::ScratchDirectory tree_;
  testing_support::ScratchDirectory scratch_;
  unsigned commands_ = 0;
};

TEST_P(Examples, DoWhatThePageShows) {
  for (const std::string &example : Page(GetParam()).Examples()) {
    if (example.starts_with("#include")) {
      testing_support::WriteFile(File("groups.c"), example);
    } else if (example.starts_with(kPrompt)) {
      RunCommands(example);
    }
  }
  EXPECT_GE(commands(), 2u);
}

INSTANTIATE_TEST_SUITE_P(OfPage, Examples, testing::Values("nodal.1", "platkit.3"),
                         [](const auto &page) { return page.index == 0 ? "nodal" : "platkit"; });

}  // namespace
}  // namespace pages_test
