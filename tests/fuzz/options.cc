// Runs command lines of kestrel, one word per line, over a snapshot. dcpmm-stats cannot read a snapshot, so it runs
// over a saved root folder with persistent-memory modules.
#include <algorithm>
#include <cctype>
#include <cstdio>

#include "platkit/nodal.h"
#include "src/dcpmm/uncore.h"
#include "tests/fuzz/kestrel.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/root_folder.h"
#include "tests/fuzz/target.h"
#include "tools/nodal/snapshot/build.h"

namespace {

// Builds the snapshot in the working directory, so that an input can name it.
void BuildHost() {
  const std::string snapshot = fuzz::ScratchFolder() + "/host.nodal";
  REQUIRE(fuzz::Succeeds([&] { nodal::BuildSnapshot(SAMPLE_JSON, snapshot); }));
}

fuzz::RootFolder MakeHostWithModules() {
  using enum platkit::ArchiveEntry::Kind;
  fuzz::RootFolder host("modules");
  host.Put({kFile, "proc/cpuinfo", "processor\t: 0\nmodel\t\t: 85\n"});
  host.Put({kFolder, "sys/bus/nd/devices/nmem0", ""});
  for (const kestrel::UnitPlace &unit : kestrel::kUnitPlaces) {
    char name[64];
    std::snprintf(name, sizeof name, "sys/bus/pci/devices/0000:3a:%02x.%x", unit.slot, unit.function);
    const std::string device(name);
    host.Put({kFile, device + "/vendor", "0x8086\n"});
    host.Put({kFile, device + "/device", "0x2042\n"});
    host.Put({kFile, device + "/config", std::string(4096, '\0')});
  }
  return host;
}

bool IsOfCounters(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text.find("dcpmm") != std::string::npos;
}

void UseHostFor(std::string_view text) {
  static const fuzz::RootFolder hostWithModules = MakeHostWithModules();
  const HVC_ReturnStatus status =
      IsOfCounters(std::string(text))
          ? NODAL_UseCache(hostWithModules.path().c_str(), NODAL_CACHE_ROOT_FOLDER | NODAL_CACHE_WRITABLE)
          : NODAL_UseCache("host.nodal", NODAL_CACHE_SNAPSHOT);
  REQUIRE(status == HVC_OK);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool isBuilt = (BuildHost(), true);
  static_cast<void>(isBuilt);
  const fuzz::WorkingFolder folder(fuzz::ScratchFolder());
  const std::string_view text = fuzz::Text(data, size);
  UseHostFor(text);
  std::vector<std::string> words = fuzz::WordsOf(text, '\n');
  std::ranges::transform(words, words.begin(), fuzz::WithoutFolders);
  const fuzz::Outcome outcome = fuzz::RunKestrel(words);
  REQUIRE(outcome.status == 0 || outcome.status == 1);
  return 0;
}
