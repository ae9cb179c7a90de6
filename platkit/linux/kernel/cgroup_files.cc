#include "platkit/linux/kernel/cgroup_files.h"

#include <iterator>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

struct AmountFile {
  std::string_view v1, v2;  // empty: this version has none
};

// In the order of GroupAmount.
constexpr AmountFile kAmountFiles[] = {
    {"", "memory.min"},
    {"", "memory.low"},
    {"memory.soft_limit_in_bytes", "memory.high"},
    {"memory.limit_in_bytes", "memory.max"},
    {"memory.usage_in_bytes", "memory.current"},
    {"memory.max_usage_in_bytes", "memory.peak"},
    {"", "memory.swap.current"},
    {"memory.memsw.max_usage_in_bytes", ""},
    {"memory.kmem.usage_in_bytes", ""},
    {"", "memory.zswap.max"},
    {"", "hugetlb.1GB.current"},
};
static_assert(std::size(kAmountFiles) == kGroupAmounts);

// A version 1 key without "total_" leaves the descendants out. Shared memory's huge pages are in none.
GroupStat ReadV1(HostFiles &files, const HostPath &path) {
  GroupStat stat;
  Figure activeAnon, activeFile;
  const WantedFigure wanted[] = {{"total_active_anon", &activeAnon},
                                 {"total_active_file", &activeFile},
                                 {"total_swap", &stat.swap},
                                 {"total_swapcached", &stat.swapCached},
                                 {"total_rss_huge", &stat.transparent}};
  ReadFigures(files, path, wanted);
  stat.active = activeAnon + activeFile;
  return stat;
}

GroupStat ReadV2(HostFiles &files, const HostPath &path) {
  GroupStat stat;
  Figure activeAnon, activeFile, stack, pageTables, secondaryPageTables, perCpu, slab, sockets;
  Figure anonHuge, sharedHuge, faults, collapses, demotedByDaemon, demotedDirectly, demotedByCollapse, demotedOnDemand;
  const WantedFigure wanted[] = {{"active_anon", &activeAnon},
                                 {"active_file", &activeFile},
                                 {"swapcached", &stat.swapCached},
                                 {"kernel", &stat.kernel},
                                 {"kernel_stack", &stack},
                                 {"pagetables", &pageTables},
                                 {"sec_pagetables", &secondaryPageTables},
                                 {"percpu", &perCpu},
                                 {"slab", &slab},
                                 {"sock", &sockets},
                                 {"zswap", &stat.zswap},
                                 {"zswapped", &stat.zswapped},
                                 {"zswpin", &stat.zswapIn},
                                 {"zswpout", &stat.zswapOut},
                                 {"pswpin", &stat.swapIn},
                                 {"pswpout", &stat.swapOut},
                                 {"anon_thp", &anonHuge},
                                 {"shmem_thp", &sharedHuge},
                                 {"thp_fault_alloc", &faults},
                                 {"thp_collapse_alloc", &collapses},
                                 {"thp_swpout_fallback", &stat.hugeSplits},
                                 {"numa_pages_migrated", &stat.numaMoved},
                                 {"pgpromote_success", &stat.promoted},
                                 {"pgdemote_kswapd", &demotedByDaemon},
                                 {"pgdemote_direct", &demotedDirectly},
                                 {"pgdemote_khugepaged", &demotedByCollapse},
                                 {"pgdemote_proactive", &demotedOnDemand}};
  ReadFigures(files, path, wanted);
  stat.active = activeAnon + activeFile;
  stat.transparent = anonHuge + sharedHuge;
  stat.hugeAllocs = faults + collapses;
  stat.demoted = demotedByDaemon + demotedDirectly + demotedByCollapse + demotedOnDemand;
  // Kernels before 5.18 give the parts alone. Socket buffers are charged apart from kernel memory on all of them.
  stat.kernel = stat.kernel.IfAbsent(stack + pageTables + secondaryPageTables + perCpu + slab) + sockets;
  return stat;
}

}  // namespace

Figure ControlGroupFiles::Amount(HostFiles &files, MemoryFiles version, const std::string &folder, GroupAmount amount) {
  std::optional<Figure> &kept = amounts_[static_cast<size_t>(amount)];
  if (!kept) {
    const AmountFile &names = kAmountFiles[static_cast<size_t>(amount)];
    const std::string_view name = version == MemoryFiles::kV1 ? names.v1 : names.v2;
    kept = name.empty() || version == MemoryFiles::kNone ? Figure() : ReadAmount(files, HostPath(folder, "/", name));
  }
  return *kept;
}

const GroupStat &ControlGroupFiles::Stat(HostFiles &files, MemoryFiles version, const std::string &folder) {
  if (!stat_) {
    const HostPath path(folder, "/memory.stat");
    stat_ = version == MemoryFiles::kV1   ? ReadV1(files, path)
            : version == MemoryFiles::kV2 ? ReadV2(files, path)
                                          : GroupStat();
  }
  return *stat_;
}

}  // namespace platkit
