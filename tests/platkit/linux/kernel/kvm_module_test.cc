#include "platkit/linux/kernel/kvm_module.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(KvmModule, UsersOfEachModule) {
  for (const char *module : {"kvm_intel", "kvm_amd", "kvm"}) {
    const std::string refcnt = std::string("sys/module/") + module + "/refcnt";
    KernelFiles kernel;
    kernel.host().Write("dev/kvm", "");
    EXPECT_TRUE(IsKvmInUse(kernel.With(refcnt, "3\n"))) << module;
    EXPECT_FALSE(IsKvmInUse(kernel.With(refcnt, "0\n"))) << module;
    EXPECT_TRUE(IsKvmInUse(kernel.With(refcnt, "x\n"))) << "not known to be unused";
  }
}

TEST(KvmModule, BuiltIntoTheKernel) {
  KernelFiles kernel;
  EXPECT_FALSE(IsKvmInUse(kernel.files()));
  EXPECT_TRUE(IsKvmInUse(kernel.With("dev/kvm", "")));
}

}  // namespace
}  // namespace platkit
