// Prints names that users of a host choose. An input is a letter that selects a report, the name of a process, the name
// of a control group, and the name of a guest. NULs separate the names.
//
// No output may contain control characters. CSV must have the same rows and columns as with harmless names, and no
// quotes. Metrics and JSON must be well-formed.
#include <algorithm>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "platkit/nodal.h"
#include "src/reports/reports.h"
#include "tests/fuzz/byte_reader.h"
#include "tests/fuzz/captured_output.h"
#include "tests/fuzz/exposition_text.h"
#include "tests/fuzz/kestrel.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/root_folder.h"
#include "tests/fuzz/target.h"
#include "tools/nodal/capture/capture.h"
#include "tools/nodal/commands/get.h"
#include "tools/nodal/metrics/sampler.h"
#include "tools/nodal/snapshot/dump.h"
#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/support/text.h"

namespace {

using platkit::ArchiveEntry;

// The reports that print names of groups.
constexpr const char *kReports[] = {"group-stats", "vm-stats",  "uw-stats",    "swap-stats",
                                    "guest-stats", "zip-stats", "lpage-stats", "asyncremap-stats"};

struct Names {
  std::string process;
  std::string controlGroup;
  std::string guest;
};

// These functions write the names in the forms that the kernel allows and prints.

std::string StatusOf(std::string_view process) {
  constexpr size_t kMaxName = 15;
  std::string name;
  for (const char c : process.substr(0, kMaxName)) {
    if (c == '\n') {
      name += "\\n";
    } else if (c == '\\') {
      name += "\\\\";
    } else {
      name += c;
    }
  }
  return "Name:\t" + name +
         "\nState:\tS (sleeping)\nTgid:\t77\nPid:\t77\nVmPeak:\t10 kB\nVmSize:\t10 kB\nVmHWM:\t5 kB\n"
         "VmRSS:\t5 kB\nVmPTE:\t1 kB\nHugetlbPages:\t0 kB\nThreads:\t1\n";
}

std::string FolderOf(std::string_view controlGroup) {
  constexpr size_t kMaxName = 255;
  std::string name(controlGroup.substr(0, kMaxName));
  std::ranges::replace_if(
      name, [](char c) { return c == '/' || c == '\n'; }, '_');
  return name.empty() || name == "." || name == ".." ? "group" : name;
}

// A host with these names.
class Host {
 public:
  explicit Host(const Names &names) : root_("names") {
    std::ifstream in(SAVED_HOSTS "/clients.host");
    REQUIRE(in);
    using enum ArchiveEntry::Kind;
    const std::string folder = "sys/fs/cgroup/" + FolderOf(names.controlGroup);
    root_.Put(platkit::ReadArchive(in));
    root_.Put({kFile, "proc/77/status", StatusOf(names.process)});
    root_.Put({kFile, "proc/77/cgroup", "0::/" + FolderOf(names.controlGroup) + "\n"});
    root_.Put({kFile, folder + "/cgroup.procs", "77\n"});
    root_.Put({kFile, "proc/310/cmdline", std::string("/usr/bin/qemu-system-x86_64\0-name\0guest=", 40) + names.guest});
  }

  const std::string &path() const { return root_.path(); }
  void Read() const { REQUIRE(NODAL_UseCache(path().c_str(), NODAL_CACHE_ROOT_FOLDER) == HVC_OK); }

  fuzz::Outcome Report(const std::vector<std::string> &words, fuzz::OutputTo output) const {
    Read();
    return fuzz::RunKestrel(words, output);
  }

 private:
  fuzz::RootFolder root_;
};

bool IsPrintable(std::string_view text) {
  return nodal::IsUtf8(text) && fuzz::IsFitForTerminal(text) && text.find('\t') == std::string_view::npos;
}

void CheckTable(const Host &host, const std::string &report) {
  const fuzz::Outcome table = host.Report({"-r", report}, fuzz::OutputTo::kTerminal);
  REQUIRE(table.status == 0);
  REQUIRE(IsPrintable(table.output));
  REQUIRE(IsPrintable(table.errors));
}

std::vector<size_t> ColumnsPerRow(const std::string &csv) {
  std::vector<size_t> columns;
  for (const std::string &row : fuzz::WordsOf(csv, '\n'))
    columns.push_back(static_cast<size_t>(std::ranges::count(row, ',')) + 1);
  return columns;
}

void CheckCsv(const Host &host, const std::string &report) {
  const std::vector<std::string> words = {"-r", report, "-q"};
  const fuzz::Outcome csv = host.Report(words, fuzz::OutputTo::kPipe);
  REQUIRE(csv.status == 0);
  REQUIRE(IsPrintable(csv.output));
  REQUIRE(csv.output.find('"') == std::string::npos);
  const Host harmless({"process", "group", "guest"});
  const std::string expected = harmless.Report(words, fuzz::OutputTo::kPipe).output;
  REQUIRE(ColumnsPerRow(csv.output) == ColumnsPerRow(expected));
}

std::set<std::string, std::less<>> KnownMetrics() {
  std::set<std::string, std::less<>> names;
  for (const nodal::Metric &metric : nodal::Metrics())
    names.insert("kestrel_" + std::string(metric.name));
  return names;
}

void CheckMetrics(const Host &host) {
  host.Read();
  nodal::HostTree tree;
  const std::string text = nodal::SampleMetrics(tree, nodal::MetricChoice({"group", "vm", "world"}), "kestrel_");
  REQUIRE(IsPrintable(text));
  std::set<std::string, std::less<>> names;
  const std::string malformed = fuzz::FindMalformedLine(text, names);
  if (!malformed.empty()) std::fprintf(stderr, "%s\n", malformed.c_str());
  REQUIRE(malformed.empty());
  static const std::set<std::string, std::less<>> known = KnownMetrics();
  REQUIRE(std::ranges::includes(known, names));
}

void CheckNodal(const Host &host) {
  host.Read();
  std::string text, json;
  const std::string name = "/sched/groups/77/groupName";
  REQUIRE(fuzz::Succeeds([&] { nodal::Get({.path = name, .descriptions = true}); }, &text));
  REQUIRE(IsPrintable(text));
  REQUIRE(fuzz::Succeeds([&] { nodal::Get({.path = name, .json = true}); }, &json));
  REQUIRE(nodal::Json::accept(json));
  REQUIRE(IsPrintable(json));
}

void CheckDump(const Host &host) {
  host.Read();
  const std::string snapshot = fuzz::ScratchFolder() + "/names.nodal";
  const fuzz::KeptSignals signals;
  REQUIRE(
      fuzz::Succeeds([&] { nodal::Capture({.snapshot = snapshot, .only = {"/sched/groups"}, .root = host.path()}); }));
  std::string json;
  REQUIRE(fuzz::Succeeds([&] { nodal::DumpSnapshot(snapshot); }, &json));
  REQUIRE(nodal::Json::accept(json));
  REQUIRE(IsPrintable(json));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::ByteReader input(fuzz::Text(data, size));
  const std::string report = kReports[input.TakeIndex(std::size(kReports))];
  Names names;
  for (std::string *name : {&names.process, &names.controlGroup, &names.guest})
    *name = input.TakeUntil('\0');
  const Host host(names);
  CheckTable(host, report);
  CheckNodal(host);
  CheckMetrics(host);
  CheckDump(host);
  CheckCsv(host, report);
  return 0;
}
