#include "platkit/linux/kernel/process_fd.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(ProcessFd, ADescriptorOfAKvmVm) {
  KernelFiles kernel;
  EXPECT_FALSE(HoldsKvmVm(kernel.files(), 7)) << "no such process";
  kernel.host().MakeLink("proc/7/fd/0", "/dev/null");
  kernel.host().MakeLink("proc/7/fd/3", "anon_inode:kvm-vcpu:0");
  kernel.host().MakeLink("proc/7/fd/4", "anon_inode:kvm-vmx");
  kernel.host().Write("proc/7/fd/5", "no link");
  EXPECT_FALSE(HoldsKvmVm(kernel.files(), 7));
  kernel.host().MakeLink("proc/7/fd/6", "anon_inode:kvm-vm");
  EXPECT_TRUE(HoldsKvmVm(kernel.files(), 7));
  kernel.host().Forbid("proc/7/fd");
  OrdinaryUser user;
  EXPECT_FALSE(HoldsKvmVm(kernel.files(), 7));
}

}  // namespace
}  // namespace platkit
