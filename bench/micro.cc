// Benchmarks of the parts of kestrel and libplatkit that take most of the time.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "platkit/catalogue.h"
#include "platkit/linux/kernel/cgroup_files.h"
#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/meminfo.h"
#include "platkit/linux/kernel/process_status.h"
#include "platkit/linux/kernel/slabinfo.h"
#include "platkit/linux/kernel/zoneinfo.h"
#include "platkit/nodal.h"
#include "platkit/nodes.h"
#include "platkit/path.h"
#include "platkit/records.h"
#include "src/table/report_row.h"

namespace {

using benchmark::State;

// The row printer, with a typical row: a name and figures.

namespace row {

using namespace kestrel;
using enum Conversion;
using enum FigureUnit;

struct Row {
  GroupNameRecord name;
  GroupMemoryStatsRecord stats;
};

constinit auto columns = ColumnsOf<Row>({
    {"name", "", 28, kS, [](auto &row) { return Text(row.name.name); }},
    {"memSize", "", 10, kLu, kKB, [](auto &row) { return row.stats.memSize; }},
    {"ovhd", "", 10, kLu, kKB, [](auto &row) { return row.stats.ovhd; }},
    {"sharedSaved", "", 10, kLu, kKB, [](auto &row) { return row.stats.sharedSaved; }},
    {"consumed", "", 10, kLu, kKB, [](auto &row) { return row.stats.consumed; }},
    {"touched", "", 10, kLu, kKB, [](auto &row) { return row.stats.touched; }},
    {"bMax", "", 10, kLd, kKB, [](auto &row) { return row.stats.bMax; }},
    {"allocTgt", "", 10, kLu, kKB, [](auto &row) { return row.stats.allocTgt; }},
    {"throttlePct", "", 3, kU, [](auto &row) { return row.stats.throttlePct; }},
});

void Print(State &state) {
  const bool csv = state.range(0) != 0;
  Row row = {};
  std::snprintf(row.name.name, sizeof row.name.name, "service-1234");
  row.stats.memSize = 123456789;
  row.stats.consumed = 2345678;
  row.stats.touched = 1024;
  row.stats.bMax = HVC_KB_NONE;
  ColumnsApplySelection(columns, nullptr);
  for ([[maybe_unused]] auto _ : state)
    PrintFigures(columns, csv, false, &row, ReportUnit::kMB);
}
BENCHMARK(Print)->ArgName("csv")->Arg(0)->Arg(1);

void ConvertUnit(State &state) {
  uint64_t kb = 123456789;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(kb);
    benchmark::DoNotOptimize(OptionalKBToUnit(kb, ReportUnit::kMB));
  }
}
BENCHMARK(ConvertUnit);

}  // namespace row

// Reads of a snapshot with 1,000 groups, each from the path to the value.

void WritePath(State &state) {
  const platkit::Node &node = *platkit::FindNode(NODAL_NODE_sched_groups_stats_memoryStats);
  NODAL_Param group = {.kind = platkit::ParamKind::kInt, .length = 0, .integer = 123456};
  for ([[maybe_unused]] auto _ : state) {
    platkit::PathWriter path;
    platkit::WritePath(node, {&group, 1}, path);
    benchmark::DoNotOptimize(path.view());
  }
}
BENCHMARK(WritePath);

NODAL_ParamList *TopGroup() {
  NODAL_ParamList *arguments = NODAL_ParamListCreate(NODAL_LIST_INSTANCES, 1);
  if (NODAL_UseCache(SAVED_HOST, NODAL_CACHE_SNAPSHOT) != HVC_OK || NODAL_ParamListAddInt(arguments, 0) != HVC_OK) {
    std::cerr << SAVED_HOST << " cannot be read\n";
    std::exit(EXIT_FAILURE);
  }
  return arguments;
}

void ReadRecord(State &state) {
  NODAL_ParamList *arguments = TopGroup();
  GroupMemoryStatsRecord record;
  for ([[maybe_unused]] auto _ : state) {
    if (NODAL_Get(NODAL_NODE_sched_groups_stats_memoryStats, arguments, &record, sizeof record) != HVC_OK) {
      state.SkipWithError("no record");
    }
  }
  NODAL_ParamListDestroy(arguments);
}
BENCHMARK(ReadRecord);

void ReadList(State &state) {
  NODAL_ParamList *arguments = TopGroup();
  uint32_t entries = 0;
  for ([[maybe_unused]] auto _ : state) {
    NODAL_ParamList *members = nullptr;
    if (NODAL_GetInstanceListAlloc(NODAL_NODE_sched_groups_members_groups, arguments, &members) != HVC_OK) {
      state.SkipWithError("no list");
    }
    entries = NODAL_ParamListUsedCount(members);
    NODAL_ParamListDestroy(members);
  }
  state.counters["entries"] = entries;
  NODAL_ParamListDestroy(arguments);
}
BENCHMARK(ReadList);

// The parsers of kernel files, over copies of this host's files, so that the kernel's time does not count.

class CopiedHost {
 public:
  CopiedHost() : root_(std::filesystem::temp_directory_path() / ("kestrel-micro-" + std::to_string(getpid()))) {
    Copy("proc/self/status", "proc/" + std::to_string(getpid()) + "/status");
    for (const char *file : {"proc/meminfo", "proc/zoneinfo", "proc/slabinfo"})
      Copy(file, file);
    platkit::HostFiles host("/", platkit::Reach::kHost);
    mount_ = platkit::FindCgroupMount(host);
    if (mount_.memoryFiles != platkit::CgroupVersion::kNone) Copy(mount_.top + "/memory.stat", "group/memory.stat");
  }
  ~CopiedHost() {
    std::error_code error;
    std::filesystem::remove_all(root_, error);
  }
  CopiedHost(const CopiedHost &) = delete;
  CopiedHost &operator=(const CopiedHost &) = delete;

  platkit::HostFiles &files() { return files_; }
  platkit::CgroupVersion version() const { return mount_.memoryFiles; }

  bool Has(const std::string &file) const { return std::filesystem::exists(root_ / file); }

 private:
  // Kernel files have no size, so they are read to their end. Unreadable files are not copied.
  void Copy(const std::string &from, const std::string &to) {
    std::FILE *source = std::fopen(("/" + from).c_str(), "re");
    if (source == nullptr) return;
    std::filesystem::create_directories((root_ / to).parent_path());
    std::FILE *copy = std::fopen((root_ / to).c_str(), "we");
    for (int c; copy != nullptr && (c = std::fgetc(source)) != EOF;)
      std::fputc(c, copy);
    if (copy != nullptr) std::fclose(copy);
    std::fclose(source);
  }

  std::filesystem::path root_;
  platkit::HostFiles files_{root_, platkit::Reach::kHost};
  platkit::CgroupMount mount_;
};

// Reading any small file: open, read, close.
void OpenFile(State &state) {
  CopiedHost host;
  char buffer[64];
  std::string_view text;
  for ([[maybe_unused]] auto _ : state)
    benchmark::DoNotOptimize(host.files().Read(platkit::HostPath("proc/meminfo"), buffer, text));
}
BENCHMARK(OpenFile);

void ParseStatus(State &state) {
  CopiedHost host;
  platkit::ProcessStatus status;
  for ([[maybe_unused]] auto _ : state) {
    if (platkit::ReadProcessStatus(host.files(), getpid(), status) != HVC_OK) state.SkipWithError("no status");
  }
}
BENCHMARK(ParseStatus);

void ParseMeminfo(State &state) {
  CopiedHost host;
  for ([[maybe_unused]] auto _ : state)
    benchmark::DoNotOptimize(platkit::ReadMeminfo(host.files()));
}
BENCHMARK(ParseMeminfo);

void ParseZoneinfo(State &state) {
  CopiedHost host;
  for ([[maybe_unused]] auto _ : state)
    benchmark::DoNotOptimize(platkit::ReadZoneinfo(host.files()));
}
BENCHMARK(ParseZoneinfo);

void ParseCgroupStat(State &state) {
  CopiedHost host;
  if (!host.Has("group/memory.stat")) state.SkipWithError("no control groups with memory files here");
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(platkit::ReadCgroupStat(host.files(), host.version(), "group"));
  }
}
BENCHMARK(ParseCgroupStat);

void ParseSlabinfo(State &state) {
  CopiedHost host;
  if (!host.Has("proc/slabinfo")) state.SkipWithError("only root may read the caches");
  for ([[maybe_unused]] auto _ : state)
    benchmark::DoNotOptimize(platkit::ReadSlabinfo(host.files()));
}
BENCHMARK(ParseSlabinfo);

}  // namespace

// Rows go to standard output, so the results go to standard error.
int main(int argc, char **argv) {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return EXIT_FAILURE;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
  benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
  reporter.SetOutputStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return EXIT_SUCCESS;
}
