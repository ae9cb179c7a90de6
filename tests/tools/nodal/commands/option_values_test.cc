// Bad values of options are mistakes in the command line, and have its exit status.
#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "tests/tools/nodal/history/recorded.h"
#include "tests/tools/nodal/program.h"

namespace nodal {
namespace {

using testing_support::Lines;

struct BadValues {
  std::string option;
  std::vector<std::string> values;
};

struct CommandWithValues {
  std::string command;
  std::string operands;  // and the options without which the command does not run
  std::vector<BadValues> options;
};

const std::vector<std::string> kTimes = {"noon", "2026-02-30T00:00:00Z"};
const std::vector<std::string> kSteps = {"0s", "10"};
const std::vector<std::string> kIntervals = {"0.01", "5s"};
const std::vector<std::string> kCounts = {"0", "1K"};
const std::vector<std::string> kPaths = {"memory"};

// Values that are wrong on every host. "FOLDER" stands for a history.
const std::vector<CommandWithValues> &Table() {
  static const std::vector<CommandWithValues> table = {
      {"ls", "", {{"--cache", {"FOLDER@noon", "FOLDER@"}}}},
      {"get", "/system/heaps", {}},
      {"build", "host.json --output FOLDER/out", {}},
      {"capture", "--output FOLDER/out", {{"--only", kPaths}}},
      {"diff", "FOLDER@-0s FOLDER@-0s", {{"--only", kPaths}}},
      {"metrics", "--cache FOLDER@-0s", {{"--prefix", {"9", "a-b"}}, {"--only", {"frob", "kestrel_vm"}}}},
      {"metrics", "--cache FOLDER", {{"--from", kTimes}, {"--to", kTimes}, {"--step", kSteps}}},
      {"page", "FOLDER --output FOLDER/out", {{"--from", kTimes}, {"--to", kTimes}}},
      {"record",
       "--directory FOLDER/new",
       {{"--cache", {"FOLDER@-0s"}},
        {"--every", kIntervals},
        {"--count", kCounts},
        {"--keep", {"30", "59s"}},
        {"--max-size", {"100", "1X"}},
        {"--only", kPaths},
        {"--listen", {"x", "70000", "localhost:0", "::1:9100"}}}},
      {"series",
       "FOLDER /sched/groups/1/stats/memoryStats.consumed",
       {{"--from", kTimes}, {"--to", kTimes}, {"--step", kSteps}}},
      {"top",
       "--batch --cache FOLDER",
       {{"--screen", {"x"}},
        {"--columns", {"consumed:x", "consumed:"}},
        {"--sort", {"swapIn"}},
        {"--unit", {"tb"}},
        {"--every", kIntervals},
        {"--count", kCounts}}}};
  return table;
}

class OptionValues : public testing::Test {
 protected:
  OptionValues() { history_.AddGroups(0, 10); }

  std::string WithFolder(std::string text) const {
    for (size_t at = 0; (at = text.find("FOLDER")) != std::string::npos;)
      text.replace(at, 6, history_.path());
    return text;
  }

  // Expects that the value is a mistake in the command line, and that the only message names the option.
  void ExpectRefused(const CommandWithValues &command, const std::string &option, const std::string &value) {
    std::string operands = command.operands;
    if (const size_t own = operands.find(option + " "); own != std::string::npos)
      operands.erase(own, operands.find(' ', own + option.size() + 1) - own);
    const std::string words =
        command.command + " " + WithFolder(operands) + " " + option + "=" + testing_support::Quoted(WithFolder(value));
    const Outcome outcome = Nodal(words);
    EXPECT_EQ(outcome.status, 2) << words << ": " << outcome.err;
    EXPECT_EQ(outcome.out, "") << words;
    EXPECT_TRUE(outcome.err.starts_with("nodal: " + option)) << words << ": " << outcome.err;
    EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1) << words << ": " << outcome.err;
  }

  Recorded history_;
};

TEST_F(OptionValues, MalformedOnes) {
  for (const CommandWithValues &command : Table()) {
    for (const BadValues &bad : command.options) {
      for (const std::string &value : bad.values)
        ExpectRefused(command, bad.option, value);
    }
  }
}

// The long names of the options with values in the help of a command: "  -o,--output FILE ...".
std::set<std::string> OptionsWithValues(const std::string &command) {
  std::set<std::string> options;
  for (const std::string &line : Lines(Nodal(command + " --help").out)) {
    std::istringstream words(line);
    std::string name, value;
    words >> name >> value;
    const size_t start = name.find("--");
    const auto isUpper = [](char c) { return c >= 'A' && c <= 'Z'; };
    if (line.starts_with("  -") && start != std::string::npos && !value.empty() && isUpper(value[0]) &&
        (value.size() == 1 || isUpper(value[1])))
      options.insert(name.substr(start));
  }
  return options;
}

TEST_F(OptionValues, EmptyOnes) {
  const std::set<std::string> canBeEmpty = {"--prefix"};
  const std::map<std::string, size_t> expected = {{"ls", 0},     {"get", 0},     {"build", 1}, {"capture", 3},
                                                  {"diff", 1},   {"metrics", 6}, {"page", 4},  {"record", 7},
                                                  {"series", 3}, {"top", 8}};
  std::set<std::string> seen;
  for (const CommandWithValues &command : Table()) {
    if (!seen.insert(command.command).second) continue;
    const std::set<std::string> options = OptionsWithValues(command.command);
    EXPECT_EQ(options.size(), expected.at(command.command)) << command.command;
    for (const std::string &option : options) {
      if (!canBeEmpty.contains(option)) ExpectRefused(command, option, "");
    }
  }
  for (const std::string option : {"--cache", "--root"})
    ExpectRefused({.command = "ls", .operands = "", .options = {}}, option, "");
}

}  // namespace
}  // namespace nodal
