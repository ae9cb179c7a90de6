#include <algorithm>
#include <filesystem>

#include "tests/support/text.h"
#include "tests/tools/nodal/program.h"

namespace {

using testing_support::Lines;

TEST(Top, PrintsTheTableOfASnapshot) {
  const Outcome outcome = OnSample("top --batch --columns consumed:max --flat --filter web");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out,
            "two-vms  2026-03-14T09:26:53Z  snapshot  groups\n"
            "name                consumedv  max\n"
            "web-01                  3.02G  max\n"
            "web-io                  46.4M 128M\n"
            "sum: 2 of 18 groups     3.02G\n");
}

TEST(Top, AmountsInTheUnitsOfTheReports) {
  const Outcome outcome = OnSample("top --batch --screen machines --columns memSize:memNeeded --unit kb");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out,
            "two-vms  2026-03-14T09:26:53Z  snapshot  machines\n"
            "name            memSize memNeeded\n"
            "web-01          4194304   1703936\n"
            "mail-01         2097152         -\n"
            "sum: 2 machines 6291456  >1703936\n");
}

TEST(Top, OneSubtreeByItsNumber) {
  const Outcome outcome = OnSample("top --batch --columns gid --subtree 10 --sort gid --reverse");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const std::vector<std::string> lines = Lines(outcome.out);
  ASSERT_GT(lines.size(), 3u);
  EXPECT_EQ(lines[2].substr(0, 8), "- web-01") << outcome.out;
}

TEST(Top, ReadsARootFolderTwice) {
  const Scratch scratch;
  std::filesystem::create_directories(scratch.Path("proc"));
  scratch.Write("proc/meminfo", "MemTotal: 4096 kB\nMemFree: 1024 kB\nMemAvailable: 2048 kB\n");
  const Outcome outcome =
      Nodal("--root " + scratch.Path("") + " top --batch -n 2 --every 0.1 --screen host --columns value --filter free");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const std::vector<std::string> lines = Lines(outcome.out);
  EXPECT_EQ(std::ranges::count(lines, "free            1.00M"), 2) << outcome.out;
}

TEST(Top, WrongOptionsNameWhatIsExpected) {
  const auto message = [](const std::string &words) {
    const Outcome outcome = OnSample("top --batch " + words);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    return outcome.err;
  };
  EXPECT_EQ(message("--screen x"), "nodal: --screen x: expected one of groups, machines, host, nodes, heaps\n");
  EXPECT_EQ(message("--columns consumed:x"),
            "nodal: --columns x: the screen groups has no such column (in nodal top, c lists the columns)\n");
  EXPECT_EQ(message("--sort swapIn"),
            "nodal: --sort swapIn: the screen groups has no such column (in nodal top, c lists the columns)\n");
  EXPECT_EQ(message("--unit tb"), "nodal: --unit tb: expected auto, b, kb, mb or pg\n");
  EXPECT_EQ(message("--every 0"), "nodal: --every 0: expected a number of seconds from 0.1 to 3600\n");
  EXPECT_EQ(message("-n 0"), "nodal: --count 0: expected a number of at least 1\n");
}

TEST(Top, NeedsATerminalWithoutBatch) {
  const Outcome outcome = OnSample("top </dev/null");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "nodal: top: standard input or output is not a terminal (--batch does not need one)\n");
}

TEST(Top, NamesCannotChangeTheTerminal) {
  const Scratch scratch;
  const std::string snapshot =
      Built(scratch, HostOf(R"("/sched/groups/0/groupName": {"name": "a\u001b]0;x\u0007\u202eb"},
                               "/sched/groups/0/groupTag": {"tag": "t\u001b[m"},
                               "/sched/groups/0/members/groups": [])"));
  const Outcome outcome = Nodal("--cache " + snapshot + " top --batch --columns tag");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_NE(outcome.out.find("a?]0;x??b"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("t?[m"), std::string::npos) << outcome.out;
  EXPECT_EQ(outcome.out.find('\x1b'), std::string::npos);
}

TEST(Top, ASnapshotWithoutGroupsIsEmpty) {
  const Scratch scratch;
  const std::string snapshot = Built(scratch, HostOf(""));
  for (const char *screen : {"groups", "machines", "nodes", "heaps"}) {
    const Outcome outcome = Nodal("--cache " + snapshot + " top --batch --screen " + screen);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("sum: 0 "), std::string::npos) << outcome.out;
  }
}

TEST(Top, AMissingSourceIsNamed) {
  const Outcome outcome = Nodal("--cache /nonexistent top --batch");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("/nonexistent"), std::string::npos) << outcome.err;
}

}  // namespace
