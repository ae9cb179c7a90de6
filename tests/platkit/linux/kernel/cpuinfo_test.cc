#include "platkit/linux/kernel/cpuinfo.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

// The model of processor 1, or unreadable if it is not found.
Figure ModelOfSecond(HostFiles &files) {
  Processor processor;
  return FindProcessor(files, 1, processor) == HVC_OK ? processor.model : kAbsent;
}

TEST(Cpuinfo, TheModelOfAProcessor) {
  ExpectFigures("proc/cpuinfo", ModelOfSecond,
                {{"processor\t: 0\nmodel\t\t: 7\n\nprocessor\t: 1\nmodel\t\t: 85\nmodel name\t: x 9\n\n", Figure(85)},
                 {"model: 85\nprocessor: 1\n", Figure(85)},
                 {"processor: 1\nmodel: 85\nmodel: 86\n", Figure(85)},
                 {"processor: 1\nmodel: x\n", kUnreadable},
                 {"processor: 1\nmodel name: 85\n", kAbsent},
                 {"processor: 2\nmodel: 85\n", kAbsent},
                 {"processor: one\nmodel: 85\n", kAbsent},
                 {"", kAbsent}},
                kAbsent, kAbsent);
}

TEST(Cpuinfo, Statuses) {
  KernelFiles kernel;
  Processor processor;
  EXPECT_EQ(FindProcessor(kernel.files(), 0, processor), HVC_NOT_FOUND);
  EXPECT_EQ(FindProcessor(kernel.With("proc/cpuinfo", "processor: 0\n"), 0, processor), HVC_NOT_FOUND);
  EXPECT_EQ(FindProcessor(kernel.With("proc/cpuinfo", "processor: 0\nmodel: 1\n"), 0, processor), HVC_OK);
  kernel.host().Forbid("proc/cpuinfo");
  OrdinaryUser user;
  EXPECT_EQ(FindProcessor(kernel.files(), 0, processor), HVC_NO_PERMISSION);
}

}  // namespace
}  // namespace platkit
