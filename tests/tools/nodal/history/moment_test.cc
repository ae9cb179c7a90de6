// DIR@TIME as the path of a snapshot.
#include "tests/tools/nodal/history/recorded.h"

namespace nodal {
namespace {

using testing_support::Quoted;

class MomentCommands : public testing::Test {
 protected:
  MomentCommands() { history_.AddGroups(0, 100); }

  std::string At(const std::string &time) const { return Quoted(history_.path() + "@" + time); }

  std::string Consumed(const std::string &time) const {
    const Outcome outcome = Nodal("--cache " + At(time) + " get --json /sched/groups/1/stats/memoryStats");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const size_t start = outcome.out.find("\"consumed\": ") + 12;
    return outcome.out.substr(start, outcome.out.find(',', start) - start);
  }

  Recorded history_;
};

TEST_F(MomentCommands, ReadTheLastSample) {
  EXPECT_EQ(Consumed("-0s"), "1950");
  EXPECT_EQ(Consumed("2025-11-21T03:12:00Z"), "1000");
  EXPECT_EQ(Consumed("2025-11-21T03:12:14Z"), "1100");
  EXPECT_EQ(Consumed("@1763694725"), "1050");
}

TEST_F(MomentCommands, NameTheSpan) {
  const Outcome outcome = Nodal("--cache " + At("2025-11-21T03:11:59Z") + " ls");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "nodal: " + history_.path() +
                             "@2025-11-21T03:11:59Z: outside the history, which runs from 2025-11-21T03:12:00Z to "
                             "2025-11-21T03:13:35Z\n");
}

TEST_F(MomentCommands, ExplainTheFormsOfTimes) {
  EXPECT_EQ(Nodal("dump " + At("noon")).err,
            "nodal: " + history_.path() +
                "@noon: invalid time 'noon' (expected a form such as 2026-11-21T03:12:00Z, '2026-11-21 03:12' (local), "
                "03:12, @1763694720 or -10m)\n");
}

TEST_F(MomentCommands, TellOfDamage) {
  std::string bytes = Contents(history_.Segment(0));
  bytes[150] ^= 1;
  testing_support::WriteFile(history_.Segment(0), bytes);
  EXPECT_EQ(Nodal("diff " + At("03:12Z") + " " + At("-0s")).status, 2);
  EXPECT_EQ(Nodal("dump " + At("@1763694725")).err, "nodal: " + history_.path() +
                                                        "@@1763694725: the sample is damaged (nodal verify " +
                                                        history_.path() + " shows details)\n");
}

TEST_F(MomentCommands, NeedAHistory) {
  EXPECT_EQ(Nodal("dump " + Quoted(history_.scratch().folder() + "@-0s")).err,
            "nodal: " + history_.scratch().folder() + ": no history in this folder\n");
  EXPECT_EQ(Nodal("dump no-such-folder@-0s").err, "nodal: no-such-folder@-0s: No such file or directory\n");
}

TEST_F(MomentCommands, AreNotNeededForAFileOfThatName) {
  const std::string file = history_.path() + "@-0s";
  std::filesystem::copy_file(SAMPLE_SNAPSHOT, file);
  EXPECT_EQ(Nodal("dump " + Quoted(file)).out, Nodal("dump " + kSample).out);
}

TEST_F(MomentCommands, Diff) {
  const Outcome outcome =
      Nodal("diff --json " + At("@1763694720") + " " + At("@1763694730") + " --only /sched/groups/2/stats");
  EXPECT_EQ(outcome.status, 1) << outcome.err;
  EXPECT_NE(outcome.out.find("1010"), std::string::npos) << outcome.out;
  EXPECT_EQ(Nodal("diff " + At("-10s") + " " + At("-10s")).status, 0);
}

TEST_F(MomentCommands, Capture) {
  const std::string snapshot = history_.scratch().Path("out.nodal");
  const Outcome outcome = Nodal("capture --cache " + At("-20s") + " -o " + snapshot);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(Nodal("diff " + At("-20s") + " " + snapshot).status, 0);
  const std::string dump = Nodal("dump " + snapshot).out;
  EXPECT_NE(dump.find("\"time\": \"2025-11-21T03:13:15Z\""), std::string::npos) << dump;
  EXPECT_NE(dump.find("\"host\": \"alpha\""), std::string::npos);
}

// kestrel prints the same for a snapshot and for a sample with the same entries.
TEST(MomentOfASnapshot, HasTheSameReports) {
  Recorded history;
  history.AddGroups(0, 10);
  history.Add(SampleOf(SAMPLE_SNAPSHOT), 10);
  history.AddGroups(15, 20);
  const auto report = [](const std::string &cache, const std::string &name) {
    const testing_support::Outcome outcome =
        testing_support::Run({.program = KESTREL_PROGRAM, .arguments = {"-c", cache, "-r", name}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome;
    return testing_support::MaskTimes(outcome.output);
  };
  for (const char *name : {"group-stats", "vm-stats", "heap-stats", "comp-stats", "buddy-stats"})
    EXPECT_EQ(report(history.path() + "@2025-11-21T03:12:14Z", name), report(SAMPLE_SNAPSHOT, name)) << name;
  EXPECT_EQ(Nodal("verify " + Quoted(history.path() + "@@" + std::to_string(kStart + 10))).out,
            history.path() + "@@1763694730: 275 records, 73 lists, no problems\n");
}

TEST(MomentOfASnapshot, HasTheErrorsOfKestrel) {
  Recorded history;
  history.AddGroups(0, 10);
  const auto errors = [](const std::string &cache) {
    return testing_support::Run({.program = KESTREL_PROGRAM, .arguments = {"-c", cache, "-r", "vm-stats"}}).errors;
  };
  EXPECT_EQ(errors(history.path() + "@@1"), "Couldn't open cache file " + history.path() +
                                                "@@1, error code: " + std::to_string(HVC_OUT_OF_RANGE) + "\n");
  EXPECT_EQ(errors(history.scratch().folder() + "@x"), "Couldn't open cache file " + history.scratch().folder() +
                                                           "@x, error code: " + std::to_string(HVC_NOT_FOUND) + "\n");
}

}  // namespace
}  // namespace nodal
