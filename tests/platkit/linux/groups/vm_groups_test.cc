// Finding the own control group of a VM.
#include "platkit/linux/groups/vm_groups.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

const std::string kTop = "sys/fs/cgroup/";
const std::string kOwn = kTop + "machine.slice/web.scope/guest";
const std::string kShared = kTop + "shared.slice";

// Only a VM with an own control group has this record.
bool HasOwnGroup(SavedHost &host, int64_t pid) {
  ZipStatsRecord record;
  return host.ask().Get("sched_memClients_memzipInfo", {pid}, record) == HVC_OK;
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

// Changes a file without SavedHost, which would let time pass.
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

TEST(VmGroups, TheHostIsNoVmsOwnGroup) {
  SavedHost host("clients.host");
  host.Write("proc/310/cgroup", "0::/\n");
  EXPECT_FALSE(HasOwnGroup(host, 310));
}

}  // namespace
}  // namespace platkit
