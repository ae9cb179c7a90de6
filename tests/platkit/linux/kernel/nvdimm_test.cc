#include "platkit/linux/kernel/nvdimm.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

const std::string kNvdimms = "sys/bus/nd/devices/";

TEST(Nvdimm, FreeLabelSlots) {
  ExpectFigures(
      kNvdimms + "nmem0/available_slots", [](HostFiles &files) { return ReadFreeLabelSlots(files, "nmem0"); },
      {{"120\n", Figure(120)}, {"few\n", kUnreadable}, {"", kUnreadable}}, kUnreadable, Figure(0));
}

TEST(Nvdimm, Failures) {
  KernelFiles kernel;
  EXPECT_FALSE(HasNvdimmFailed(kernel.files(), "nmem0"));
  EXPECT_FALSE(HasNvdimmFailed(kernel.With(kNvdimms + "nmem0/nfit/flags", "smart_notify\n"), "nmem0"));
  EXPECT_TRUE(HasNvdimmFailed(kernel.With(kNvdimms + "nmem0/nfit/flags", "flush_fail smart_notify\n"), "nmem0"));
}

TEST(Nvdimm, Numbers) {
  KernelFiles kernel;
  std::vector<uint32_t> numbers = {9};
  EXPECT_EQ(ListNvdimms(kernel.files(), numbers), HVC_OK) << "a host without persistent memory";
  EXPECT_TRUE(numbers.empty());
  for (const char *name : {"nmem10", "nmem2", "nmem", "nmem02", "nmemx", "nmem4294967296", "region0"})
    kernel.host().MakeFolder(kNvdimms + name);
  EXPECT_EQ(ListNvdimms(kernel.files(), numbers), HVC_OK);
  EXPECT_EQ(numbers, (std::vector<uint32_t>{2, 10}));
  kernel.host().Forbid(kNvdimms);
  OrdinaryUser user;
  EXPECT_EQ(ListNvdimms(kernel.files(), numbers), HVC_NO_PERMISSION);
}

}  // namespace
}  // namespace platkit
