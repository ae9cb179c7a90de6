#include "platkit/linux/kernel/process_limits.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

TEST(ProcessLimits, AddressSpace) {
  ExpectFigures(
      "proc/7/limits", [](HostFiles &files) { return ReadAddressSpaceLimit(files, 7); },
      {{"Limit Soft Hard Units\nMax address space         4096      8192      bytes\n", Figure(4096)},
       {"Max address space         unlimited            unlimited            bytes\n", kUnlimited},
       {"Max address space         much\n", kUnreadable},
       {"Max address space ", kUnreadable},
       {"Max data size 5 5 bytes\n", kUnreadable},
       {"", kUnreadable}},
      kUnreadable, kAbsent);
}

}  // namespace
}  // namespace platkit
