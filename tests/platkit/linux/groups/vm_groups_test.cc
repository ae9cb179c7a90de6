// Finding the control group that a VM has for itself.
#include "platkit/linux/groups/vm_groups.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

const std::string kOwn = kTop + "machine.slice/web.scope/guest";
const std::string kShared = kTop + "shared.slice";

// Whether the VM has a control group for itself: only then does it have this record.
bool HasOwnGroup(SavedHost &host, int64_t pid) {
  return host.ask().Status(nodes::sched_memClients_memzipInfo, {pid}) == HVC_OK;
}

TEST(VmGroups, TheAnswerDoesNotDependOnListings) {
  for (const bool listed : {false, true}) {
    SavedHost host("clients.host");
    if (listed) {
      for (const int64_t group : {host.ControlGroup(kOwn), host.ControlGroup(kShared)})
        host.ask().Members(group);
    }
    EXPECT_TRUE(HasOwnGroup(host, 310)) << "a kernel thread beside it does not count";
    EXPECT_FALSE(HasOwnGroup(host, 320));
    EXPECT_EQ(host.ask().Parent(310), host.ControlGroup(kOwn)) << "not the one of its threads";
  }
}

TEST(VmGroups, ProcessesInGroupsBelowCount) {
  for (const bool listed : {false, true}) {
    SavedHost host("clients.host");
    host.Write(kOwn + "/a/cgroup.procs", "");
    host.Write(kOwn + "/a/b/cgroup.procs", "311\n");
    if (listed) host.ask().Members(host.ControlGroup(kOwn));
    EXPECT_TRUE(HasOwnGroup(host, 310));
    host.Write(kOwn + "/a/b/cgroup.procs", "311\n321\n");
    host.ask().Members(host.ControlGroup(kTop + "machine.slice/web.scope"));
    if (listed) host.ask().Members(host.ControlGroup(kOwn));
    EXPECT_FALSE(HasOwnGroup(host, 310));
  }
}

// Changes a file without SavedHost::Write, which would advance the clock.
void Replace(const SavedHost &host, const std::string &path, const char *text) {
  std::ofstream(host.Path(path)) << text;
}

TEST(VmGroups, TheAnswerIsAsOldAsTheListingItComesFrom) {
  SavedHost host("clients.host");
  host.ask().Members(host.ControlGroup(kOwn));
  Replace(host, kOwn + "/cgroup.procs", "310\n311\n321\n");
  host.Age(kFreshTime - std::chrono::nanoseconds(1));
  EXPECT_TRUE(HasOwnGroup(host, 310));
  host.Age(std::chrono::nanoseconds(1));
  EXPECT_FALSE(HasOwnGroup(host, 310));
}

TEST(VmGroups, TheAnswerIsAsOldAsTheListedFoldersItComesFrom) {
  SavedHost host("clients.host");
  host.ask().Capacity(host.ControlGroup(kOwn));  // lists the folders only
  host.Age(kFreshTime / 2);
  host.ask().Members(host.ControlGroup(kOwn));
  std::filesystem::create_directories(host.Path(kOwn + "/below"));
  Replace(host, kOwn + "/below/cgroup.procs", "321\n");
  EXPECT_TRUE(HasOwnGroup(host, 310));
  host.Age(kFreshTime / 2);
  EXPECT_FALSE(HasOwnGroup(host, 310));
}

TEST(VmGroups, AGroupOfManyFoldersCountsAsShared) {
  SavedHost host("clients.host");
  for (int i = 0; i < 100; ++i)
    host.MakeFolder(kOwn + "/" + std::to_string(i));
  EXPECT_FALSE(HasOwnGroup(host, 310));
  host.ask().Members(host.ControlGroup(kOwn));
  EXPECT_FALSE(HasOwnGroup(host, 310));
}

TEST(VmGroups, AGroupWithHiddenMembersCountsAsShared) {
  SavedHost host("clients.host");
  host.Forbid(kOwn + "/cgroup.procs");
  OrdinaryUser user;
  EXPECT_FALSE(HasOwnGroup(host, 310));
}

// A failed listing shows no other process in the group, but the group may contain one.
TEST(VmGroups, AListingThatFailedTellsNothing) {
  SavedHost host("clients.host");
  host.Write(kOwn + "/below/cgroup.procs", "");
  host.Forbid(kOwn + "/below/cgroup.procs");
  OrdinaryUser user;
  host.ask().Members(host.ControlGroup(kOwn));
  std::vector<int64_t> members;
  EXPECT_EQ(host.ask().List(nodes::sched_groups_members_groups, {host.ControlGroup(kOwn + "/below")}, members),
            HVC_NO_PERMISSION);
  EXPECT_FALSE(HasOwnGroup(host, 310));
}

const std::string kMailScope = kTop + "machine.slice/machine-qemu\\x2d1\\x2dmail.scope";

// Moves machine 320 and the process 321 into a control group that libvirt created for the machine.
void MoveIntoScope(SavedHost &host, const std::string &ofMachine, const std::string &ofHelper) {
  host.Write(kShared + "/cgroup.procs", "");
  host.Write(kMailScope + "/cgroup.procs", "");
  host.Write(kMailScope + "/memory.stat", "zswap 4096\nzswapped 8192\n");
  for (const std::string &folder : {ofMachine, ofHelper})
    host.Write(kMailScope + folder + "/cgroup.procs", "");
  host.Write(kMailScope + ofMachine + "/cgroup.procs", ofMachine == ofHelper ? "320\n321\n" : "320\n");
  if (ofMachine != ofHelper) host.Write(kMailScope + ofHelper + "/cgroup.procs", "321\n");
  host.Write("proc/320/cgroup", "0::" + kMailScope.substr(kTop.size() - 1) + ofMachine + "\n");
  host.Write("proc/321/cgroup", "0::" + kMailScope.substr(kTop.size() - 1) + ofHelper + "\n");
}

void ListAll(SavedHost &host, int64_t group) {
  for (const int64_t member : host.ask().Members(group))
    ListAll(host, member);
}

TEST(VmGroups, HelpersBesideAVmInItsScopeAreItsOwn) {
  const std::pair<const char *, const char *> places[] = {{"", ""},
                                                          {"/libvirt", "/libvirt"},
                                                          {"/libvirt", ""},
                                                          {"/libvirt", "/helpers/swtpm"},
                                                          {"/libvirt/emulator", "/x"}};
  for (const auto &[ofMachine, ofHelper] : places) {
    for (const bool listed : {false, true}) {
      SavedHost host("clients.host");
      MoveIntoScope(host, ofMachine, ofHelper);
      if (listed) ListAll(host, kHostGroup);
      EXPECT_TRUE(HasOwnGroup(host, 320)) << ofMachine << " " << ofHelper;
    }
  }
}

TEST(VmGroups, AScopeWithAnotherVmIsNoVmsOwn) {
  for (const bool listed : {false, true}) {
    SavedHost host("clients.host");
    MoveIntoScope(host, "/libvirt", "/helpers");
    std::string status = host.Read("proc/321/status");
    host.Write("proc/321/status", status.replace(status.find("helper"), 6, "qemu-kvm"));
    host.Write("proc/321/cmdline", std::string("qemu-kvm") + '\0');
    host.Write(kMailScope + "/libvirt/memory.stat", "zswap 4096\nzswapped 8192\n");
    if (listed) ListAll(host, kHostGroup);
    EXPECT_TRUE(HasOwnGroup(host, 320)) << "the group that it is in";
    host.Write(kMailScope + "/libvirt/cgroup.procs", "320\n321\n");
    host.Write(kMailScope + "/helpers/cgroup.procs", "");
    host.ask().Members(host.ControlGroup(kMailScope + "/libvirt"));
    if (listed) ListAll(host, kHostGroup);
    EXPECT_FALSE(HasOwnGroup(host, 320));
  }
}

TEST(VmGroups, AScopeOfManyProcessesCountsAsShared) {
  SavedHost host("clients.host");
  MoveIntoScope(host, "/libvirt", "/helpers");
  std::string pids;
  for (int pid = 1000; pid < 1100; ++pid) {
    pids += std::to_string(pid) + "\n";
    host.Write("proc/" + std::to_string(pid) + "/status", "Name:\tx\nVmSize: 1 kB\n");
    host.Write("proc/" + std::to_string(pid) + "/cgroup", "0::" + kMailScope.substr(kTop.size() - 1) + "/libvirt\n");
  }
  host.Write(kMailScope + "/libvirt/cgroup.procs", "320\n" + pids);
  EXPECT_FALSE(HasOwnGroup(host, 320));
}

TEST(VmGroups, AScopeWithHiddenMembersIsNoVmsOwn) {
  SavedHost host("clients.host");
  MoveIntoScope(host, "/libvirt", "/helpers");
  host.Forbid(kMailScope + "/helpers/cgroup.procs");
  OrdinaryUser user;
  EXPECT_CELL(host.ask().Stats(320).bMin, 0u);
  EXPECT_FALSE(HasOwnGroup(host, 320));
}

constexpr uint64_t kMBInKB = 1024;

TEST(VmGroups, TheOverheadIncludesHelpersAndTheKernel) {
  SavedHost host("clients.host");
  MoveIntoScope(host, "/libvirt", "/helpers");
  const auto overhead = [&host](int64_t current, const std::string &stat) {
    host.Write(kMailScope + "/memory.current", std::to_string(current * 1024 * 1024));
    host.Write(kMailScope + "/memory.stat", stat);
    return static_cast<uint64_t>(host.ask().Stats(320).ovhd);
  };
  const std::string files = "file 104857600\nfile_mapped 73400320\n";  // 100 MB, 70 MB
  constexpr uint64_t kOfProcess = 82000;
  EXPECT_CELL(host.ask().Stats(320).ovhd, kOfProcess) << "no figures of the group";
  // The guest has 220000 KB apart from huge pages of a pool.
  EXPECT_EQ(overhead(400, files), 370 * kMBInKB - 220000);
  EXPECT_EQ(overhead(400, files + "zswap 10485760\n"), 360 * kMBInKB - 220000) << "compressed memory is the guest's";
  EXPECT_EQ(overhead(3472, files + "hugetlb 3221225472\n"), 370 * kMBInKB - 220000) << "a group charged for huge pages";
  EXPECT_EQ(overhead(200, files), kOfProcess) << "a group that is not charged for all of it";
  EXPECT_EQ(overhead(400, "anon 1\n"), kOfProcess) << "which files are mapped is not known";
  EXPECT_EQ(overhead(400, "file x\nfile_mapped 1\n"), kOfProcess);
  EXPECT_EQ(overhead(400, files), 370 * kMBInKB - 220000);
  EXPECT_CELL(host.ask().Stats(20'000'000 + 320).consumed, 370 * kMBInKB - 220000) << "of its monitor";
  EXPECT_CELL(host.ask().Stats(320).consumed, 300000u + 3145728) << "of its process alone";
}

TEST(VmGroups, LimitsBelowTheScopeHold) {
  SavedHost host("clients.host");
  MoveIntoScope(host, "/libvirt", "/helpers");
  host.Write(kMailScope + "/memory.min", "1048576\n");
  host.Write(kMailScope + "/memory.high", "max\n");
  host.Write(kMailScope + "/libvirt/memory.high", "2097152\n");
  EXPECT_CELL(host.ask().Stats(320).allocTgt, 2048u);
  EXPECT_CELL(host.ask().Alloc(320).min, 1024u);
}

TEST(VmGroups, TheHostIsNoVmsOwnGroup) {
  SavedHost host("clients.host");
  host.Write("proc/310/cgroup", "0::/\n");
  EXPECT_FALSE(HasOwnGroup(host, 310));
}

}  // namespace
}  // namespace platkit
