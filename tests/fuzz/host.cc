// Captures a host from files in the format of tests/linux/hosts. nodal verify must find no problems in the capture, and
// a report of the capture must equal the report of the host. Hosts whose files contradict each other are exceptions.
#include <memory>
#include <sstream>

#include "platkit/linux/linux_source.h"
#include "platkit/nodal.h"
#include "platkit/path.h"
#include "platkit/snapshot/snapshot_file.h"
#include "src/reports/reports.h"
#include "tests/fuzz/kestrel.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/root_folder.h"
#include "tests/fuzz/target.h"
#include "tools/nodal/capture/capture.h"
#include "tools/nodal/tree/arguments.h"

namespace {

using platkit::snapshot::SnapshotFile;

constexpr size_t kMostEntries = 300;

// The reports that read saved hosts.
std::vector<std::string> ReportNames() {
  std::vector<std::string> names;
  for (const kestrel::Report *report : kestrel::kReports) {
    if (report->readsSavedHosts) names.emplace_back(report->name);
  }
  return names;
}

void ReadFrom(const fuzz::RootFolder &root) {
  REQUIRE(NODAL_UseCache(root.path().c_str(), NODAL_CACHE_ROOT_FOLDER) == HVC_OK);
}

// Captures these paths. If there are none, captures everything except PCI devices.
bool Capture(const fuzz::RootFolder &root, const std::vector<std::string> &paths, const std::string &snapshot) {
  const fuzz::KeptSignals signals;
  ReadFrom(root);
  const nodal::CaptureOptions options = {
      .snapshot = snapshot, .only = paths, .anonymize = false, .keyFile = {}, .cache = {}, .root = root.path()};
  return fuzz::Succeeds([&] { nodal::Capture(options); });
}

// Whether two control groups of the capture list the same process, as if it had moved while they were read. Fails if
// the capture has any other problem.
bool ContradictsItself(const std::string &snapshot) {
  std::string text;
  if (fuzz::IsSound(snapshot, &text)) return false;
  std::istringstream problems(text);
  for (std::string problem; std::getline(problems, problem);) {
    if (problem.find(" both list group ") != std::string::npos) continue;
    std::fprintf(stderr, "%s\n", problem.c_str());
    REQUIRE(problem.empty());
  }
  return true;
}

// Compares CSV, because the banners of tables contain the time.
void CompareReports(const fuzz::RootFolder &root, const std::string &snapshot, const std::string &report) {
  ReadFrom(root);
  const fuzz::Outcome live = fuzz::RunKestrel(std::vector<std::string>{"-r", report, "-q"});
  const fuzz::Outcome saved = fuzz::RunKestrel(std::vector<std::string>{"-c", snapshot, "-r", report, "-q"});
  if (live == saved) return;
  const auto show = [&](const char *what, const fuzz::Outcome &outcome) {
    std::fprintf(stderr, "%s of %s: status %d\n%s%s", report.c_str(), what, outcome.status, outcome.output.c_str(),
                 outcome.errors.c_str());
  };
  show("the host", live);
  show("its capture", saved);
  REQUIRE(live == saved);
}

// Reads each record without listing its parent first. Only checks that the reads end: the values may differ from the
// capture if a process and its control group contradict each other.
void ReadWithoutLists(const fuzz::RootFolder &root, const std::string &snapshot) {
  std::unique_ptr<platkit::Source> source;
  REQUIRE(platkit::OpenSavedRoot(root.path().c_str(), platkit::Writes::kRefused, source) == HVC_OK);
  SnapshotFile file;
  REQUIRE(file.Open(snapshot.c_str()) == HVC_OK);
  for (SnapshotFile::Cursor cursor(file); cursor.Next() == HVC_OK;) {
    const platkit::PathTarget target = platkit::ParsePath(cursor.key());
    if (!target.asRecord) continue;
    std::vector<std::byte> record(target.node->record->size);
    static_cast<void>(source->Get(*target.node, nodal::ParamsOf(target.arguments), record));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::istringstream text{std::string(fuzz::Text(data, size))};
  const std::vector<platkit::ArchiveEntry> entries = platkit::ReadArchive(text);
  if (entries.size() > kMostEntries) return 0;
  const fuzz::RootFolder root("host");
  root.Put(entries);

  const std::string snapshot = fuzz::ScratchFolder() + "/host.nodal";
  Capture(root, {"/hardware/pci"}, snapshot);
  REQUIRE(Capture(root, {}, snapshot));
  if (ContradictsItself(snapshot)) return 0;
  ReadWithoutLists(root, snapshot);
  // One report per input, to save time.
  static const std::vector<std::string> reports = ReportNames();
  CompareReports(root, snapshot, reports[size % reports.size()]);
  return 0;
}
