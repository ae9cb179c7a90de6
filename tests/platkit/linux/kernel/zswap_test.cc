#include "platkit/linux/kernel/zswap.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(Zswap, Enabled) {
  KernelFiles kernel;
  kernel.host().Write("sys/module/zswap/parameters/max_pool_percent", "20\n");
  const std::string enabled = "sys/module/zswap/parameters/enabled";
  EXPECT_EQ(ReadZswapMaxPercent(kernel.files()), kAbsent) << "a kernel without zswap";
  EXPECT_EQ(ReadZswapMaxPercent(kernel.With(enabled, "Y\n")), Figure(20));
  EXPECT_EQ(ReadZswapMaxPercent(kernel.With(enabled, "N\n")), Figure(0));
  EXPECT_EQ(ReadZswapMaxPercent(kernel.With(enabled, "?\n")), kUnreadable);
  kernel.host().Forbid(enabled);
  OrdinaryUser user;
  EXPECT_EQ(ReadZswapMaxPercent(kernel.files()), kUnreadable);
}

TEST(Zswap, MaxPoolPercent) {
  KernelFiles kernel;
  kernel.host().Write("sys/module/zswap/parameters/enabled", "Y\n");
  EXPECT_EQ(ReadZswapMaxPercent(kernel.files()), kUnreadable) << "it is missing";
  EXPECT_EQ(ReadZswapMaxPercent(kernel.With("sys/module/zswap/parameters/max_pool_percent", "x\n")), kUnreadable);
}

}  // namespace
}  // namespace platkit
