// The files of a host, in the form of tests/linux/hosts: all that the catalogue has is read of them. The capture is
// sound, and kestrel says of it what it says of the host, if the host does not contradict itself.
#include <sstream>

#include "platkit/nodal.h"
#include "tests/fuzz/kestrel.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/root_folder.h"
#include "tests/fuzz/target.h"
#include "tools/nodal/commands.h"

namespace {

constexpr size_t kMostEntries = 300;

constexpr const char *kReports[] = {"group-stats",       "vm-stats",          "uw-stats",
                                    "buddy-stats",       "pshare-stats",      "pshareHint-stats",
                                    "swap-stats",        "comp-stats",        "lpool-stats",
                                    "heap-stats",        "guest-stats",       "zip-stats",
                                    "lpage-stats",       "asyncremap-stats",  "pmem-regionstore-stats",
                                    "pmem-region-stats", "pmem-extent-stats", "pmem-region-numa-stats"};

void ReadFrom(const fuzz::RootFolder &root) {
  REQUIRE(NODAL_UseCache(root.path().c_str(), NODAL_CACHE_ROOT_FOLDER) == HVC_OK);
}

// Without paths, of all but the devices on the PCI bus.
bool Capture(const fuzz::RootFolder &root, const std::vector<std::string> &paths, const std::string &snapshot) {
  const fuzz::KeptSignals signals;
  ReadFrom(root);
  return fuzz::Succeeds([&] { nodal::Capture({.snapshot = snapshot, .only = paths, .root = root.path()}); });
}

// A process that is in two control groups, as one seems to be that moves while they are read, is in two of the capture.
// There can be no other problem.
bool IsSound(const std::string &snapshot) {
  bool isSound = false;
  std::string text;
  REQUIRE(fuzz::Succeeds([&] { isSound = nodal::Verify(snapshot); }, &text));
  std::istringstream problems(text.substr(0, text.rfind(snapshot)));
  for (std::string problem; std::getline(problems, problem);) {
    if (problem.find(" both list group ") != std::string::npos) continue;
    std::fprintf(stderr, "%s\n", problem.c_str());
    REQUIRE(isSound);
  }
  return isSound;
}

// Without banners, which tell the time.
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
  if (!IsSound(snapshot)) return 0;
  // Each input is shown one report, for time.
  CompareReports(root, snapshot, kReports[size % std::size(kReports)]);
  return 0;
}
