// nodal metrics.
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "platkit/node_ref.h"
#include "platkit/path.h"
#include "platkit/version.h"
#include "tests/linux/saved_host.h"
#include "tests/support/text.h"
#include "tests/tools/nodal/program.h"
#include "tools/nodal/metrics/metric_table.h"

namespace nodal {
namespace {

using platkit::FieldUnit;
using testing_support::Lines;

std::string Families() {
  std::string words;
  for (const FamilyDescription &family : MetricFamilies())
    words += " --only " + std::string(family.name);
  return words;
}

class MetricsOf : public testing::Test {
 protected:
  // The samples of a host with these nodes, without comment lines.
  std::string Samples(const std::string &nodes, const std::string &words) {
    const Outcome outcome = Nodal("metrics --cache " + Built(scratch_, HostOf(nodes)) + " " + words);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(outcome.out.ends_with("# EOF\n"));
    std::string samples;
    for (const std::string &line : Lines(outcome.out)) {
      if (!line.starts_with('#')) samples += line + "\n";
    }
    return samples;
  }

  Scratch scratch_;
};

TEST_F(MetricsOf, AWholeText) {
  const std::string host = Built(scratch_, HostOf(R"("/system/heaps": ["main", "net"],
    "/system/heaps/main/stats": {"size": 8192, "avail": 4096, "max": -1, "lowPctFreeOfMax": 7, "numSuccAllocs": 12},
    "/system/heaps/net/stats": {"size": 1, "max": 10, "numFailAllocs": 3})"));
  const Outcome outcome = Nodal("metrics --only heap --prefix x_ --cache " + host);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, R"(# HELP x_heap_size_bytes Current size.
# TYPE x_heap_size_bytes gauge
x_heap_size_bytes{heap="main"} 8192
x_heap_size_bytes{heap="net"} 1
# HELP x_heap_available_bytes Free part of the current size.
# TYPE x_heap_available_bytes gauge
x_heap_available_bytes{heap="main"} 4096
x_heap_available_bytes{heap="net"} 0
# HELP x_heap_limit_bytes Largest size of the heap; 0 if it is unlimited.
# TYPE x_heap_limit_bytes gauge
x_heap_limit_bytes{heap="net"} 10
# HELP x_heap_least_free_ratio Smallest free share of the limit so far.
# TYPE x_heap_least_free_ratio gauge
x_heap_least_free_ratio{heap="main"} 0.07
x_heap_least_free_ratio{heap="net"} 0
# HELP x_heap_allocations_total Allocations that succeeded.
# TYPE x_heap_allocations_total counter
x_heap_allocations_total{heap="main"} 12
x_heap_allocations_total{heap="net"} 0
# HELP x_heap_failed_allocations_total Allocations that failed.
# TYPE x_heap_failed_allocations_total counter
x_heap_failed_allocations_total{heap="main"} 0
x_heap_failed_allocations_total{heap="net"} 3
# EOF
)");
}

// A group of each kind. The virtual machine has two clients: 100 of its own, and 101 of its monitor.
constexpr char kGroups[] = R"(
  "/sched/groups/0/groupName": {"name": "host"}, "/sched/groups/0/groupFlags": {"flags": 2049},
  "/sched/groups/0/parentGroupID": {"parentGroupID": -1}, "/sched/groups/0/members/groups": [3, 1, 2, 4],
  "/sched/groups/0/stats/memoryStats": {"consumed": 70},
  "/sched/groups/1/groupName": {"name": "web"}, "/sched/groups/1/groupFlags": {"flags": 12},
  "/sched/groups/1/groupTag": {"tag": "12345678"}, "/sched/groups/1/parentGroupID": {"parentGroupID": 0},
  "/sched/groups/1/groupLeaderID": {"leaderID": 100}, "/worldGroups/100/vmmLeaderID": {"vmmLeaderID": 101},
  "/sched/groups/1/stats/memoryStats": {"consumed": 40},
  "/sched/memClients/100/kestrel/vmm": {"mapped": 30, "ballooned": 2}, "/sched/memClients/100/swapInfo": {"swapped": 1000},
  "/sched/memClients/101/swapInfo": {"swapped": 5}, "/sched/memClients/101/kestrel/vmm": {"mapped": 2000},
  "/memory/lpage/vmLPage/101": {"backings2M": 6}, "/memory/lpage/vmLPage/100": {"backings2M": 3000},
  "/sched/groups/2/groupName": {"name": "shell"}, "/sched/groups/2/groupFlags": {"flags": 10},
  "/sched/groups/2/parentGroupID": {"parentGroupID": 0}, "/sched/groups/2/groupLeaderID": {"leaderID": 200},
  "/sched/groups/2/stats/memoryStats": {"consumed": 9}, "/sched/memClients/200/kestrel/uw": {"mapped": 8},
  "/sched/memClients/100/kestrel/uw": {"mapped": 4000},
  "/sched/groups/3/groupName": {"name": "kernel"}, "/sched/groups/3/groupFlags": {"flags": 515},
  "/sched/groups/3/parentGroupID": {"parentGroupID": 0},
  "/sched/groups/4/groupName": {"name": "web"}, "/sched/groups/4/groupFlags": {"flags": 12290},
  "/sched/groups/4/parentGroupID": {"parentGroupID": 0})";

TEST_F(MetricsOf, Groups) {
  EXPECT_EQ(Samples(kGroups, "--only group_info --only group_consumed_bytes"),
            R"(kestrel_group_info{group="0",name="host",kind="container"} 1
kestrel_group_info{group="3",name="kernel",parent="0",kind="kernel"} 1
kestrel_group_info{group="1",name="web",parent="0",tag="12345678",kind="vm"} 1
kestrel_group_info{group="4",name="web",parent="0",kind="vmm"} 1
kestrel_group_consumed_bytes{group="0",name="host"} 71680
kestrel_group_consumed_bytes{group="1",name="web"} 40960
)");
}

TEST_F(MetricsOf, MachinesHaveFiguresOfTwoClients) {
  EXPECT_EQ(Samples(kGroups,
                    "--only vm_consumed_bytes --only vm_mapped_bytes --only vm_ballooned_bytes "
                    "--only vm_swapped_bytes --only vm_large_pages"),
            R"(kestrel_vm_consumed_bytes{group="1",vm="web"} 40960
kestrel_vm_mapped_bytes{group="1",vm="web"} 30720
kestrel_vm_ballooned_bytes{group="1",vm="web"} 2048
kestrel_vm_swapped_bytes{group="1",vm="web"} 5120
kestrel_vm_large_pages{group="1",vm="web"} 6
)");
}

TEST_F(MetricsOf, UserWorldsAreNoMachines) {
  EXPECT_EQ(Samples(kGroups, "--only world_consumed_bytes --only world_mapped_bytes"),
            R"(kestrel_world_consumed_bytes{group="2",name="shell"} 9216
kestrel_world_mapped_bytes{group="2",name="shell"} 8192
)");
}

TEST_F(MetricsOf, TheStateOfMemory) {
  const auto transitions = [](const std::string &state, const std::string &counts) {
    return R"("/sched/globalStats/memory/stateTransitions/)" + state + "\": {" + counts + "}, ";
  };
  const std::string rest = transitions("high", R"("toHigherCount": 100, "toLowerCount": 7)") +
                           transitions("clear", R"("toHigherCount": 6, "toLowerCount": 5)") +
                           transitions("soft", R"("toHigherCount": 4, "toLowerCount": 3)") +
                           transitions("hard", R"("toHigherCount": 2, "toLowerCount": 4294967294)");
  const std::string entries = R"(kestrel_host_memory_state_entries_total{state="high"} 7
kestrel_host_memory_state_entries_total{state="clear"} 11
kestrel_host_memory_state_entries_total{state="soft"} 7
kestrel_host_memory_state_entries_total{state="hard"} 4
kestrel_host_memory_state_entries_total{state="low"} 4294967294
)";
  const std::string words = "--only host_memory_state --only host_memory_state_entries_total";
  EXPECT_EQ(Samples(rest + transitions("low", R"("toHigherCount": 1, "toLowerCount": 100)") +
                        R"("/sched/globalStats/memory/kestrel": {"memState": 2})",
                    words),
            R"(kestrel_host_memory_state{state="high"} 0
kestrel_host_memory_state{state="clear"} 0
kestrel_host_memory_state{state="soft"} 1
kestrel_host_memory_state{state="hard"} 0
kestrel_host_memory_state{state="low"} 0
)" + entries);
  // If the number of transitions from "low" to "hard" is not available, "hard" has no sample.
  EXPECT_EQ(Samples(rest + transitions("low", R"("toHigherCount": -1)") +
                        R"("/sched/globalStats/memory/kestrel": {"memState": -1})",
                    words),
            std::regex_replace(entries, std::regex(".*\"hard\".*\n"), ""));
}

TEST_F(MetricsOf, PoolsOfEachNode) {
  EXPECT_EQ(Samples(R"("/memory/memInfo": {"numNodes": 2}, "/memory/lpage/nodeList/0/psharePool": {"nrLPages": 1},
                       "/memory/lpage/nodeList/1/psharePool": {"nrLPages": 2}, "/memory/lpage/nodeList/1/vmPools": ["a", "b"],
                       "/memory/lpage/nodeList/1/vmPools/a": {"nrLPages": 3},
                       "/memory/lpage/nodeList/1/vmPools/b": {"nrLPages": 4})",
                    "--only pool_large_pages"),
            R"(kestrel_pool_large_pages{numa_node="0",pool="pshare"} 1
kestrel_pool_large_pages{numa_node="1",pool="pshare"} 2
kestrel_pool_large_pages{numa_node="1",pool="a"} 3
kestrel_pool_large_pages{numa_node="1",pool="b"} 4
)");
}

TEST_F(MetricsOf, BuffersOfEachSize) {
  const std::string samples =
      Samples(R"("/system/buddy": ["memmap-03-lo", "heap"], "/memory/memNodes/3": {"numaNode": 1},
    "/system/buddy/memmap-03-lo/comprehensive": {"sizes": [{"free": 5, "used": 6}, {"free": 7}]},
    "/system/buddy/heap/comprehensive": {"sizes": [{"free": -1}, {"free": 9}]})",
              "--only buddy_free_buffers");
  const std::vector<std::string> lines = Lines(samples);
  ASSERT_EQ(lines.size(), 2 * 19u - 1);
  EXPECT_EQ(lines[0], R"(kestrel_buddy_free_buffers{buddy="memmap-03-lo",numa_node="1",buffer_bytes="4096"} 5)");
  EXPECT_EQ(lines[1], R"(kestrel_buddy_free_buffers{buddy="memmap-03-lo",numa_node="1",buffer_bytes="8192"} 7)");
  EXPECT_EQ(lines[18], R"(kestrel_buddy_free_buffers{buddy="memmap-03-lo",numa_node="1",buffer_bytes="1073741824"} 0)");
  EXPECT_EQ(lines[19], R"(kestrel_buddy_free_buffers{buddy="heap",buffer_bytes="8192"} 9)");
}

TEST_F(MetricsOf, PersistentMemory) {
  EXPECT_EQ(Samples(R"("/memory/pmem/volumes": ["v", "w"],
    "/memory/pmem/volumes/v/regionStore/info": {"totalBlocks": 3, "totalRegions": 8},
    "/memory/pmem/volumes/v/regionStore/isClean": {"isClean": 1}, "/memory/pmem/volumes/w/regionStore/isClean": {},
    "/memory/pmem/volumes/v/regionStore/regions": ["r"], "/memory/pmem/volumes/w/regionStore/regions": ["r"],
    "/memory/pmem/volumes/v/regionStore/regions/r/info": {"size": 5, "allocatedBlocks": 1},
    "/memory/pmem/volumes/w/regionStore/regions/r/info": {"size": 6})",
                    "--only volume_size_bytes --only volume_regions --only volume_clean --only region_size_bytes "
                    "--only region_allocated_bytes"),
            R"(kestrel_volume_size_bytes{volume="v"} 6291456
kestrel_volume_regions{volume="v"} 8
kestrel_volume_clean{volume="v"} 1
kestrel_volume_clean{volume="w"} 0
kestrel_region_size_bytes{volume="v",region="r"} 5
kestrel_region_size_bytes{volume="w",region="r"} 6
kestrel_region_allocated_bytes{volume="v",region="r"} 2097152
kestrel_region_allocated_bytes{volume="w",region="r"} 0
)");
}

// A collector refuses the whole text if a sample occurs twice.
TEST_F(MetricsOf, NoSampleTwice) {
  const std::string nodes = R"("/system/heaps": ["a", "a", "b"], "/system/heaps/a/stats": {"size": 1},
                               "/system/heaps/b/stats": {"size": 2})";
  EXPECT_EQ(Samples(nodes, "--only heap_size_bytes --only heap_size_bytes"),
            "kestrel_heap_size_bytes{heap=\"a\"} 1\nkestrel_heap_size_bytes{heap=\"b\"} 2\n");
}

TEST_F(MetricsOf, NamesAreEscaped) {
  EXPECT_EQ(Samples(R"("/system/heaps": ["a\"b\\c\nd"], "/system/heaps/a\"b\\c%0Ad/stats": {"size": 1})",
                    "--only heap_size_bytes"),
            "kestrel_heap_size_bytes{heap=\"a\\\"b\\\\c\\nd\"} 1\n");
}

TEST_F(MetricsOf, WhatCannotBeReadIsCounted) {
  const std::string nodes = R"("/memory/comprehensive": {"free": 1}, "/system/heaps": ["a", "b"],
    "failed:/memory/memInfo": {"status": "No permission"}, "failed:/system/heaps/a/stats": {"status": "Read error"},
    "/system/heaps/b/stats": {"size": 2}, "failed:/system/buddy": {"status": "No permission"})";
  const std::string words = "--only host_numa_nodes --only host_memory_free_bytes --only heap_size_bytes ";
  const std::string read = "kestrel_host_memory_free_bytes 1024\nkestrel_heap_size_bytes{heap=\"b\"} 2\n";
  EXPECT_EQ(Samples(nodes, words + "--only reading_failures"), read + "kestrel_reading_failures 2\n");
  EXPECT_EQ(Samples(nodes, words + "--only reading_failures --only buddy"), read + "kestrel_reading_failures 3\n");
  EXPECT_EQ(Samples("", "--only reading"), "kestrel_reading_failures 0\nkestrel_reading_info{version=\"" PLATKIT_VERSION
                                           "\",definitions=\"" +
                                               platkit::OwnDefinitions().build + "\"} 1\n");
}

TEST_F(MetricsOf, StandardFamilies) {
  std::set<std::string> shown;
  for (const std::string &line : Lines(Nodal("metrics --prefix '' --cache " + kSample).out)) {
    if (!line.starts_with('#')) shown.insert(line.substr(0, line.find('_')));
  }
  for (const FamilyDescription &family : MetricFamilies())
    EXPECT_EQ(shown.contains(std::string(family.name)), family.isStandard) << family.name;
}

TEST_F(MetricsOf, Words) {
  for (const char *words :
       {"--only frob", "--only ''", "--only kestrel_vm", "--prefix 9", "--prefix a-b", "--prefix 'a b'"}) {
    const Outcome outcome = Nodal("metrics --cache " + kSample + " " + words);
    EXPECT_EQ(outcome.status, 2) << words;
    EXPECT_EQ(outcome.out, "") << words;
  }
  EXPECT_EQ(Nodal("metrics --only frob").err,
            "nodal: --only frob: unknown metric or family (see nodal metrics --help)\n");
  EXPECT_EQ(Nodal("metrics --prefix 9").err,
            "nodal: --prefix 9: expected letters, digits, '_' and ':', not starting with a digit\n");
  EXPECT_EQ(Nodal("metrics -o ''").status, 2);
}

TEST_F(MetricsOf, AFileAppearsWhole) {
  const std::string words = "--only host --cache " + kSample;
  const std::string text = Nodal("metrics " + words).out;
  const std::string path = scratch_.Write("host.prom", "before");
  chmod(path.c_str(), 0600);
  const Outcome outcome = Nodal("metrics -o " + path + " " + words);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(Contents(path), text);
  EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"host.prom"});
}

TEST_F(MetricsOf, AFileThatCannotBeWrittenStays) {
  const std::string path = scratch_.Write("host.prom", "before");
  // Limits files to one block of 512 bytes.
  const Outcome full =
      Nodal("--version >/dev/null; ulimit -f 1; " + kNodal + " metrics --cache " + kSample + " -o " + path);
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.err, "nodal: " + path + ": File too large\n");
  EXPECT_EQ(Contents(path), "before");
  EXPECT_EQ(scratch_.Names(), std::vector<std::string>{"host.prom"});
  EXPECT_EQ(Nodal("metrics -o " + scratch_.Path("no/host.prom")).err,
            "nodal: " + scratch_.Path("no/host.prom") + ": No such file or directory\n");
  EXPECT_EQ(Nodal("metrics >/dev/full").status, 1);
}

// Compares every metric of the sample with the dump.
class MetricsOfSample : public testing::Test {
 protected:
  static nlohmann::json Nodes() { return nlohmann::json::parse(Nodal("dump " + kSample).out)["nodes"]; }

  static std::vector<double> Sorted(std::vector<double> values) {
    std::ranges::sort(values);
    return values;
  }

  // The metric's values in a dump; -1 means not available.
  static std::vector<double> InDump(const Metric &metric, const nlohmann::json &nodes) {
    std::vector<double> values;
    for (const auto &[key, record] : nodes.items()) {
      const platkit::PathTarget target = platkit::ParsePath(key);
      if (!target.asRecord || !IsOf(metric, target, nodes)) continue;
      const std::string field(metric.field()->name);
      if (metric.entryField() == nullptr) {
        values.push_back(record[field].get<double>());
        continue;
      }
      for (size_t i = 0; i < metric.field()->count; ++i) {
        const nlohmann::json &entries = record[field];
        values.push_back(i < entries.size() ? entries[i][std::string(metric.entryField()->name)].get<double>() : 0);
      }
    }
    return values;
  }

  static bool IsOf(const Metric &metric, const platkit::PathTarget &target, const nlohmann::json &nodes) {
    if (metric.family == MetricFamily::kPool &&
        target.node->id == platkit::nodes::memory_lpage_nodeList_psharePool.id())
      return true;
    if (target.node != metric.node()) return false;
    if (target.node->path.starts_with("/sched/groups/"))
      return FamiliesOf(target.arguments[0].integer, nodes).contains(metric.family);
    // Each client with such a record leads a group of the family, except the user-world part of a virtual machine.
    return metric.family != MetricFamily::kWorld ||
           !nodes.contains("/worldGroups/" + std::to_string(target.arguments[0].integer) + "/vmmLeaderID");
  }

  static std::set<MetricFamily> FamiliesOf(int64_t group, const nlohmann::json &nodes) {
    const uint32_t flags = nodes["/sched/groups/" + std::to_string(group) + "/groupFlags"]["flags"];
    if ((flags & 4) != 0) return {MetricFamily::kGroup, MetricFamily::kVm};
    return {(flags & 8) != 0 ? MetricFamily::kWorld : MetricFamily::kGroup};
  }

  static std::vector<std::string> Cells(const std::string &line) {
    std::vector<std::string> cells(1);
    for (const char c : line) {
      if (c == ',') {
        cells.emplace_back();
      } else {
        cells.back() += c;
      }
    }
    return cells;
  }

  static double Scale(FieldUnit unit) {
    const std::map<FieldUnit, double> scales = {{FieldUnit::KB, 1024},
                                                {FieldUnit::PAGES, 4096},
                                                {FieldUnit::BLOCKS, 2097152},
                                                {FieldUnit::PERCENT, 0.01},
                                                {FieldUnit::USEC, 0.000001}};
    const auto scale = scales.find(unit);
    return scale == scales.end() ? 1 : scale->second;
  }
};

TEST_F(MetricsOfSample, EachHasTheFiguresOfItsField) {
  std::map<std::string, std::vector<double>> shown;
  for (const std::string &line : Lines(Nodal("metrics --prefix '' --cache " + kSample + Families()).out)) {
    if (!line.starts_with('#'))
      shown[line.substr(0, line.find_first_of("{ "))].push_back(std::stod(line.substr(line.rfind(' '))));
  }
  const nlohmann::json nodes = Nodes();
  for (const Metric &metric : Metrics()) {
    if (metric.node() == nullptr) continue;
    std::vector<double> expected = InDump(metric, nodes);
    EXPECT_FALSE(expected.empty()) << metric.name;
    std::erase(expected, -1);
    for (double &value : expected)
      value *= Scale(metric.valueField()->unit);
    const std::vector<double> values = Sorted(shown[std::string(metric.name)]);
    expected = Sorted(expected);
    ASSERT_EQ(values.size(), expected.size()) << metric.name;
    for (size_t i = 0; i < values.size(); ++i)
      EXPECT_DOUBLE_EQ(values[i], expected[i]) << metric.name;
  }
}

// The columns of vm-stats that are metrics too.
TEST_F(MetricsOfSample, MachinesAreThoseOfTheReport) {
  const std::map<std::string, std::string> metrics = {{"memSizeLimit", "vm_size_limit_bytes"},
                                                      {"memSize", "vm_size_bytes"},
                                                      {"allocTgt", "vm_allocation_target_bytes"},
                                                      {"balloonTgt", "vm_balloon_target_bytes"},
                                                      {"ballooned", "vm_ballooned_bytes"},
                                                      {"swapped", "vm_swapped_bytes"},
                                                      {"mapped", "vm_mapped_bytes"},
                                                      {"touched", "vm_touched_bytes"},
                                                      {"zipped", "vm_zipped_bytes"},
                                                      {"zipSaved", "vm_zip_saved_bytes"},
                                                      {"shared", "vm_shared_bytes"},
                                                      {"zero", "vm_zero_bytes"},
                                                      {"sharedSaved", "vm_shared_saved_bytes"}};
  const std::string samples = Nodal("metrics --only vm --prefix '' --cache " + kSample).out;
  const std::vector<std::string> report = Lines(
      testing_support::Run({.program = KESTREL_PROGRAM, .arguments = {"-c", SAMPLE_SNAPSHOT, "-r", "vm-stats", "-q"}})
          .output);
  ASSERT_EQ(report.size(), 4u);
  const std::vector<std::string> columns = Cells(report[0]);
  for (const std::string &line : {report[1], report[2]}) {
    const std::vector<std::string> cells = Cells(line);
    ASSERT_EQ(cells.size(), columns.size());
    for (size_t i = 0; i < cells.size(); ++i) {
      const auto metric = metrics.find(columns[i]);
      if (metric == metrics.end()) continue;
      const std::string sample = metric->second + "{group=\"" + cells[2] + "\",vm=\"" + cells[0] + "\"} " +
                                 std::to_string(std::stoull(cells[i]) * 1024) + "\n";
      EXPECT_NE(samples.find(sample), std::string::npos) << sample;
    }
  }
}

// A host and its capture have the same samples and the same number of failures.
class MetricsOfASavedHost : public testing::TestWithParam<std::string> {};

TEST_P(MetricsOfASavedHost, AreThoseOfItsCapture) {
  platkit::SavedHost host(GetParam());
  for (const char *file : {"proc/slabinfo", "sys/kernel/mm/ksm/pages_shared"}) {
    host.Remove(file);
    host.MakeFolder(file);
  }
  const Scratch scratch;
  const std::string root = "--root " + host.Path("") + " ";
  ASSERT_EQ(Nodal(root + "capture -o " + scratch.Path("host")).status, 0);
  const std::string ofHost = Nodal(root + "metrics" + Families()).out;
  EXPECT_EQ(Nodal("--cache " + scratch.Path("host") + " metrics" + Families()).out, ofHost);
  EXPECT_NE(ofHost.find("\nkestrel_group_info{group=\"0\",name=\"host\""), std::string::npos);
  EXPECT_EQ(ofHost.find("\nkestrel_reading_failures 0\n"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Hosts, MetricsOfASavedHost,
                         testing::Values("clients.host", "persistent-memory.host", "two-nodes.host", "v1.host"));

// Prometheus' own checker.
class Promtool : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (std::system("command -v promtool >/dev/null") != 0) GTEST_SKIP() << "promtool is missing (package prometheus)";
  }
};

TEST_P(Promtool, AcceptsThem) {
  const std::string words = "metrics " + GetParam() + Families();
  ASSERT_EQ(Nodal(words + " >/dev/null").status, 0);
  const Outcome outcome = Nodal(words + " | promtool check metrics 2>&1");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
}

INSTANTIATE_TEST_SUITE_P(Hosts, Promtool, testing::Values("--cache " + kSample, ""));

}  // namespace
}  // namespace nodal
