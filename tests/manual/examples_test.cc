// Compiles the example programs of the manual pages and runs the example commands with an installed tree. The output is
// exactly what the page shows.
#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>

#include "tests/manual/page.h"
#include "tests/support/process.h"
#include "tests/support/scratch.h"
#include "tests/support/text.h"
#include "tests/support/transcript.h"

namespace manual {
namespace {

using testing_support::Command;
using testing_support::Outcome;

struct PageWithExamples {
  const char *name;
  size_t commands;  // the minimum number of example commands
};

void PrintTo(const PageWithExamples &page, std::ostream *stream) { *stream << page.name; }

class Examples : public testing::TestWithParam<PageWithExamples> {
 protected:
  void SetUp() override {
    const Outcome outcome = testing_support::Run(
        {.program = CMAKE_PROGRAM, .arguments = {"--install", BUILD_FOLDER, "--prefix", tree_.path()}});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome;
    std::filesystem::copy(tree_.path() / "share/doc/kestrel/examples", scratch_.path());
  }

  void RunExample(const testing_support::Example &example) const {
    const Outcome outcome = testing_support::Run(InTree(example.command));
    EXPECT_EQ(outcome.exitStatus, 0) << example.command << "\n" << outcome;
    EXPECT_EQ(testing_support::MaskTimes(outcome.output), testing_support::MaskTimes(example.output))
        << example.command;
  }

  std::string File(const std::string &name) const { return scratch_.File(name); }

 private:
  Command InTree(const std::string &command) const {
    const std::string libraries = tree_.File(LIBRARY_FOLDER);
    return {.program = "/bin/sh",
            .arguments = {"-c", command},
            .environment = {{"PATH", tree_.File("bin") + ":/usr/bin:/bin"},
                            {"LC_ALL", "C"},
                            {"LD_LIBRARY_PATH", libraries},
                            {"PKG_CONFIG_PATH", libraries + "/pkgconfig"}},
            .directory = scratch_.path()};
  }

  testing_support::ScratchDirectory tree_;
  testing_support::ScratchDirectory scratch_;
};

TEST_P(Examples, DoWhatThePageShows) {
  size_t commands = 0;
  for (const std::string &text : Page(GetParam().name).Examples()) {
    if (text.starts_with("#include")) {
#ifdef KESTREL_SANITIZE
      GTEST_SKIP() << "a program without the sanitizers cannot have a library with them";
#endif
      testing_support::WriteFile(File("groups.c"), text);
    }
    const std::vector<testing_support::Example> examples = testing_support::ReadTranscript(text);
    for (const testing_support::Example &example : examples)
      RunExample(example);
    commands += examples.size();
  }
  EXPECT_GE(commands, GetParam().commands);
}

INSTANTIATE_TEST_SUITE_P(OfPage, Examples,
                         testing::Values(PageWithExamples{"kestrel.1", 4}, PageWithExamples{"nodal.1", 6},
                                         PageWithExamples{"platkit.3", 2}),
                         [](const auto &page) {
                           const std::string name = page.param.name;
                           return name.substr(0, name.find('.'));
                         });

}  // namespace
}  // namespace manual
