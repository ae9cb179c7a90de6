// The memory files of a control group.
#ifndef PLATKIT_LINUX_KERNEL_CGROUP_FILES_H
#define PLATKIT_LINUX_KERNEL_CGROUP_FILES_H

#include <array>
#include <optional>
#include <string>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Amounts that have a file of their own. Which one, differs between the versions of control groups.
enum class GroupAmount : uint8_t {
  kMin,
  kLow,
  kHigh,
  kMax,
  kCurrent,
  kPeak,
  kSwap,
  kWithSwapPeak,
  kKernel,
  kZswapMax,
  kGiganticPages,  // huge pages of 1 GB
};
inline constexpr size_t kGroupAmounts = 11;

// What memory.stat adds, with all descendants; amounts in bytes, and traffic in pages since the group was made.
struct GroupStat {
  Figure active;       // pages on the active lists
  Figure swap;         // version 1 alone
  Figure swapCached;   // read from swap, and there still
  Figure transparent;  // transparent huge pages
  // Version 2 alone.
  Figure kernel;
  Figure zswap, zswapped;         // what compressed memory takes, and was before
  Figure zswapIn, zswapOut;       // pages
  Figure swapIn, swapOut;         // pages
  Figure hugeAllocs, hugeSplits;  // transparent huge pages given, and split to be swapped out
  Figure numaMoved;               // pages that went where they are used
  Figure promoted, demoted;       // pages that went to faster memory, and to slower
};

// Reads each file when it is first asked for, and keeps what it gave.
class ControlGroupFiles {
 public:
  // In bytes. Absent: the version, the kernel or the group has no such file.
  Figure Amount(HostFiles &files, MemoryFiles version, const std::string &folder, GroupAmount amount);
  const GroupStat &Stat(HostFiles &files, MemoryFiles version, const std::string &folder);

 private:
  std::array<std::optional<Figure>, kGroupAmounts> amounts_;
  std::optional<GroupStat> stat_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_CGROUP_FILES_H
