// Fails each allocation of all reports, over saved hosts, a snapshot and the running host.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <vector>

#include "platkit/source.h"
#include "src/reports/reports.h"
#include "tests/stress/short_run.h"

namespace stress {
namespace {

// The reports that read saved hosts, as indexes in kReports. dcpmm-stats ends its process after a failed step, so
// short_memory_test tests it. The test parameters are indexes and not pointers to reports. RunKestrel restores all
// variables whose names contain the namespace kestrel, including those of GoogleTest's templates.
std::vector<size_t> SavedHostReports() {
  std::vector<size_t> indexes;
  for (size_t i = 0; i < std::size(kestrel::kReports); ++i) {
    if (kestrel::kReports[i]->readsSavedHosts) indexes.push_back(i);
  }
  return indexes;
}

std::string NameOf(const testing::TestParamInfo<size_t> &info) {
  std::string name = kestrel::kReports[info.param]->name;
  std::ranges::replace(name, '-', '_');
  return name;
}

class EveryAllocation : public testing::TestWithParam<size_t> {
 protected:
  static const kestrel::Report &report() { return *kestrel::kReports[GetParam()]; }
};

TEST_P(EveryAllocation, FailsOnSavedHosts) {
  for (const char *archive : {"clients.host", "two-nodes.host", "persistent-memory.host", "v1.host"}) {
    for (const platkit::Reach reach : {platkit::Reach::kHost, platkit::Reach::kRootFolder}) {
      SCOPED_TRACE(archive);
      SavedRoot host(archive, reach);
      FailEachAllocation(host, report().name);
    }
  }
}

TEST_P(EveryAllocation, FailsOverASnapshot) {
  Snapshot host(SAMPLE_SNAPSHOT);
  FailEachAllocation(host, report().name);
}

TEST_P(EveryAllocation, FailsOnTheRunningHost) {
  RunningHost host;
  FailEachAllocation(host, report().name);
}

INSTANTIATE_TEST_SUITE_P(Of, EveryAllocation, testing::ValuesIn(SavedHostReports()), NameOf);

// Control groups and processes vanish and return, and a shortage occurs while the tree changes.
TEST(ChangingHost, IsRightAfterAShortage) {
  namespace fs = std::filesystem;
  SavedRoot host("clients.host", platkit::Reach::kHost);
  const std::string groups = host.files().Path("sys/fs/cgroup");
  std::vector<fs::path> movable;
  for (const fs::directory_entry &entry : fs::directory_iterator(groups)) {
    if (entry.is_directory()) movable.push_back(entry.path());
  }
  ASSERT_FALSE(movable.empty());
  const auto moveAll = [&](bool away) {
    for (const fs::path &path : movable) {
      const fs::path other = host.files().Path("away-" + path.filename().string());
      fs::rename(away ? path : other, away ? other : path);
    }
  };
  const std::vector<std::string> words = {"-r", "group-stats", "-q"};
  uint64_t allocations = 0;
  const auto runAfterMove = [&](bool away, Shortage shortage) {
    moveAll(away);
    host.Age();
    const Outcome run = RunKestrel(words, shortage);
    allocations = std::max(allocations, AllocationsOfRun());
    return run;
  };
  host.Open();
  RunKestrel(words);
  const Outcome without = runAfterMove(true, {});
  const Outcome with = runAfterMove(false, {});
  ASSERT_NE(with, without);
  for (uint64_t k = 1; k <= allocations; ++k) {
    for (const bool away : {true, false}) {
      runAfterMove(away, {.from = k});
      ASSERT_EQ(RunKestrel(words), away ? without : with) << "allocation " << k;
    }
  }
  platkit::UseSource(nullptr);
}

}  // namespace
}  // namespace stress
