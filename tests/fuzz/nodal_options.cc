// Runs command lines of nodal, one word per line, in a folder with two snapshots, their JSON, and a saved root folder.
#include <sodium.h>
#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "platkit/nodal.h"
#include "tests/fuzz/captured_output.h"
#include "tests/fuzz/kestrel.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/root_folder.h"
#include "tests/fuzz/target.h"
#include "tools/nodal/snapshot/build.h"

// tools/nodal/main.cc, compiled under another name.
int NodalMain(int argc, char **argv);

namespace {

constexpr const char *kHost = R"({"format": 1, "host": "-r heap-stats", "nodes": {
  "/sched/groups/0/members/groups": [4],
  "/sched/groups/4/groupName": {"name": "web"},
  "/system/heaps": ["main"],
  "/system/heaps/main/stats": {"name": "main", "size": 4096}}})";

// Command lines may overwrite their inputs, so each one gets a new folder.
fuzz::RootFolder NewFolder() {
  using enum platkit::ArchiveEntry::Kind;
  fuzz::RootFolder folder("commands");
  folder.Put({kFile, "host.json", kHost});
  folder.Put({kFile, "root/proc/meminfo", "MemTotal: 1000 kB\n"});
  folder.Put({kFile, "root/proc/1/status", "Name:\tinit\nTgid:\t1\nVmSize:\t10 kB\nVmRSS:\t5 kB\n"});
  folder.Put({kFile, "key", "secret"});
  REQUIRE(chmod((folder.path() + "/key").c_str(), 0600) == 0);
  folder.Put({kFile, "old.json", R"({"format": 1, "nodes": {"/system/heaps": ["net"]}})"});
  for (const std::string host : {"/host", "/old"}) {
    const std::string file = folder.path() + host;
    REQUIRE(fuzz::Succeeds([&] { nodal::BuildSnapshot(file + ".json", file + ".nodal"); }));
  }
  return folder;
}

bool IsNodePath(const std::string &word) {
  constexpr const char *kTops[] = {"/sched", "/memory", "/system", "/hardware", "/worldGroups"};
  return std::ranges::any_of(kTops, [&](const char *top) { return word.starts_with(top); });
}

// Keeps paths of nodes, which are not files. Changes all other words so that they cannot name a file outside the
// folder.
std::vector<std::string> HarmlessWordsOf(std::string_view text) {
  std::vector<std::string> words = fuzz::WordsOf(text, '\n');
  for (std::string &word : words) {
    if (!IsNodePath(word)) word = fuzz::WithoutFolders(word);
  }
  return words;
}

}  // namespace

// Replaces the derivation of a key, which would take half a second.
int crypto_pwhash(unsigned char *key, unsigned long long size, const char *, unsigned long long, const unsigned char *,
                  unsigned long long, size_t, int) {
  std::fill_n(key, size, 'k');
  return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const fuzz::RootFolder files = NewFolder();
  const fuzz::WorkingFolder folder(files.path());
  REQUIRE(NODAL_UseCache("host.nodal", NODAL_CACHE_SNAPSHOT) == HVC_OK);
  std::vector<std::string> words = HarmlessWordsOf(fuzz::Text(data, size));
  // This command replaces the process with another program.
  if (std::ranges::find(words, "guests") != words.end()) return 0;
  words.insert(words.begin(), "nodal");
  std::vector<char *> argv;
  std::ranges::transform(words, std::back_inserter(argv), [](std::string &word) { return word.data(); });
  argv.push_back(nullptr);

  const fuzz::KeptSignals signals;
  fuzz::CapturedOutput captured;
  const int status = NodalMain(static_cast<int>(words.size()), argv.data());
  const bool isStatus = status >= 0 && status <= 2;
  REQUIRE(isStatus);
  return 0;
}
