// The examples in README.md print exactly what the document shows.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <string_view>

#include "tests/docs/markdown.h"
#include "tests/support/process.h"
#include "tests/support/scratch.h"
#include "tests/support/text.h"
#include "tests/support/transcript.h"

namespace docs {
namespace {

using testing_support::Example;
using testing_support::MaskTimes;

constexpr std::string_view kPrograms = "build/release/bin/";

// A folder in which build/release is the tested build.
class Clone {
 public:
  Clone() {
    std::filesystem::create_directory(folder_.File("build"));
    std::filesystem::create_directory_symlink(BUILD_FOLDER, folder_.File("build/release"));
  }

  testing_support::Outcome Run(const std::string &command) const {
    return testing_support::Run({.program = "/bin/sh",
                                 .arguments = {"-c", command},
                                 .environment = {{"LC_ALL", "C"}},
                                 .directory = folder_.path().string(),
                                 .errorsToOutput = true});
  }

 private:
  testing_support::ScratchDirectory folder_;
};

// The output without times, and without the sizes of histories, which depend on the version of libzstd.
std::string Stable(const std::string &output) {
  static const std::regex kSize(" +[0-9.]+ KB");
  return std::regex_replace(MaskTimes(output), kSize, " SIZE");
}

TEST(Readme, ExamplesPrintWhatTheyShow) {
  const Clone clone;
  std::map<std::string, int> runs;
  for (const Section &section : ReadSections(README)) {
    for (const Block &block : section.blocks) {
      for (const Example &example : testing_support::ReadTranscript(block.text)) {
        if (!example.command.starts_with(kPrograms)) continue;
        const testing_support::Outcome outcome = clone.Run(example.command);
        EXPECT_EQ(outcome.exitStatus, 0) << example.command;
        EXPECT_EQ(Stable(outcome.output), Stable(example.output)) << example.command;
        ++runs[testing_support::Words(example.command.substr(kPrograms.size())).at(0)];
      }
    }
  }
  EXPECT_GT(runs["kestrel"], 0);
  EXPECT_GT(runs["nodal"], 0);
}

}  // namespace
}  // namespace docs
