// The files of a control group's folder.
#ifndef PLATKIT_LINUX_KERNEL_CGROUP_FILES_H
#define PLATKIT_LINUX_KERNEL_CGROUP_FILES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Amounts that have their own file, in bytes. The comments name the file in version 2, then the file in version 1.
enum class CgroupAmount : uint8_t {
  kMin,            // memory.min; none
  kLow,            // memory.low; none
  kHigh,           // memory.high; memory.soft_limit_in_bytes
  kMax,            // memory.max; memory.limit_in_bytes
  kCurrent,        // memory.current; memory.usage_in_bytes
  kPeak,           // memory.peak; memory.max_usage_in_bytes
  kSwap,           // memory.swap.current; none
  kSwapPeak,       // memory.swap.peak; none
  kSwapMax,        // memory.swap.max; none
  kWithSwapPeak,   // none; memory.memsw.max_usage_in_bytes
  kWithSwapMax,    // none; memory.memsw.limit_in_bytes
  kKernel,         // none; memory.kmem.usage_in_bytes
  kZswapMax,       // memory.zswap.max; none
  kGiganticPages,  // hugetlb.1GB.current; none (huge pages of 1 GB)
};
inline constexpr size_t kCgroupAmounts = 14;

// Absent if the file does not exist: the kernel or the version of the hierarchy lacks it, the memory controller is not
// enabled for the group, or the group has vanished. Unlimited if there is no limit.
Figure ReadCgroupAmount(HostFiles &files, CgroupVersion version, const std::string &folder, CgroupAmount amount);

// Figures of memory.stat, which include the group's descendants. Amounts are in bytes. Figures in "pages" count pages
// since the group was created. A figure without a line is absent.
struct CgroupStat {
  Figure swap;        // version 1 only: total_swap
  Figure swapCached;  // swapcached: swapped in and still in swap space
  Figure unmapped;  // cached files that no process maps: file - file_mapped; version 1 total_cache - total_mapped_file
  Figure transparent;  // transparent huge pages: anon_thp + shmem_thp; version 1 total_rss_huge
  // The following figures exist only in version 2.
  Figure kernel;             // kernel (before Linux 5.18 the sum of its parts) + sock
  Figure hugePages;          // hugetlb: huge pages of pools, if the group is charged for them
  Figure zswap;              // compressed memory: size after compression
  Figure zswapped;           // compressed memory: size before compression
  Figure zswapIn, zswapOut;  // pages: zswpin, zswpout
  Figure swapIn, swapOut;    // pages: pswpin + swpin_zero, pswpout + swpout_zero
  Figure unzippable;         // pages: pswpout - zswpwb, written to swap space without having been compressed
  Figure hugeAllocs;         // transparent huge pages: thp_fault_alloc + thp_collapse_alloc
  Figure hugeSplits;         // transparent huge pages: thp_swpout_fallback, split to be swapped out
  Figure numaMoved;          // pages: numa_pages_migrated
  Figure numaFaults;         // pages: numa_hint_faults
  Figure promoted;           // pages: pgpromote_success
  Figure demoted;            // pages: pgdemote_*
};

CgroupStat ReadCgroupStat(HostFiles &files, CgroupVersion version, const std::string &folder);

// How often the group has reached its limit (memory.max): "max" of memory.events; version 1 memory.failcnt. Absent if
// the file does not exist.
Figure ReadCgroupLimitHits(HostFiles &files, CgroupVersion version, const std::string &folder);

// Reads cgroup.procs: the PIDs of the group's processes, in ascending order and without duplicates.
[[nodiscard]] HVC_ReturnStatus ReadCgroupPids(HostFiles &files, const std::string &folder, std::vector<int64_t> &pids);

// Whether cgroup.type is "threaded". If so, an ancestor lists the group's processes.
bool IsThreadedCgroup(HostFiles &files, const std::string &folder);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_CGROUP_FILES_H
