// Hosts whose groups are not a tree: cycles, or one group listed many times.
#include <algorithm>
#include <numeric>

#include "tests/stress/large_host.h"
#include "tests/support/process.h"

// Millions of visits take minutes with the sanitizers.
#ifdef KESTREL_SANITIZE
#define SKIP_IF_SANITIZED() GTEST_SKIP() << "it takes minutes with the sanitizers"
#else
#define SKIP_IF_SANITIZED() static_cast<void>(0)
#endif

namespace stress {
namespace {

using testing_support::Outcome;

Outcome GroupStats(LargeHost &host, const std::vector<std::string> &options) {
  std::vector<std::string> words = {"-c", host.Write(), "-r", "group-stats", "-q", "-s", "gid"};
  words.insert(words.end(), options.begin(), options.end());
  return testing_support::Run({.program = KESTREL_PROGRAM, .arguments = words});
}

// Returns the number of rows without the header.
int64_t Rows(const Outcome &outcome) { return std::ranges::count(outcome.output, '\n') - 1; }

constexpr int kBudget = 1 << 30;
constexpr int kVisitCost = 64;

std::string Stopped(int64_t startGroup, int visits) {
  return "KestrelTraverseGroups: too many groups below " + std::to_string(startGroup) +
         ", or a cycle of groups: stopped after " + std::to_string(visits) + " visits\n";
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

TEST(Circle, FourGroupsThatNameEachOtherAreWalkedToTheEnd) {
  SKIP_IF_SANITIZED();
  LargeHost host;
  for (const int64_t id : {0, 1, 2, 3})
    host.AddGroup(id, {0, 1, 2, 3});
  const Outcome run = GroupStats(host, {});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(Rows(run), (16'777'216 - 1) / 3) << "the sum of 4^0 to 4^11";
}

// Long lists of children exhaust the budget of a walk with few visits.
TEST(Circle, TheWalkStopsWhenItsBudgetIsUsedUp) {
  SKIP_IF_SANITIZED();
  constexpr int kNames = 65536;
  LargeHost host;
  host.AddGroup(0, std::vector<int64_t>(kNames, 7));
  host.AddGroup(7, std::vector<int64_t>(kNames, 0));
  const Outcome run = testing_support::Run(
      {.program = KESTREL_PROGRAM,
       .arguments = {"-c", host.Write(), "-r", "group-stats", "-s", "gid", "-i", "vm", "-t", "-v"}});
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.errors, Stopped(0, kBudget / (kNames + kVisitCost) + 1));
  const std::string rule = std::string(8, '-') + "\n";
  EXPECT_TRUE(run.output.ends_with("     gid\n" + rule + rule + "Virtual tags report\n" + rule +
                                   "Description of report header labels:\n                 gid: Group ID\n"))
      << "what follows the rows is missing: " << run.output;
}

TEST(Circle, TheWalkAlsoStopsWithoutACycle) {
  SKIP_IF_SANITIZED();
  constexpr int kNames = 65536;
  LargeHost host;
  for (int64_t id = 20; id < 32; ++id)
    host.AddGroup(id, std::vector<int64_t>(kNames, id + 1));
  const Outcome run = GroupStats(host, {"-g", "20", "-i", "vm"});
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_TRUE(run.errors.starts_with("KestrelTraverseGroups: too many groups below 20, or a cycle of groups: stopped"))
      << run.errors;
}

TEST(Circle, AHostOfTwoMillionGroupsIsWalkedToTheEnd) {
  LargeHost host;
  std::vector<int64_t> members(2 << 20);
  std::iota(members.begin(), members.end(), 1);  // none of them exists
  host.AddGroup(0, members);
  const Outcome run = GroupStats(host, {});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(run.output, "gid\n0\n");
}

}  // namespace
}  // namespace stress
