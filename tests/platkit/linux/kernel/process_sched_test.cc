#include "platkit/linux/kernel/process_sched.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(ProcessSched, MovedPages) {
  ExpectFigures(
      "proc/7/sched", [](HostFiles &files) { return ReadNumaMovedPages(files, 7); },
      {{"numa_pages_migrated                :              12\n", Figure(12)},
       {"x\nnuma_pages_migrated\t7\nnuma_pages_migrated : 8\n", Figure(7)},
       {"numa_pages_migrated : many\n", kUnreadable},
       {"numa_preferred_nid : -1\n", kAbsent},
       {"", kAbsent}},
      kUnreadable, kAbsent);
}

}  // namespace
}  // namespace platkit
