#include "platkit/linux/groups/guest_backing.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace platkit {
namespace {

using enum GuestBacking;

CgroupMount Mounts() {
  CgroupMount mount;
  mount.memoryFolders = {{"/dev/hugepages", FileSystem::kHugetlbfs}, {"/dev/shm", FileSystem::kTmpfs}};
  return mount;
}

using Words = std::vector<std::string>;

// The backing of a machine with these arguments.
GuestBacking Of(const Words &words, const CgroupMount &mount = Mounts()) {
  std::string line = std::string("qemu-kvm") + '\0';
  for (const std::string &word : words)
    line += word + '\0';
  return BackingOf(ParseQemuCommandLine(line), mount);
}

// The backing of a machine whose only backend has these properties and the identifier "ram".
GuestBacking OfBackend(const std::string &backend) {
  return Of({"-machine", "q35,memory-backend=ram", "-object", backend});
}

TEST(GuestBacking, TheBackendOfTheMachine) {
  EXPECT_EQ(OfBackend("memory-backend-ram,id=ram,size=1G"), kAnonymous);
  EXPECT_EQ(OfBackend("memory-backend-ram,id=ram,share=on"), kSharedMemory);
  EXPECT_EQ(OfBackend("memory-backend-memfd,id=ram"), kSharedMemory) << "a memfd is shared by default";
  EXPECT_EQ(OfBackend(R"({"qom-type":"memory-backend-memfd","id":"ram","share":true})"), kSharedMemory);
  EXPECT_EQ(OfBackend("memory-backend-memfd,id=ram,share=off"), kAnonymous);
  EXPECT_EQ(OfBackend("memory-backend-memfd,id=ram,share=off,hugetlb=on"), kHugetlb);
  EXPECT_EQ(OfBackend("memory-backend-memfd,id=ram,hugetlb=on,hugetlbsize=2M"), kHugetlb);
  EXPECT_EQ(OfBackend("memory-backend-shm,id=ram"), kSharedMemory);
  EXPECT_EQ(OfBackend("memory-backend-epc,id=ram"), kAnonymous) << "of a type that is not known";
}

TEST(GuestBacking, Files) {
  const std::string file = "memory-backend-file,id=ram,mem-path=";
  EXPECT_EQ(OfBackend(file + "/dev/hugepages/libvirt"), kHugetlb);
  EXPECT_EQ(OfBackend(file + "/dev/hugepages/libvirt,share=on"), kHugetlb);
  EXPECT_EQ(OfBackend(file + "/dev/shm/ram,share=on"), kSharedMemory);
  EXPECT_EQ(OfBackend(file + "/dev/shm/ram,share=off"), kAnonymous) << "what is written is copied";
  EXPECT_EQ(OfBackend(file + "/var/lib/ram,share=on"), kFiles);
  EXPECT_EQ(OfBackend(file + "/var/lib/ram"), kFiles);
  EXPECT_EQ(OfBackend(file), kAnonymous) << "without a path";
  EXPECT_EQ(Of({"-mem-path", "/dev/hugepages"}), kHugetlb);
  EXPECT_EQ(Of({"-mem-path", "/dev/shm"}), kAnonymous);
  EXPECT_EQ(Of({"-mem-path", "/dev/hugepages"}, CgroupMount()), kFiles) << "in a container, paths mean other files";
}

TEST(GuestBacking, AllPartsCount) {
  const Words shared = {"-object", "memory-backend-memfd,id=shared"};
  const Words anonymous = {"-object", "memory-backend-ram,id=private"};
  const auto with = [&](const Words &words) {
    Words all = words;
    all.insert(all.end(), shared.begin(), shared.end());
    all.insert(all.end(), anonymous.begin(), anonymous.end());
    return Of(all);
  };
  EXPECT_EQ(with({}), kAnonymous) << "nothing uses the backends";
  EXPECT_EQ(with({"-machine", "memory-backend=shared"}), kSharedMemory);
  EXPECT_EQ(with({"-numa", "node,nodeid=0,memdev=shared"}), kSharedMemory);
  EXPECT_EQ(with({"-numa", "node,memdev=shared", "-numa", "node,memdev=private"}), kAnonymous);
  EXPECT_EQ(with({"-numa", "node,nodeid=0"}), kAnonymous);
  EXPECT_EQ(with({"-machine", "memory-backend=shared", "-device", "pc-dimm,memdev=shared"}), kSharedMemory);
  EXPECT_EQ(with({"-machine", "memory-backend=shared", "-device", "pc-dimm,memdev=private"}), kAnonymous);
  EXPECT_EQ(with({"-machine", "memory-backend=shared", "-device", "virtio-mem-pci,memdev=private"}), kAnonymous);
  EXPECT_EQ(with({"-machine", "memory-backend=shared", "-device", "pc-dimm,memdev=none"}), kAnonymous);
  EXPECT_EQ(with({"-machine", "memory-backend=shared", "-readconfig", "file"}), kAnonymous) << "the file may add more";
  EXPECT_EQ(with({"-device", "pc-dimm,memdev=shared"}), kAnonymous) << "the machine itself has no backend";
  const Words huge = {"-object", "memory-backend-memfd,id=huge,hugetlb=on", "-machine", "memory-backend=huge"};
  const auto beside = [&](const std::string &dimm) {
    Words all = huge;
    all.insert(all.end(), {"-device", "pc-dimm,memdev=" + dimm});
    return with(all);
  };
  EXPECT_EQ(beside("huge"), kHugetlb);
  EXPECT_EQ(beside("shared"), kSharedMemory);
  EXPECT_EQ(beside("private"), kAnonymous);
}

TEST(GuestBacking, AnotherMonitor) { EXPECT_EQ(BackingOf(ParseQemuCommandLine(""), Mounts()), kAnonymous); }

}  // namespace
}  // namespace platkit
