// When the source reads files, and for how long it reuses values.
#include "platkit/linux/linux_source.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "platkit/memory_states.h"
#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

// Reads all records of a group and of its descendants, as a report on groups does.
void Walk(Asker &ask, int64_t group) {
  const std::vector<int64_t> members = ask.Members(group);
  ask.Flags(group);
  ask.Name(group);
  ask.Tag(group);
  ask.Parent(group);
  ask.Alloc(group);
  ask.Capacity(group);
  ask.Stats(group);
  for (const int64_t member : members)
    Walk(ask, member);
}

TEST(LinuxSource, NothingIsReadBeforeANodeAsks) {
  SavedHost host("v2.host");
  EXPECT_EQ(host.source().definitions().signature, OwnDefinitions().signature);
  EXPECT_TRUE(host.opened().empty());
}

TEST(LinuxSource, AWalkReadsEachFileOnce) {
  for (const char *archive : {"v2.host", "v1.host", "kernel-5.10.host", "kvm-descriptors.host"}) {
    SavedHost host(archive);
    Asker ask = host.ask();
    Walk(ask, 0);
    std::vector<std::string> opened = host.opened();
    std::sort(opened.begin(), opened.end());
    const auto twice = std::adjacent_find(opened.begin(), opened.end());
    EXPECT_EQ(twice, opened.end()) << archive << ": " << (twice == opened.end() ? "" : *twice);
    EXPECT_GT(opened.size(), 5u);
  }
}

TEST(LinuxSource, CostlyFilesAreNeverRead) {
  SavedHost host("kvm-descriptors.host");
  Asker ask = host.ask();
  Walk(ask, 0);
  EXPECT_EQ(host.Opens("proc/400/fd"), 1);
  EXPECT_EQ(host.Opens("proc/401/fd"), 0) << "a process of one thread runs no machine";
  SavedHost other("v2.host");
  Asker askOther = other.ask();
  Walk(askOther, 0);
  EXPECT_EQ(other.Opens("proc/100/fd"), 0) << "KVM is not in use";
}

TEST(LinuxSource, OnlyWhatIsAskedForIsRead) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  ask.Members(0);
  EXPECT_EQ(host.Opens("proc/meminfo"), 0);
  EXPECT_EQ(host.Opens(kTop + "system.slice"), 0);
  EXPECT_EQ(host.Opens(kTop + "system.slice/memory.min"), 0);
}

TEST(LinuxSource, ARecordIsReadAgainAfterAChange) {
  SavedHost host("two-nodes.host");
  Asker ask = host.ask();
  const auto heap = [&] { return ask.Record(nodes::system_heaps_stats, {"kmalloc-8"}); };
  const auto numNodes = [&]() -> uint32_t { return ask.Record(nodes::memory_memInfo).numNodes; };
  EXPECT_CELL(ask.Record(nodes::memory_comprehensive).free, 8800000u);
  EXPECT_CELL(numNodes(), 2u);
  EXPECT_CELL(heap().numRanges, 1u);
  host.Write("proc/meminfo", "MemFree: 5 kB\n");
  host.Write("proc/buddyinfo", "Node 0, zone Normal 1\nNode 2, zone Normal 12\nNode 3, zone Normal 1\n");
  host.Write("proc/slabinfo", "kmalloc-8 1 1 8 512 1 : tunables 0 0 0 : slabdata 7 7 0\n");
  EXPECT_CELL(ask.Record(nodes::memory_comprehensive).free, 5u);
  EXPECT_CELL(numNodes(), 3u);
  EXPECT_CELL(heap().numRanges, 7u);
}

// Changes a file without advancing the clock, unlike SavedHost::Write.
void ChangeAtOnce(SavedHost &host, const std::string &path, std::string_view text) {
  std::ofstream(host.Path(path), std::ios::binary) << text;
}

// A cell of a saved host, and a file whose contents determine it.
struct SourceOfCell {
  const char *host;
  std::string file;
  const char *changed;  // content of the file
  uint64_t (*cell)(SavedHost &);
};

uint64_t FreeBuffers(SavedHost &host) {
  return host.ask().Record(nodes::system_buddy_comprehensive, {"memmap-00-hi"}).sizes[0].free;
}

uint64_t SizeOfNamespace(SavedHost &host) {
  return host.ask().Record(nodes::memory_pmem_volumes_regionStore_regions_info, {"region10", "namespace10.0"}).size;
}

const SourceOfCell kSourcesOfCells[] = {
    {"v2.host", "proc/meminfo", "MemTotal: 5 kB\n", [](SavedHost &h) -> uint64_t { return h.ask().Stats(0).memSize; }},
    {"v2.host", kWeb + "/memory.current", "2048\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Stats(h.ControlGroup(kWeb)).consumed; }},
    {"v2.host", kWeb + "/memory.stat", "kernel 4096\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Stats(h.ControlGroup(kWeb)).ovhd; }},
    {"v2.host", kWeb + "/memory.min", "0\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Capacity(h.ControlGroup(kTop + "system.slice")).consumedResv; }},
    {"v2.host", kWeb + "/cgroup.procs", "101\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Members(h.ControlGroup(kWeb)).size(); }},
    {"v2.host", "proc/101/status", "Name: x\nVmPTE: 41 kB\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Stats(101).ovhd; }},
    {"v2.host", "proc/101/ksm_merging_pages", "50\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Stats(101).sharedSaved; }},
    {"clients.host", "proc/swaps", "/a file 10 4 -2\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Record(nodes::sched_memClients_swapInfo, {20'000'310}).totalReg; }},
    {"clients.host", "proc/320/maps", "100000-200000 rw-p 00000000 00:00 0 \n",
     [](SavedHost &h) -> uint64_t { return h.ask().Stats(320).memSize; }},
    {"clients.host", kTop + "shared.slice/cgroup.procs", "320\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Record(nodes::memory_lpage_vmLPage, {20'000'320}).backings2M; }},
    {"clients.host", "proc/321/sched", "numa_pages_migrated : 13\n",
     [](SavedHost &h) -> uint64_t {
       return h.ask().Record(nodes::sched_memClients_remapTypes, {321, "numa"}).added;
     }},
    {"two-nodes.host", "proc/vmstat", "allocstall_normal 4\n",
     [](SavedHost &h) -> uint64_t {
       return h.ask().Record(nodes::sched_globalStats_memory_stateTransitions, {"high"}).toLowerCount;
     }},
    {"two-nodes.host", "proc/zoneinfo", "Node 0, zone Normal\n  pages free 1\n min 7\n present 9\n managed 9\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Record(nodes::sched_globalStats_memory_kestrel).minFree; }},
    {"two-nodes.host", "proc/buddyinfo", "Node 0, zone Normal 77\n", FreeBuffers},
    {"two-nodes.host", "proc/slabinfo", "kmalloc-8 1 1 8 512 1 : tunables 0 0 0 : slabdata 7 7 0\n",
     [](SavedHost &h) -> uint64_t { return h.ask().Record(nodes::system_heaps_stats, {"kmalloc-8"}).numRanges; }},
    {"two-nodes.host", "sys/bus/nd/devices/region10/size", "2097152\n",
     [](SavedHost &h) -> uint64_t {
       return h.ask().Record(nodes::memory_pmem_volumes_extents, {"region10", 0}).endBlock;
     }},
    {"two-nodes.host", "sys/bus/nd/devices/namespace10.0/size", "2097152\n", SizeOfNamespace},
};

TEST(LinuxSource, FiguresAreReusedFor100Milliseconds) {
  for (const SourceOfCell &source : kSourcesOfCells) {
    SavedHost host(source.host);
    const uint64_t before = source.cell(host);
    ChangeAtOnce(host, source.file, source.changed);
    EXPECT_EQ(source.cell(host), before) << source.file;
    host.Age(kFreshTime - std::chrono::nanoseconds(1));
    EXPECT_EQ(source.cell(host), before) << source.file;
    host.Age(std::chrono::nanoseconds(1));
    EXPECT_NE(source.cell(host), before) << source.file;
  }
}

TEST(LinuxSource, ListsAreReusedFor100Milliseconds) {
  const struct {
    const char *host;
    NodeRef<NoRecord> node;
    std::vector<int64_t> arguments;
    std::string folder;
  } lists[] = {
      {"v2.host", nodes::sched_groups_members_groups, {0}, kTop + "new"},
      {"persistent-memory.host", nodes::hardware_pci_seg, {}, "sys/bus/pci/devices/0009:00:00.0"},
  };
  for (const auto &list : lists) {
    SavedHost host(list.host);
    const auto count = [&] {
      std::vector<int64_t> found;
      EXPECT_EQ(host.ask().List(list.node, Given(list.arguments), found), HVC_OK);
      return found.size();
    };
    const size_t before = count();
    std::filesystem::create_directories(host.Path(list.folder));
    host.Age(kFreshTime - std::chrono::nanoseconds(1));
    EXPECT_EQ(count(), before) << list.node->name;
    host.Age(std::chrono::nanoseconds(1));
    EXPECT_EQ(count(), before + 1) << list.node->name;
  }
}

TEST(LinuxSource, HostWideFilesAreReadOnceForAllTheirRecords) {
  SavedHost host("two-nodes.host");
  Asker ask = host.ask();
  for (int round = 1; round <= 2; ++round, host.Age()) {
    ask.Record(nodes::memory_comprehensive);
    ask.Record(nodes::sched_globalStats_memory_kestrel);
    for (const std::string_view state : kMemoryStates)
      ask.Record(nodes::sched_globalStats_memory_stateTransitions, {std::string(state)});
    for (const std::string &name : ask.Names(nodes::system_buddy)) {
      ask.Record(nodes::memory_memNodes, {0});
      ask.Record(nodes::system_buddy_comprehensive, {name});
    }
    for (const std::string &name : ask.Names(nodes::system_heaps))
      ask.Record(nodes::system_heaps_stats, {name});
    for (const char *file : {"meminfo", "zoneinfo", "vmstat", "iomem", "buddyinfo", "slabinfo"}) {
      EXPECT_EQ(host.Opens(std::string("proc/") + file), round) << file;
    }
  }
}

// A report may read the last instance of a list long after it read the list.
TEST(LinuxSource, InstancesOfAnOldListAreStillFound) {
  SavedHost host("two-nodes.host");
  Asker ask = host.ask();
  for (const std::string &name : ask.Names(nodes::system_buddy)) {
    host.Age();
    ask.Record(nodes::system_buddy_comprehensive, {name});
  }
  for (const std::string &name : ask.Names(nodes::system_heaps)) {
    host.Age();
    ask.Record(nodes::system_heaps_stats, {name});
  }
  for (const std::string &volume : ask.Names(nodes::memory_pmem_volumes)) {
    for (const std::string &region : ask.Names(nodes::memory_pmem_volumes_regionStore_regions, {volume})) {
      host.Age();
      ask.Record(nodes::memory_pmem_volumes_regionStore_regions_info, {volume, region});
    }
  }
  for (const int64_t member : ask.Members(0)) {
    host.Age();
    ask.Stats(member);
  }
}

// In a walk over many groups, values expire before the walk ends. The source still finds each group in the folder in
// which a listing found it.
TEST(LinuxSource, AGroupThatWasListedIsNotSearchedForAgain) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  for (const int64_t group : {int64_t{0}, host.ControlGroup(kTop + "system.slice"), host.ControlGroup(kWeb)})
    ask.Members(group);
  host.Age();
  const size_t before = host.opened().size();
  ask.Name(host.ControlGroup(kWeb));
  EXPECT_EQ(host.opened().size(), before);
  ask.Stats(101);
  EXPECT_GT(host.opened().size(), before);
  const std::vector<std::string> opened(host.opened().begin() + static_cast<ptrdiff_t>(before), host.opened().end());
  for (const std::string &path : opened)
    EXPECT_TRUE(path.starts_with("proc/101/") || path.starts_with("sys/kernel/") || path == "proc/self/auxv") << path;
}

}  // namespace
}  // namespace platkit
