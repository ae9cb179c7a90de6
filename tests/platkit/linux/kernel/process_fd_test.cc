#include "platkit/linux/kernel/process_fd.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(ProcessFd, ADescriptorOfAKvmVm) {
  KernelFiles kernel;
  const auto isFound = [&kernel] { return FindKvmVm(kernel.files(), 7, 100).isFound; };
  EXPECT_FALSE(isFound()) << "no such process";
  kernel.host().MakeLink("proc/7/fd/0", "/dev/null");
  kernel.host().MakeLink("proc/7/fd/1", "/anon_inode:kvm-vm");
  kernel.host().MakeLink("proc/7/fd/2", "anon_inode:kvm-vm (deleted)");
  kernel.host().MakeLink("proc/7/fd/3", "anon_inode:kvm-vcpu:0");
  kernel.host().MakeLink("proc/7/fd/4", "anon_inode:kvm-vmx");
  kernel.host().Write("proc/7/fd/5", "no link");
  kernel.host().MakeLink("proc/7/fd/6", std::string(200, 'x'));
  EXPECT_FALSE(isFound());
  kernel.host().MakeLink("proc/7/fd/7", "anon_inode:kvm-vm");
  EXPECT_TRUE(isFound());
  kernel.host().Forbid("proc/7/fd");
  OrdinaryUser user;
  EXPECT_FALSE(isFound());
}

TEST(ProcessFd, TheSearchEndsAtTheLimit) {
  KernelFiles kernel;
  for (int i = 0; i < 5; ++i)
    kernel.host().MakeLink("proc/7/fd/" + std::to_string(i), "/dev/null");
  for (const size_t limit : {0u, 1u, 4u}) {
    const KvmVmSearch search = FindKvmVm(kernel.files(), 7, limit);
    EXPECT_FALSE(search.isComplete) << limit;
    EXPECT_EQ(search.descriptors, limit);
  }
  for (const size_t limit : {5u, 6u}) {
    const KvmVmSearch search = FindKvmVm(kernel.files(), 7, limit);
    EXPECT_TRUE(search.isComplete) << limit;
    EXPECT_EQ(search.descriptors, 5u);
  }
}

TEST(ProcessFd, TheSearchEndsAtTheFirstVm) {
  KernelFiles kernel;
  for (int i = 0; i < 5; ++i)
    kernel.host().MakeLink("proc/7/fd/" + std::to_string(i), "anon_inode:kvm-vm");
  const KvmVmSearch search = FindKvmVm(kernel.files(), 7, 100);
  EXPECT_TRUE(search.isFound && search.isComplete);
  EXPECT_EQ(search.descriptors, 1u);
}

}  // namespace
}  // namespace platkit
