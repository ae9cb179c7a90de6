// Hosts with a few groups, for the tests of the live view.
#ifndef TESTS_TOOLS_NODAL_TOP_FAKE_HOST_H
#define TESTS_TOOLS_NODAL_TOP_FAKE_HOST_H

#include <map>
#include <string>
#include <vector>

#include "platkit/history/history_source.h"
#include "tools/nodal/top/feed.h"
#include "tools/nodal/top/session.h"

namespace nodal::top {

inline constexpr uint64_t kAllOnes = UINT64_MAX;

// One sample. Groups are added from the top down; the first one has the ID 0.
class FakeHost {
 public:
  struct Group {
    int64_t id;
    std::string name;
    int64_t parent;
    uint64_t consumed = 0;
    uint64_t max = kAllOnes;
    bool hasStats = true;
  };

  FakeHost &Add(const Group &group) {
    groups_[group.id] = group;
    if (group.id != 0) members_[group.parent].push_back(group.id);
    members_[group.id];
    return *this;
  }

  // Makes the group a process with this much swapped memory.
  FakeHost &AddProcess(const Group &group, uint64_t swapped) {
    processes_[group.id] = swapped;
    return Add(group);
  }

  // Makes the group a machine that has read this much from its swap file.
  FakeHost &AddMachine(const Group &group, uint64_t swapIn) {
    machines_[group.id] = swapIn;
    return Add(group);
  }

  // Makes the group the monitor of the machine above it.
  FakeHost &AddMonitor(const Group &group) {
    monitors_.push_back(group.id);
    return Add(group);
  }

  FakeHost &AddMember(int64_t group, int64_t member) {
    members_[group].push_back(member);
    return *this;
  }

  platkit::history::Sample Sample() const {
    platkit::history::Sample sample;
    for (const auto &[id, group] : groups_)
      AddGroup(sample, group);
    for (const auto &[id, members] : members_) {
      sample.Add(Path(id) + "/members/groups", platkit::history::ValueType::kIntegers,
                 std::as_bytes(std::span(members)));
    }
    for (const auto &[id, swapped] : processes_) {
      UwMemoryStatsRecord world = {};
      world.swapped = swapped;
      AddRecord(sample, "/sched/memClients/" + std::to_string(id) + "/kestrel/uw", world);
      AddClient(sample, id, HVC_GROUP_USER_WORLD);
    }
    for (const auto &[id, swapIn] : machines_) {
      VmSwapInfoRecord swap = {};
      swap.swapIn = swapIn;
      swap.gblSwapIn = 500;
      swap.totalReg = 900;
      AddRecord(sample, "/sched/memClients/" + std::to_string(id + 1000) + "/swapInfo", swap);
      VmmLeaderIDRecord monitor = {};
      monitor.vmmLeaderID = static_cast<uint32_t>(id + 1000);
      AddRecord(sample, "/worldGroups/" + std::to_string(id) + "/vmmLeaderID", monitor);
      AddClient(sample, id, HVC_GROUP_VM);
    }
    for (const int64_t id : monitors_) {
      GroupFlagsRecord flags = {};
      flags.flags = HVC_GROUP_VMM_SUB_CONTAINER;
      AddRecord(sample, Path(id) + "/groupFlags", flags);
    }
    sample.Sort();
    return sample;
  }

 private:
  static std::string Path(int64_t group) { return "/sched/groups/" + std::to_string(group); }

  template <typename Record>
  static void AddRecord(platkit::history::Sample &sample, const std::string &path, const Record &record) {
    sample.Add(path, platkit::history::ValueType::kRecord, std::as_bytes(std::span(&record, 1)));
  }

  static void AddGroup(platkit::history::Sample &sample, const Group &group) {
    GroupNameRecord name = {};
    group.name.copy(name.name, sizeof name.name - 1);
    AddRecord(sample, Path(group.id) + "/groupName", name);
    GroupAllocRecord allocation = {};
    allocation.max = group.max;
    AddRecord(sample, Path(group.id) + "/memAllocationInKB", allocation);
    if (!group.hasStats) return;
    GroupMemoryStatsRecord stats = {};
    stats.consumed = group.consumed;
    stats.touched = kAllOnes;
    AddRecord(sample, Path(group.id) + "/stats/memoryStats", stats);
  }

  static void AddClient(platkit::history::Sample &sample, int64_t id, uint32_t kind) {
    GroupFlagsRecord flags = {};
    flags.flags = kind;
    AddRecord(sample, Path(id) + "/groupFlags", flags);
    GroupLeaderIDRecord leader = {};
    leader.leaderID = static_cast<uint32_t>(id);
    AddRecord(sample, Path(id) + "/groupLeaderID", leader);
  }

  std::map<int64_t, Group> groups_;
  std::map<int64_t, std::vector<int64_t>> members_;
  std::map<int64_t, uint64_t> processes_;
  std::map<int64_t, uint64_t> machines_;
  std::vector<int64_t> monitors_;
};

// The group host contains system and user; system contains web and mail. Sizes are in KB.
inline FakeHost SmallHost() {
  FakeHost host;
  host.Add({0, "host", -1, 1000})
      .Add({1, "system", 0, 300})
      .Add({2, "user", 0, 600, 700})
      .Add({10, "web", 1, 100, 150})
      .Add({11, "mail", 1, 200});
  return host;
}

// A live host with these samples, one second apart.
class FakeFeed : public Feed {
 public:
  explicit FakeFeed(const std::vector<FakeHost> &hosts) {
    for (const FakeHost &host : hosts)
      samples_.push_back(host.Sample());
  }

  bool Step(bool isBack) override {
    if (isBack || next_ == samples_.size()) return false;
    source_.emplace(samples_[next_++], platkit::OwnDefinitions());
    return true;
  }

  platkit::Source &Now() override { return *source_; }
  double Seconds() const override { return next_ > 1 ? 1 : 0; }
  std::string Host() const override { return "alpha"; }
  std::string Time() const override { return "2026-03-14T09:26:5" + std::to_string(next_) + "Z"; }
  std::string Kind() const override { return "live"; }
  bool isLive() const override { return true; }

 private:
  std::vector<platkit::history::Sample> samples_;
  size_t next_ = 0;
  std::optional<platkit::SampleSource> source_;
};

inline SessionOptions UsualOptions(ScreenId screen = ScreenId::kGroups) {
  SessionOptions options = {.screen = screen};
  for (const Screen &each : Screens())
    options.settings[static_cast<size_t>(each.id)] = DefaultSettings(each);
  return options;
}

// The options with these columns on the screen.
inline SessionOptions OptionsWith(ScreenId screen, const std::vector<std::string> &columns) {
  SessionOptions options = UsualOptions(screen);
  Settings &settings = options.settings[static_cast<size_t>(screen)];
  settings.columns.clear();
  for (const std::string &name : columns)
    settings.columns.push_back(*FindColumn(Screens()[static_cast<size_t>(screen)], name));
  return options;
}

}  // namespace nodal::top

#endif  // TESTS_TOOLS_NODAL_TOP_FAKE_HOST_H
