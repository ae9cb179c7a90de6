// A sample has the entries that a capture saves.
#include "tools/nodal/history/host_sampler.h"

#include <map>

#include "platkit/linux/sampled_host.h"
#include "platkit/snapshot/format.h"
#include "tests/linux/saved_host.h"
#include "tests/tools/nodal/program.h"
#include "tools/nodal/snapshot/snapshot_entries.h"

namespace {

using platkit::SavedHost;
using platkit::history::Sample;

// Types and payloads by key.
using Entries = std::map<std::string, std::string>;

std::string Text(platkit::snapshot::ValueType type, std::span<const std::byte> payload) {
  return static_cast<char>(type) + std::string(reinterpret_cast<const char *>(payload.data()), payload.size());
}

Entries EntriesOfCapture(const std::string &root, const std::string &words) {
  const Scratch scratch;
  const Outcome outcome = Nodal("--root " + root + " capture -o " + scratch.Path("host.nodal") + words);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  Entries entries;
  nodal::OpenedSnapshot snapshot(scratch.Path("host.nodal"));
  nodal::SnapshotEntries reader(snapshot);
  while (reader.Next()) {
    if (!platkit::snapshot::IsHeaderKey(reader.key()))
      entries[reader.key()] = Text(reader.value().type, reader.value().payload);
  }
  return entries;
}

Entries EntriesOf(const Sample &sample) {
  Entries entries;
  for (size_t i = 0; i < sample.size(); ++i)
    EXPECT_TRUE(entries.emplace(sample[i].key, Text(sample[i].type, sample[i].payload)).second) << sample[i].key;
  return entries;
}

bool IsInOrder(const Sample &sample) {
  for (size_t i = 1; i < sample.size(); ++i) {
    if (sample[i].key <= sample[i - 1].key) return false;
  }
  return true;
}

void ExpectSameAsCapture(const SavedHost &saved, const std::vector<std::string> &only = {}) {
  std::string words;
  for (const std::string &path : only)
    words += " --only " + path;
  const std::string root = saved.Path("");
  platkit::SampledHost host(root.c_str(), platkit::Reach::kRootFolder, 100);
  const nodal::PathFilter filter(only, "/hardware/pci");
  nodal::HostSampler sampler(host.source(), filter);
  Sample sample;
  const Entries expected = EntriesOfCapture(root, words);
  EXPECT_FALSE(expected.empty());
  for (int i = 0; i < 2; ++i) {
    sample.Clear();
    host.BeginSample();
    sampler.AddTo(sample);
    EXPECT_EQ(EntriesOf(sample), expected);
    EXPECT_TRUE(IsInOrder(sample));
  }
}

class SampleOf : public testing::TestWithParam<std::string> {};

TEST_P(SampleOf, ASavedHostHasTheEntriesOfACapture) { ExpectSameAsCapture(SavedHost(GetParam())); }

INSTANTIATE_TEST_SUITE_P(Hosts, SampleOf,
                         testing::Values("two-nodes.host", "v1.host", "v2.host", "clients.host", "hybrid.host",
                                         "kvm-list.host", "persistent-memory.host", "no-control-groups.host",
                                         "grouping-only.host", "64k-pages.host", "kernel-5.10.host"),
                         [](const auto &host) {
                           std::string name = host.param;
                           std::erase_if(name, [](char c) { return !isalnum(static_cast<unsigned char>(c)); });
                           return name;
                         });

TEST(HostSampler, ChosenPaths) {
  ExpectSameAsCapture(SavedHost("two-nodes.host"), {"/sched/groups/0", "/memory/memInfo"});
  ExpectSameAsCapture(SavedHost("two-nodes.host"), {"/system/heaps", "/system/buddy"});
}

TEST(HostSampler, NodesThatCannotBeRead) {
  SavedHost saved("two-nodes.host");
  saved.Write("proc/slabinfo", "");
  saved.Remove("proc/slabinfo");
  saved.MakeFolder("proc/slabinfo");
  ExpectSameAsCapture(saved);
}

// The names contain characters that sort before and after the slash, which separates the parts of keys.
TEST(HostSampler, KeysAreInOrder) {
  SavedHost saved("two-nodes.host");
  std::string slabs = "slabinfo - version: 2.1\n";
  for (const char *name : {"a", "a-b", "a.b", "a/b", "a0", "a%b", "aa", "a b", "b"})
    slabs += std::string(name) + " 1 2 64 8 1 : tunables 0 0 0 : slabdata 1 1 0\n";
  saved.Write("proc/slabinfo", slabs);
  ExpectSameAsCapture(saved);
}

TEST(HostSampler, GroupsThatComeAndGo) {
  SavedHost saved("v2.host");
  const std::string top = "sys/fs/cgroup/";
  const std::string root = saved.Path("");
  platkit::SampledHost host(root.c_str(), platkit::Reach::kRootFolder, 100);
  const nodal::PathFilter filter({}, "/hardware/pci");
  nodal::HostSampler sampler(host.source(), filter);
  const auto take = [&] {
    Sample sample;
    host.BeginSample();
    sampler.AddTo(sample);
    return EntriesOf(sample);
  };
  const size_t before = take().size();
  saved.MakeFolder(top + "new.slice");
  saved.Write(top + "new.slice/memory.current", "4096\n");
  const std::string prefix = "/sched/groups/" + std::to_string(saved.ControlGroup(top + "new.slice")) + "/";
  Entries entries = take();
  EXPECT_TRUE(entries.contains(prefix + "groupName"));
  EXPECT_TRUE(entries.contains(prefix + "stats/memoryStats"));
  EXPECT_GT(entries.size(), before);
  saved.Remove(top + "new.slice");
  entries = take();
  EXPECT_EQ(entries.size(), before);
  EXPECT_FALSE(entries.contains(prefix + "groupName"));
}

}  // namespace
