#include "platkit/linux/kernel/cgroup_mount.h"

#include <time.h>

#include <string>

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

CgroupMount Find(SavedHost &host, std::string_view mounts) {
  host.Write("proc/self/mountinfo", mounts);
  HostFiles files(host.Path(""), Reach::kRootFolder);
  return FindCgroupMount(files);
}

TEST(CgroupMount, FileSystemsWhoseFilesAreMemory) {
  SavedHost host;
  host.Write("proc/self/mountinfo",
             "1 1 0:50 / /dev/hugepages rw - hugetlbfs hugetlbfs rw\n2 1 0:28 / /cg rw - cgroup2 none rw\n"
             "3 1 1:29 / /dev/shm rw - tmpfs tmpfs rw\n4 1 254:0 / / rw - ext4 /dev/vda rw\n"
             "5 1 x:y / /a rw - tmpfs tmpfs rw\n6 1 7 / /b rw - tmpfs tmpfs rw\n");
  HostFiles files(host.Path(""), Reach::kRootFolder);
  const CgroupMount mount = FindCgroupMount(files);
  EXPECT_EQ(mount.top, "cg");
  EXPECT_EQ(mount.memoryDevices, (std::vector<DeviceNumber>{50, DeviceNumber{1} << 32 | 29}));
}

TEST(CgroupMount, FileSystemsOfPaths) {
  SavedHost host;
  const CgroupMount mount = Find(host,
                                 "1 1 254:0 / / rw - ext4 /dev/vda rw\n2 1 0:5 / /dev rw - devtmpfs udev rw\n"
                                 "3 1 0:50 / /dev/hugepages rw - hugetlbfs hugetlbfs rw\n"
                                 "4 1 1:29 / /mem\\040ory rw - tmpfs tmpfs rw\n"
                                 "5 1 254:1 / /mem\\040ory/disk rw - ext4 /dev/vdb rw\n"
                                 "6 1 1:30 / /top rw - tmpfs tmpfs rw\n7 1 254:2 / /top rw - ext4 /dev/vdc rw\n");
  EXPECT_EQ(FileSystemOf(mount, "/dev/hugepages"), FileSystem::kHugetlbfs);
  EXPECT_EQ(FileSystemOf(mount, "/dev/hugepages/libvirt/qemu/1-web"), FileSystem::kHugetlbfs);
  EXPECT_EQ(FileSystemOf(mount, "/mem ory/ram"), FileSystem::kTmpfs);
  for (const char *other : {"/mem ory/disk/ram", "/mem ory2", "/dev/hugepagesx/ram", "/var/ram", "/", "", "ram",
                            "dev/hugepages", "/dev/hugepages/../ram", "/top/ram"}) {
    EXPECT_EQ(FileSystemOf(mount, other), FileSystem::kOther) << other;
  }
  EXPECT_EQ(FileSystemOf(CgroupMount(), "/dev/hugepages/ram"), FileSystem::kOther);
}

TEST(CgroupMount, ALaterMountHidesTheEarlierOne) {
  SavedHost host;
  const CgroupMount mount = Find(host,
                                 "1 1 0:50 / /a rw - hugetlbfs x rw\n2 1 0:51 / /a rw - tmpfs x rw\n"
                                 "3 1 254:1 / /a/b rw - ext4 x rw\n4 1 0:52 / /a/b/c rw - tmpfs x rw\n");
  EXPECT_EQ(FileSystemOf(mount, "/a/ram"), FileSystem::kTmpfs);
  EXPECT_EQ(FileSystemOf(mount, "/a/b/ram"), FileSystem::kOther);
  EXPECT_EQ(FileSystemOf(mount, "/a/b/c/ram"), FileSystem::kTmpfs);
}

double CpuSeconds() {
  timespec time = {};
  EXPECT_EQ(clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time), 0);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// A kernel allows 100,000 mounts, and a saved host can contain more. The time must not grow with their square.
TEST(CgroupMount, ManyMounts) {
  constexpr int kMounts = 50'000;
  std::string mounts;
  for (int i = 0; i < kMounts; ++i) {
    const std::string number = std::to_string(i);
    mounts += number + " 1 0:" + number + " / /run/user/" + number + " rw - tmpfs tmpfs rw\n";
  }
  SavedHost host;
  const double start = CpuSeconds();
  const CgroupMount mount = Find(host, mounts);
  EXPECT_LT(CpuSeconds() - start, 2);
  EXPECT_EQ(mount.memoryDevices.size(), size_t{kMounts});
  EXPECT_EQ(FileSystemOf(mount, "/run/user/49999/ram"), FileSystem::kTmpfs);
}

TEST(CgroupMount, Preference) {
  const std::string memory = "1 1 0:1 / /v1/mem rw - cgroup cgroup rw,memory\n";
  const std::string unified = "1 1 0:1 / /v2 rw shared:1 master:2 - cgroup2 cgroup2 rw\n";
  const std::string named = "1 1 0:1 / /v1/systemd rw - cgroup cgroup rw,xattr,name=systemd\n";
  const std::string cpu = "1 1 0:1 / /v1/cpu rw - cgroup cgroup rw,cpu,cpuacct\n";
  const std::string other = "1 1 0:1 / /memory rw - tmpfs memory rw,memory\n";
  SavedHost host;
  EXPECT_EQ(Find(host, cpu + unified + memory + named).top, "v1/mem");
  EXPECT_EQ(Find(host, cpu + unified + memory + named).memoryFiles, CgroupVersion::kV1);
  EXPECT_EQ(Find(host, cpu + named + unified).top, "v2");
  EXPECT_EQ(Find(host, cpu + named + unified).memoryFiles, CgroupVersion::kV2);
  EXPECT_EQ(Find(host, cpu + named).top, "v1/systemd");
  EXPECT_EQ(Find(host, cpu + named).memoryFiles, CgroupVersion::kNone);
  EXPECT_EQ(Find(host, cpu).top, "v1/cpu");
  EXPECT_FALSE(Find(host, other).exists);
}

TEST(CgroupMount, FullPathsOfFolders) {
  CgroupMount mount;
  mount.top = "sys/fs/cgroup";
  mount.mounted = "/";
  EXPECT_EQ(FullCgroupOfFolder(mount, "sys/fs/cgroup/machine.slice/a.scope"), "/machine.slice/a.scope");
  EXPECT_EQ(FullCgroupOfFolder(mount, "sys/fs/cgroup"), "");
  mount.mounted = "/box";
  EXPECT_EQ(FullCgroupOfFolder(mount, "sys/fs/cgroup/in"), "/box/in");
}

TEST(CgroupMount, MountsOfAllShapes) {
  SavedHost host;
  EXPECT_EQ(Find(host, "1 1 0:1 / /a\\040b\\134c\\9 rw - cgroup2 x rw\n").top, "a b\\c\\9");
  EXPECT_EQ(Find(host, "1 1 0:1 / / rw - cgroup2 x rw\n").top, ".");
  EXPECT_EQ(Find(host, "1 1 0:1 /part /top rw - cgroup2 x rw\n").mounted, "/part");
  for (const char *bad : {"", "\n", "-\n", " - \n", " - cgroup2\n", "1 1 0:1 - cgroup2 x rw\n", "1 2 3 4 5 6 7\n",
                          "1 1 0:1 / relative rw - cgroup2 x rw\n", "1 1 0:1 / /top rw cgroup2 x rw\n"}) {
    EXPECT_FALSE(Find(host, bad).exists) << bad;
  }
  EXPECT_TRUE(Find(host, std::string(9000, 'o') + "\n1 1 0:1 / /top rw - cgroup2 x rw").exists);
}

TEST(CgroupMount, FolderOfAProcess) {
  SavedHost host;
  HostFiles files(host.Path(""), Reach::kRootFolder);
  const auto folder = [&](const CgroupMount &mount, std::string_view text) {
    host.Write("proc/7/cgroup", text);
    return ReadCgroupOfProcess(files, mount, 7);
  };
  const CgroupMount v2 = {.exists = true,
                          .memoryFiles = CgroupVersion::kV2,
                          .top = "t",
                          .mounted = "/",
                          .v1Options = "",
                          .memoryDevices = {},
                          .memoryFolders = {}};
  EXPECT_EQ(folder(v2, "4:memory:/wrong\n0::/a:b/c\n"), "a:b/c");
  EXPECT_EQ(folder(v2, "0::/\n"), "");
  EXPECT_EQ(folder(v2, "0::/../outside\n"), "");
  EXPECT_EQ(folder(v2, "garbage\n"), "");
  EXPECT_EQ(folder(v2, ""), "");
  CgroupMount v1 = v2;
  v1.v1Options = "rw,cpu,memory";
  EXPECT_EQ(folder(v1, "0::/wrong\n5:name=systemd:/wrong\n4:cpu,memory:/right\n"), "right");
  CgroupMount part = v2;
  part.mounted = "/box";
  EXPECT_EQ(folder(part, "0::/box/in\n"), "in");
  EXPECT_EQ(folder(part, "0::/box\n"), "");
  EXPECT_EQ(folder(part, "0::/boxer/in\n"), "") << "not what the mount shows";
  EXPECT_EQ(ReadFullCgroupOfProcess(files, part, 7), "/boxer/in");
  EXPECT_EQ(ReadCgroupOfProcess(files, v2, 8), "") << "no such process";
  EXPECT_EQ(ReadFullCgroupOfProcess(files, v2, 8), "");
}

}  // namespace
}  // namespace platkit
