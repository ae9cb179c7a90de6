#include "platkit/linux/kernel/kvm_debugfs.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

const std::string kFolder = "sys/kernel/debug/kvm/";
using Pids = std::vector<int64_t>;

TEST(KvmDebugfs, OwnersOfVms) {
  KernelFiles kernel;
  kernel.host().Write("proc/30/status", "Tgid:\t30\n");
  kernel.host().MakeLink("proc/30/fd/11", "anon_inode:kvm-vm");
  kernel.host().Write("proc/31/status", "Tgid:\t7\n");
  kernel.host().MakeLink("proc/7/fd/12", "anon_inode:kvm-vm");
  for (const char *name : {"30-11", "31-12", "halt_poll", "x-1", "40", "-5-1", "41-", "41-x"})
    kernel.host().MakeFolder(kFolder + name);
  EXPECT_EQ(ReadKvmOwners(kernel.files()).pids, (Pids{7, 30}));
  EXPECT_TRUE(ReadKvmOwners(kernel.files()).isComplete);
}

TEST(KvmDebugfs, AThreadThatHasEnded) {
  KernelFiles kernel;
  kernel.host().MakeFolder(kFolder + "30-11");
  EXPECT_EQ(ReadKvmOwners(kernel.files()).pids, Pids{});
  EXPECT_FALSE(ReadKvmOwners(kernel.files()).isComplete);
}

TEST(KvmDebugfs, ACreatorThatDoesNotHoldTheVm) {
  KernelFiles kernel;
  kernel.host().Write("proc/30/status", "Tgid:\t30\n");
  kernel.host().MakeFolder(kFolder + "30-11");
  const auto isOwner = [&kernel] { return ReadKvmOwners(kernel.files()).pids == Pids{30}; };
  EXPECT_FALSE(isOwner()) << "it has passed the VM on";
  EXPECT_FALSE(ReadKvmOwners(kernel.files()).isComplete);
  kernel.host().MakeLink("proc/30/fd/11", "/dev/null");
  EXPECT_FALSE(isOwner());
  kernel.host().Remove("proc/30/fd/11");
  kernel.host().MakeLink("proc/30/fd/11", "anon_inode:kvm-vm");
  EXPECT_TRUE(isOwner());
  kernel.host().Forbid("proc/30/fd");
  OrdinaryUser user;
  EXPECT_TRUE(isOwner()) << "if descriptors cannot be read, the list counts";
}

TEST(KvmDebugfs, AFolderThatCannotBeRead) {
  KernelFiles kernel;
  EXPECT_FALSE(ReadKvmOwners(kernel.files()).isComplete);
  kernel.host().MakeFolder(kFolder);
  EXPECT_TRUE(ReadKvmOwners(kernel.files()).isComplete);
  kernel.host().Forbid(kFolder);
  OrdinaryUser user;
  EXPECT_FALSE(ReadKvmOwners(kernel.files()).isComplete);
}

}  // namespace
}  // namespace platkit
