// Every allocation of every report fails, over saved hosts, a snapshot and the running host.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "platkit/source.h"
#include "src/dcpmm/uncore.h"
#include "src/reports/reports.h"
#include "tests/stress/short_run.h"

namespace stress {
namespace {

// A host with modules of persistent memory, for dcpmm-stats.
std::unique_ptr<SavedRoot> MakeHostWithModules() {
  auto host = std::make_unique<SavedRoot>();
  platkit::SavedHost &files = host->files();
  files.Write("proc/cpuinfo", "processor\t: 0\nmodel\t\t: 85\n");
  files.MakeFolder("sys/bus/nd/devices/nmem0");
  for (const kestrel::UnitPlace &unit : kestrel::kUnitPlaces) {
    std::array<char, 64> name;
    std::snprintf(name.data(), name.size(), "sys/bus/pci/devices/0000:3a:%02x.%x", unit.slot, unit.function);
    const std::string device(name.data());
    files.Write(device + "/vendor", "0x8086\n");
    files.Write(device + "/device", "0x2042\n");
    files.Write(device + "/config", std::string(4096, '\0'));
  }
  return host;
}

std::string NameOf(const testing::TestParamInfo<size_t> &info) {
  std::string name = kestrel::kReports[info.param]->name;
  std::ranges::replace(name, '-', '_');
  return name;
}

// The parameter is an index in kReports. A pointer to a report would not do: RunKestrel restores all variables whose
// names contain the namespace kestrel, also those of GoogleTest's templates.
class EveryAllocation : public testing::TestWithParam<size_t> {
 protected:
  static const kestrel::Report &report() { return *kestrel::kReports[GetParam()]; }
};

TEST_P(EveryAllocation, FailsOnSavedHosts) {
  if (!report().readsSavedHosts) {
    FailEachAllocation(*MakeHostWithModules(), report().name);
    return;
  }
  for (const char *archive : {"clients.host", "two-nodes.host", "persistent-memory.host", "v1.host"}) {
    for (const platkit::Reach reach : {platkit::Reach::kHost, platkit::Reach::kRootFolder}) {
      SCOPED_TRACE(archive);
      SavedRoot host(archive, reach);
      FailEachAllocation(host, report().name);
    }
  }
}

TEST_P(EveryAllocation, FailsOverASnapshot) {
  if (!report().readsSavedHosts) GTEST_SKIP() << "it reads no snapshots";
  Snapshot host(SAMPLE_SNAPSHOT);
  FailEachAllocation(host, report().name);
}

TEST_P(EveryAllocation, FailsOnTheRunningHost) {
  if (!report().readsSavedHosts) GTEST_SKIP() << "it writes registers";
  RunningHost host;
  FailEachAllocation(host, report().name);
}

INSTANTIATE_TEST_SUITE_P(Of, EveryAllocation, testing::Range(size_t{0}, std::size(kestrel::kReports)), NameOf);

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
