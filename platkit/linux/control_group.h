// The memory files of a control group.
#ifndef PLATKIT_LINUX_CONTROL_GROUP_H
#define PLATKIT_LINUX_CONTROL_GROUP_H

#include <array>
#include <optional>
#include <string>

#include "platkit/linux/figure.h"
#include "platkit/linux/hierarchy.h"
#include "platkit/linux/host_files.h"

namespace platkit {

// Amounts that have a file of their own. Which one, differs between the versions of control groups.
enum class GroupAmount : uint8_t { kMin, kLow, kHigh, kMax, kCurrent, kPeak, kSwap, kWithSwapPeak, kKernel };

// What memory.stat adds, in bytes and with all descendants.
struct GroupStat {
  Figure active;  // pages on the active lists
  Figure swap;    // version 1 alone
  Figure kernel;  // version 2 alone
};

// Reads each file when it is first asked for, and keeps what it gave.
class ControlGroupFiles {
 public:
  // In bytes. Absent: the version, the kernel or the group has no such file.
  Figure Amount(HostFiles &files, MemoryFiles version, const std::string &folder, GroupAmount amount);
  const GroupStat &Stat(HostFiles &files, MemoryFiles version, const std::string &folder);

 private:
  std::array<std::optional<Figure>, 9> amounts_;
  std::optional<GroupStat> stat_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_CONTROL_GROUP_H
