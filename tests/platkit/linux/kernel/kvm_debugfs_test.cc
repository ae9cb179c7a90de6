#include "platkit/linux/kernel/kvm_debugfs.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

const std::string kMachines = "sys/kernel/debug/kvm/";
using Pids = std::vector<int64_t>;

Pids PidsOf(const KvmVms &list) {
  Pids pids;
  for (const KvmVm &vm : list.vms)
    pids.push_back(vm.pid);
  return pids;
}

TEST(KvmDebugfs, OwnersOfVms) {
  KernelFiles kernel;
  kernel.host().Write("proc/30/status", "Tgid:\t30\n");
  kernel.host().MakeLink("proc/30/fd/11", "anon_inode:kvm-vm");
  kernel.host().Write("proc/31/status", "Tgid:\t7\n");
  kernel.host().MakeLink("proc/7/fd/12", "anon_inode:kvm-vm");
  for (const char *name : {"30-11", "31-12", "halt_poll", "x-1", "40", "-5-1", "41-", "41-x"})
    kernel.host().MakeFolder(kMachines + name);
  EXPECT_EQ(PidsOf(ReadKvmVms(kernel.files())), (Pids{7, 30}));
  EXPECT_TRUE(ReadKvmVms(kernel.files()).isComplete);
}

TEST(KvmDebugfs, AThreadThatHasEnded) {
  KernelFiles kernel;
  kernel.host().MakeFolder(kMachines + "30-11");
  EXPECT_EQ(PidsOf(ReadKvmVms(kernel.files())), Pids{});
  EXPECT_FALSE(ReadKvmVms(kernel.files()).isComplete);
}

TEST(KvmDebugfs, ACreatorThatDoesNotHoldTheVm) {
  KernelFiles kernel;
  kernel.host().Write("proc/30/status", "Tgid:\t30\n");
  kernel.host().MakeFolder(kMachines + "30-11");
  const auto isOwner = [&kernel] { return PidsOf(ReadKvmVms(kernel.files())) == Pids{30}; };
  EXPECT_FALSE(isOwner()) << "it has passed the VM on";
  EXPECT_FALSE(ReadKvmVms(kernel.files()).isComplete);
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
  EXPECT_FALSE(ReadKvmVms(kernel.files()).isComplete);
  kernel.host().MakeFolder(kMachines);
  EXPECT_TRUE(ReadKvmVms(kernel.files()).isComplete);
  kernel.host().Forbid(kMachines);
  OrdinaryUser user;
  EXPECT_FALSE(ReadKvmVms(kernel.files()).isComplete);
}

KvmPages PagesOf(KernelFiles &kernel, int64_t pid) {
  const KvmVms list = {.vms = {{7, "7-11"}, {30, "30-11"}, {30, "30-12"}}, .isComplete = true};
  return ReadKvmPages(kernel.files(), list, pid);
}

TEST(KvmDebugfs, PagesOfAGuest) {
  const struct {
    const char *file;
    Figure KvmPages::*figure;
  } counts[] = {{"pages_4k", &KvmPages::small}, {"pages_2m", &KvmPages::large}, {"pages_1g", &KvmPages::gigantic}};
  for (const auto &count : counts) {
    KernelFiles kernel;
    const auto pages = [&] { return PagesOf(kernel, 7).*count.figure; };
    const std::string path = kMachines + "7-11/" + count.file;
    EXPECT_EQ(pages(), kAbsent) << "missing";
    kernel.host().Write(path, "12\n");
    EXPECT_EQ(pages(), Figure(12));
    EXPECT_EQ(PagesOf(kernel, 30).*count.figure, kAbsent) << "of another process";
    for (const char *garbage : {"", "x\n", "-1\n"}) {
      kernel.host().Write(path, garbage);
      EXPECT_EQ(pages(), kUnreadable) << garbage;
    }
    kernel.host().Forbid(path);
    OrdinaryUser user;
    EXPECT_EQ(pages(), kUnreadable);
  }
}

TEST(KvmDebugfs, AKernelThatDoesNotCountPages) {
  KernelFiles kernel;
  for (const char *file : {"pages_4k", "pages_2m", "pages_1g"})
    kernel.host().Write(kMachines + "7-11/" + file, "0\n");
  EXPECT_EQ(PagesOf(kernel, 7).KB(), kAbsent);
  EXPECT_EQ(PagesOf(kernel, 7).large, kAbsent);
  kernel.host().Write(kMachines + "7-11/pages_4k", "1\n");
  EXPECT_EQ(PagesOf(kernel, 7).KB(), Figure(4));
  EXPECT_EQ(PagesOf(kernel, 7).large, Figure(0));
}

TEST(KvmDebugfs, PagesOfAProcessWithSeveralGuestsAddUp) {
  KernelFiles kernel;
  kernel.host().Write(kMachines + "30-11/pages_4k", "1\n");
  kernel.host().Write(kMachines + "30-12/pages_4k", "2\n");
  kernel.host().Write(kMachines + "30-12/pages_2m", "3\n");
  kernel.host().Write(kMachines + "30-12/pages_1g", "1\n");
  EXPECT_EQ(PagesOf(kernel, 30).small, Figure(3));
  EXPECT_EQ(PagesOf(kernel, 30).KB(), Figure(12 + 6144 + 1048576));
  EXPECT_EQ(PagesOf(kernel, 31).KB(), kAbsent);
}

}  // namespace
}  // namespace platkit
