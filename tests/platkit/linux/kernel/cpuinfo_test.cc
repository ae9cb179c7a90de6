#include "platkit/linux/kernel/cpuinfo.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

// The model of processor 1; absent if FindProcessor does not find it.
Figure ModelOfSecond(HostFiles &files) {
  Processor processor;
  return FindProcessor(files, 1, processor) == HVC_OK ? processor.model : kAbsent;
}

TEST(Cpuinfo, TheModelOfAProcessor) {
  ExpectFigures("proc/cpuinfo", ModelOfSecond,
                {{"vendor_id: GenuineIntel\ncpu family: 6\nprocessor\t: 0\nmodel\t\t: 7\n\nvendor_id\t: "
                  "GenuineIntel\ncpu family\t: 6\nprocessor\t: 1\nmodel\t\t: 85\nmodel name\t: x 9\n\n",
                  Figure(85)},
                 {"model: 85\nvendor_id: GenuineIntel\ncpu family: 6\nprocessor: 1\n", Figure(85)},
                 {"vendor_id: GenuineIntel\ncpu family: 6\nprocessor: 1\nmodel: 85\nmodel: 86\n", Figure(85)},
                 {"vendor_id: GenuineIntel\ncpu family: 6\nprocessor: 1\nmodel: x\n", kUnreadable},
                 {"vendor_id: GenuineIntel\ncpu family: 6\nprocessor: 1\nmodel name: 85\n", kAbsent},
                 {"vendor_id: GenuineIntel\ncpu family: 6\nprocessor: 2\nmodel: 85\n", kAbsent},
                 {"vendor_id: GenuineIntel\ncpu family: 6\nprocessor: one\nmodel: 85\n", kAbsent},
                 {"", kAbsent}},
                kAbsent, kAbsent);
}

TEST(Cpuinfo, ModelsOfOtherVendorsAndFamiliesMeanSomethingElse) {
  ExpectFigures("proc/cpuinfo", ModelOfSecond,
                {{"processor: 1\nvendor_id: AuthenticAMD\ncpu family: 6\nmodel: 85\n", kAbsent},
                 {"processor: 1\nvendor_id: GenuineIntel\ncpu family: 15\nmodel: 85\n", kAbsent},
                 {"processor: 1\nvendor_id: GenuineIntel\nmodel: 85\n", kAbsent},
                 {"processor: 1\ncpu family: 6\nmodel: 85\n", kAbsent}},
                kAbsent, kAbsent);
}

TEST(Cpuinfo, Statuses) {
  KernelFiles kernel;
  Processor processor;
  EXPECT_EQ(FindProcessor(kernel.files(), 0, processor), HVC_NOT_FOUND);
  EXPECT_EQ(FindProcessor(kernel.With("proc/cpuinfo", "vendor_id: GenuineIntel\ncpu family: 6\nprocessor: 0\n"), 0,
                          processor),
            HVC_NOT_FOUND);
  EXPECT_EQ(
      FindProcessor(kernel.With("proc/cpuinfo", "vendor_id: GenuineIntel\ncpu family: 6\nprocessor: 0\nmodel: 1\n"), 0,
                    processor),
      HVC_OK);
  kernel.host().Forbid("proc/cpuinfo");
  OrdinaryUser user;
  EXPECT_EQ(FindProcessor(kernel.files(), 0, processor), HVC_NO_PERMISSION);
}

}  // namespace
}  // namespace platkit
