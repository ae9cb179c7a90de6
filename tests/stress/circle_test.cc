// Hosts whose groups are not a tree: cycles, or one group listed many times.
#include <algorithm>
#include <numeric>

#include "tests/stress/large_host.h"
#include "tests/support/process.h"

namespace stress {
namespace {

using testing_support::Outcome;

Outcome GroupStats(LargeHost &host, const std::vector<std::string> &options) {
  std::vector<std::string> words = {"-c", host.Write(), "-r", "group-stats", "-q", "-s", "gid"};
  words.insert(words.end(), options.begin(), options.end());
  return testing_support::Run({.program = KESTREL_PROGRAM, .arguments = words});
}

// Does not count the header.
int64_t Rows(const Outcome &outcome) { return std::ranges::count(outcome.output, '\n') - 1; }

constexpr int kMostUnquestioned = 1 << 20;

std::string Ended(int64_t startGroup, int visits) {
  return "KestrelTraverseGroups: there are too many groups below " + std::to_string(startGroup) +
         ", or they name each other: ended after " + std::to_string(visits) + " visits\n";
}

TEST(Circle, AGroupThatIsItsOwnChildHasALineOnEachLevel) {
  LargeHost host;
  host.AddGroup(0, {0});
  const Outcome run = GroupStats(host, {});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(run.output, "gid\n0\n0\n0\n0\n0\n0\n0\n0\n0\n0\n0\n0\n");
}

TEST(Circle, GroupsThatNameEachOtherAreVisitedEachTime) {
  LargeHost host;
  for (const int64_t id : {0, 1, 2})
    host.AddGroup(id, {0, 1, 2});
  const Outcome run = GroupStats(host, {});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(Rows(run), (531'441 - 1) / 2) << "the sum of 3^0 to 3^11";
}

TEST(Circle, TheWalkEndsWhereNobodyWouldSeeItsEnd) {
  LargeHost host;
  host.AddGroup(0, {7, 7, 7, 7, 7, 7, 7, 7});
  host.AddGroup(7, {0, 0, 0, 0, 0, 0, 0, 0});
  const Outcome run = GroupStats(host, {"-i", "vm"});
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.errors, Ended(0, kMostUnquestioned + 1));
  EXPECT_EQ(run.output, "gid\n");
}

TEST(Circle, NorDoesItWhereNoGroupIsAboveItself) {
  LargeHost host;
  for (int64_t id = 20; id < 32; ++id)
    host.AddGroup(id, std::vector<int64_t>(8, id + 1));
  const Outcome run = GroupStats(host, {"-g", "20", "-i", "vm"});
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.errors, Ended(20, kMostUnquestioned + 1));
}

TEST(Circle, WhatFollowsTheRowsIsPrinted) {
  LargeHost host;
  host.AddGroup(0, std::vector<int64_t>(8, 0));
  const Outcome run = testing_support::Run(
      {.program = KESTREL_PROGRAM,
       .arguments = {"-c", host.Write(), "-r", "group-stats", "-s", "gid", "-i", "vm", "-t", "-v"}});
  EXPECT_EQ(run.exitStatus, 1);
  const std::string rule = std::string(8, '-') + "\n";
  EXPECT_TRUE(run.output.ends_with("     gid\n" + rule + rule + "Virtual tags report\n" + rule +
                                   "Description of report header labels:\n                 gid: Group ID\n"))
      << run.output;
}

TEST(Circle, ALongListThatNamesOneGroupEndsSooner) {
  LargeHost host;
  host.AddGroup(0, std::vector<int64_t>(1'000'000, 0));
  const Outcome run = GroupStats(host, {});
  EXPECT_EQ(run.exitStatus, 1);
  // Together, these lists of a million have more than 2^27 entries.
  EXPECT_EQ(run.errors, Ended(0, 135));
  EXPECT_EQ(Rows(run), 135);
}

TEST(Circle, ATreeIsGoneThroughWhateverItsSize) {
  LargeHost host;
  std::vector<int64_t> members(2 * kMostUnquestioned);
  std::iota(members.begin(), members.end(), 1);  // none of them exists
  host.AddGroup(0, members);
  const Outcome run = GroupStats(host, {});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(run.output, "gid\n0\n");
}

}  // namespace
}  // namespace stress
