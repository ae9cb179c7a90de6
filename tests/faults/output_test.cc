// Output to a full device, to a pipe without a reader, and to a terminal.
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

std::string ErrorsOf(OutputTo output) {
  return output == OutputTo::kClosedPipe ? "" : "Couldn't write to standard output: No space left on device\n";
}

class LostOutput : public testing::TestWithParam<Lost> {};

TEST_P(LostOutput, IsAnError) {
  const StandinRun run = RunKestrel(BothReportsHost(), GetParam().arguments, {.output = GetParam().output});
  EXPECT_EQ(run.outcome.signal, 0);
  EXPECT_EQ(run.outcome.exitStatus, 1);
  EXPECT_EQ(run.outcome.errors, ErrorsOf(GetParam().output));
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

// More groups than fit into the buffers.
StandinHost WideHost() {
  Group top = {.id = 0};
  StandinHost host;
  for (int64_t id = 1; id <= 400; ++id) {
    host.Add({.id = id});
    top.children.push_back(id);
  }
  host.Add(top);
  return host;
}

TEST(LongOutput, EndsTheRunAtOnceWhenItIsLost) {
  const std::vector<std::string> arguments = {"-r", "group-stats", "-t", "-v"};
  const size_t allCalls = RunKestrel(WideHost(), arguments).calls.size();
  for (const OutputTo output : {OutputTo::kFullDevice, OutputTo::kClosedPipe}) {
    const StandinRun run = RunKestrel(WideHost(), arguments, {.output = output});
    EXPECT_EQ(run.outcome.signal, 0);
    EXPECT_EQ(run.outcome.exitStatus, 1);
    EXPECT_EQ(run.outcome.errors, ErrorsOf(output));
    EXPECT_LT(run.calls.size(), allCalls * 3 / 4) << "the walk went on";
  }
}

// Each warning first flushes standard output, and this flush detects the failure.
TEST(LostOutputWithWarnings, NamesTheCauseOfTheFirstFailedWrite) {
  StandinHost host = BothReportsHost();
  host.Fail({.operation = "NODAL_Get", .node = "sched_groups_groupTag", .status = 0x0bad0001});
  const std::vector<std::string> arguments = {"-r", "group-stats"};
  const std::string warnings = RunKestrel(host, arguments).outcome.errors;
  ASSERT_NE(warnings, "");
  for (const OutputTo output : {OutputTo::kFullDevice, OutputTo::kClosedPipe}) {
    const StandinRun run = RunKestrel(host, arguments, {.output = output});
    EXPECT_EQ(run.outcome.exitStatus, 1);
    // The run ends when the report prints its next line, so later warnings may be missing.
    EXPECT_TRUE(run.outcome.errors.ends_with(ErrorsOf(output)));
    EXPECT_TRUE(
        warnings.starts_with(run.outcome.errors.substr(0, run.outcome.errors.size() - ErrorsOf(output).size())));
  }
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
  // Control characters are masked only in messages that go to a terminal.
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

// A UTF-8 terminal obeys encoded control characters like those of one byte.
TEST_F(Terminal, ShowsNoEncodedControlCharacters) {
  StandinHost host;
  host.Add({.id = 0,
            .name = "a\xc2\x9b"
                    "31m\xc2\xb5\xc2",
            .tag = "\xc2\x80"});
  const std::vector<std::string> arguments = {"-r", "group-stats", "-q", "-s", "name:tag"};
  EXPECT_EQ(RunKestrel(host, arguments, {.output = OutputTo::kTerminal}).outcome.output,
            "gid,name,tag\n0,a??31m\xc2\xb5?,??\n");
}

TEST_F(Terminal, ShowsNoCharactersThatChangeTheDirectionOfText) {
  StandinHost host;
  host.Add({.id = 0,
            .name = "a\xe2\x80\xae"
                    "b\xff"});
  const std::vector<std::string> arguments = {"-r", "group-stats", "-q", "-s", "name"};
  EXPECT_EQ(RunKestrel(host, arguments, {.output = OutputTo::kTerminal}).outcome.output, "gid,name\n0,a???b?\n");
  EXPECT_EQ(RunKestrel(host, arguments).outcome.output,
            "gid,name\n0,a\xe2\x80\xae"
            "b\xff\n");
}

TEST_F(Terminal, ShowsNoControlCharactersOfAnArgument) {
  const auto warnings = [](const std::vector<std::string> &arguments) {
    const StandinRun run =
        RunKestrel(BothReportsHost(), arguments, {.output = OutputTo::kTerminal, .errorsToOutput = true});
    return run.outcome.output.substr(0, run.outcome.output.find('\n'));
  };
  EXPECT_EQ(warnings({"-r", "\x1b[2J"}), "Invalid report ?[2J");
  EXPECT_EQ(warnings({"-c", "/\x9b.cache", "-r", "vm-stats"}),
            "Couldn't open cache file /?.cache, error code: 195887107");
  EXPECT_EQ(warnings({"-r", "group-stats", "-i", "vm:\x1b"}), "Invalid flag (?) in filter");
  EXPECT_EQ(warnings({"-r", "group-stats", "-l", "\x1b"}), "Invalid level ?, must be > 0");
  EXPECT_EQ(warnings({"-r", "group-stats", "-l", "99\x1b"}), "Specified level 99? too high, reseting to 12");
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
