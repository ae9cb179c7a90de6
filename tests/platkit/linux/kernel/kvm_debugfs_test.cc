#include "platkit/linux/kernel/kvm_debugfs.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

const std::string kFolder = "sys/kernel/debug/kvm/";
using Pids = std::vector<int64_t>;

TEST(KvmDebugfs, OwnersOfVms) {
  KernelFiles kernel;
  kernel.host().Write("proc/30/status", "Tgid:\t30\n");
  kernel.host().Write("proc/31/status", "Tgid:\t7\n");
  for (const char *name : {"30-11", "31-12", "halt_poll", "x-1", "40", "-5-1"})
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
