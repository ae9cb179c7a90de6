// Output to full devices, closed pipes and terminals.
#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"
#include "tests/support/text.h"

namespace faults {
namespace {

using testing_support::OutputTo;

struct Lost {
  const char *name;
  std::vector<std::string> arguments;
  OutputTo output;
};

void PrintTo(const Lost &lost, std::ostream *stream) { *stream << lost.name; }

StandinHost BothReportsHost() { return SmallHost().AddRecord("memory_pshare_stats", {}, SharingFigures()); }

class LostOutput : public testing::TestWithParam<Lost> {};

TEST_P(LostOutput, IsAnError) {
  const StandinRun run = RunKestrel(BothReportsHost(), GetParam().arguments, {.output = GetParam().output});
  EXPECT_EQ(run.outcome.signal, 0);
  EXPECT_EQ(run.outcome.exitStatus, 1);
  EXPECT_EQ(testing_support::Lines(run.outcome.errors).size(), 1u) << run.outcome.errors;
  EXPECT_EQ(ListErrors(run), "");
}

INSTANTIATE_TEST_SUITE_P(
    Everywhere, LostOutput,
    testing::Values(Lost{"GroupsToAFullDevice", {"-r", "group-stats", "-v"}, OutputTo::kFullDevice},
                    Lost{"GroupsToAClosedPipe", {"-r", "group-stats", "-v"}, OutputTo::kClosedPipe},
                    Lost{"CsvToAFullDevice", {"-r", "group-stats", "-q"}, OutputTo::kFullDevice},
                    Lost{"CsvToAClosedPipe", {"-r", "group-stats", "-q"}, OutputTo::kClosedPipe},
                    Lost{"SharingToAFullDevice", {"-r", "pshare-stats"}, OutputTo::kFullDevice},
                    Lost{"SharingToAClosedPipe", {"-r", "pshare-stats"}, OutputTo::kClosedPipe},
                    Lost{"HelpToAFullDevice", {"-h"}, OutputTo::kFullDevice},
                    Lost{"HelpToAClosedPipe", {"-h"}, OutputTo::kClosedPipe}),
    NameOf<Lost>);

// More rows than any buffer holds, so that the write fails during the walk.
TEST(LongOutput, LostInTheMiddleIsOneError) {
  Group top = {.id = 0};
  StandinHost host;
  for (int64_t id = 1; id <= 400; ++id) {
    host.Add({.id = id});
    top.children.push_back(id);
  }
  host.Add(top);
  for (const OutputTo output : {OutputTo::kFullDevice, OutputTo::kClosedPipe}) {
    const StandinRun run = RunKestrel(host, {"-r", "group-stats", "-t", "-v"}, {.output = output});
    EXPECT_EQ(run.outcome.signal, 0);
    EXPECT_EQ(run.outcome.exitStatus, 1);
    EXPECT_EQ(testing_support::Lines(run.outcome.errors).size(), 1u) << run.outcome.errors;
    EXPECT_EQ(ListErrors(run), "");
  }
}

TEST(LongOutput, TheReasonIsThatOfTheWriteThatFailed) {
  StandinHost host = BothReportsHost();
  EXPECT_EQ(RunKestrel(host, {"-h"}, {.output = OutputTo::kFullDevice}).outcome.errors,
            "Couldn't write to standard output: No space left on device\n");
  EXPECT_EQ(RunKestrel(host, {"-r", "group-stats", "-v"}, {.output = OutputTo::kClosedPipe}).outcome.errors,
            "Couldn't write to standard output: Broken pipe\n");
}

class Terminal : public testing::Test {
 protected:
  void SetUp() override {
    if (!testing_support::HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals here";
  }
};

TEST_F(Terminal, ShowsNoControlCharactersOfABuildText) {
  StandinHost host = BothReportsHost();
  host.Signature(0x0bad0021, "1.0\x1b[2J", "own");
  const std::vector<std::string> arguments = {"-r", "pshare-stats"};
  const auto message = [](const std::string &build) {
    return "0xbad0021: md5 signature mismatch with running hvcore built on " + build +
           ". (vs own for app sysinfo)\nVersion check failed\n";
  };
  const StandinRun shown = RunKestrel(host, arguments, {.output = OutputTo::kTerminal, .errorsToOutput = true});
  EXPECT_EQ(shown.outcome.output, message("1.0?[2J"));
  // Standard error decides whether the message is masked.
  EXPECT_EQ(RunKestrel(host, arguments, {.output = OutputTo::kTerminal}).outcome.errors, message("1.0\x1b[2J"));
}

TEST_F(Terminal, ShowsNoControlCharacters) {
  StandinHost host;
  host.Add({.id = 0, .name = "a\x1b[31mb\tc\nd\x7f", .tag = "\ae"});
  const std::vector<std::string> arguments = {"-r", "group-stats", "-q", "-s", "name:tag"};
  EXPECT_EQ(RunKestrel(host, arguments, {.output = OutputTo::kTerminal}).outcome.output,
            "gid,name,tag\n0,a?[31mb?c?d?,?e\n");
  EXPECT_EQ(RunKestrel(host, arguments).outcome.output, "gid,name,tag\n0,a\x1b[31mb\tc\nd\x7f,\ae\n");
}

// UTF-8 terminals interpret these like the one-byte control characters.
TEST_F(Terminal, ShowsNoEncodedControlCharacters) {
  StandinHost host;
  host.Add({.id = 0,
            .name = "a\xc2\x9b"
                    "31m\xc2\xb5\xc2",
            .tag = "\xc2\x80"});
  const std::vector<std::string> arguments = {"-r", "group-stats", "-q", "-s", "name:tag"};
  EXPECT_EQ(RunKestrel(host, arguments, {.output = OutputTo::kTerminal}).outcome.output,
            "gid,name,tag\n0,a??31m\xc2\xb5\xc2,??\n");
}

TEST_F(Terminal, ShowsTheSameTablesAsAPipe) {
  for (const std::vector<std::string> &arguments :
       {std::vector<std::string>{"-r", "group-stats", "-v"}, {"-r", "pshare-stats"}, {"-h"}}) {
    EXPECT_EQ(RunKestrel(BothReportsHost(), arguments, {.output = OutputTo::kTerminal}).outcome.output,
              RunKestrel(BothReportsHost(), arguments).outcome.output);
  }
}

}  // namespace
}  // namespace faults
