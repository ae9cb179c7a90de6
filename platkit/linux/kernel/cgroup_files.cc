#include "platkit/linux/kernel/cgroup_files.h"

#include <algorithm>
#include <iterator>

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/process_status.h"

namespace platkit {
namespace {

struct AmountFile {
  std::string_view v1, v2;  // empty: this version has no such file
};

// In the order of CgroupAmount.
constexpr AmountFile kAmountFiles[] = {
    {"", "memory.min"},
    {"", "memory.low"},
    {"memory.soft_limit_in_bytes", "memory.high"},
    {"memory.limit_in_bytes", "memory.max"},
    {"memory.usage_in_bytes", "memory.current"},
    {"memory.max_usage_in_bytes", "memory.peak"},
    {"", "memory.swap.current"},
    {"", "memory.swap.peak"},
    {"", "memory.swap.max"},
    {"memory.memsw.max_usage_in_bytes", ""},
    {"memory.memsw.limit_in_bytes", ""},
    {"memory.kmem.usage_in_bytes", ""},
    {"", "memory.zswap.max"},
    {"", "hugetlb.1GB.current"},
};
static_assert(std::size(kAmountFiles) == kCgroupAmounts);

// A version 1 key without "total_" does not count descendants. No key counts the huge pages of shared memory.
CgroupStat ReadV1(HostFiles &files, const HostPath &path) {
  CgroupStat stat;
  Figure cache, mapped;
  const WantedFigure wanted[] = {{"total_swap", &stat.swap},
                                 {"total_swapcached", &stat.swapCached},
                                 {"total_cache", &cache},
                                 {"total_mapped_file", &mapped},
                                 {"total_rss_huge", &stat.transparent}};
  ReadFigures(files, path, wanted);
  stat.unmapped = cache - mapped;
  return stat;
}

CgroupStat ReadV2(HostFiles &files, const HostPath &path) {
  CgroupStat stat;
  Figure cache, mapped, stack, pageTables, secondaryPageTables, perCpu, slab, sockets;
  Figure swapIn, swapOut, writtenBack, zeroIn, zeroOut, anonHuge, sharedHuge, faults, collapses, demotedByKswapd,
      demotedDirectly, demotedByKhugepaged, demotedProactively;
  const WantedFigure wanted[] = {{"file", &cache},
                                 {"file_mapped", &mapped},
                                 {"hugetlb", &stat.hugePages},
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
                                 {"pswpin", &swapIn},
                                 {"pswpout", &swapOut},
                                 {"zswpwb", &writtenBack},
                                 {"swpin_zero", &zeroIn},
                                 {"swpout_zero", &zeroOut},
                                 {"anon_thp", &anonHuge},
                                 {"shmem_thp", &sharedHuge},
                                 {"thp_fault_alloc", &faults},
                                 {"thp_collapse_alloc", &collapses},
                                 {"thp_swpout_fallback", &stat.hugeSplits},
                                 {"numa_pages_migrated", &stat.numaMoved},
                                 {"numa_hint_faults", &stat.numaFaults},
                                 {"pgpromote_success", &stat.promoted},
                                 {"pgdemote_kswapd", &demotedByKswapd},
                                 {"pgdemote_direct", &demotedDirectly},
                                 {"pgdemote_khugepaged", &demotedByKhugepaged},
                                 {"pgdemote_proactive", &demotedProactively}};
  ReadFigures(files, path, wanted);
  stat.unmapped = cache - mapped;
  stat.swapIn = swapIn + zeroIn;
  stat.swapOut = swapOut + zeroOut;
  stat.unzippable = swapOut - writtenBack;
  stat.transparent = anonHuge + sharedHuge;
  stat.hugeAllocs = faults + collapses;
  stat.demoted = demotedByKswapd + demotedDirectly + demotedByKhugepaged + demotedProactively;
  // Kernels before 5.18 have only the parts. `kernel` never includes socket buffers, so they are added.
  stat.kernel = stat.kernel.IfAbsent(stack + pageTables + secondaryPageTables + perCpu + slab) + sockets;
  return stat;
}

}  // namespace

Figure ReadCgroupAmount(HostFiles &files, CgroupVersion version, const std::string &folder, CgroupAmount amount) {
  const AmountFile &names = kAmountFiles[static_cast<size_t>(amount)];
  const std::string_view name = version == CgroupVersion::kV1 ? names.v1 : names.v2;
  if (name.empty() || version == CgroupVersion::kNone) return {};
  return ReadAmount(files, HostPath(folder, "/", name));
}

CgroupStat ReadCgroupStat(HostFiles &files, CgroupVersion version, const std::string &folder) {
  const HostPath path(folder, "/memory.stat");
  switch (version) {
    case CgroupVersion::kNone: break;
    case CgroupVersion::kV1: return ReadV1(files, path);
    case CgroupVersion::kV2: return ReadV2(files, path);
  }
  return {};
}

Figure ReadCgroupLimitHits(HostFiles &files, CgroupVersion version, const std::string &folder) {
  if (version == CgroupVersion::kNone) return {};
  if (version == CgroupVersion::kV1) return ReadAmount(files, HostPath(folder, "/memory.failcnt"));
  Figure hits;
  const WantedFigure wanted[] = {{"max", &hits}};
  ReadFigures(files, HostPath(folder, "/memory.events"), wanted);
  return hits;
}

HVC_ReturnStatus ReadCgroupPids(HostFiles &files, const std::string &folder, std::vector<int64_t> &pids) {
  pids.clear();
  LineReader lines(files, HostPath(folder, "/cgroup.procs"));
  for (std::string_view line; lines.Next(line);) {
    uint64_t pid = 0;
    if (ParseNumber(line, pid) && pid > 0 && pid <= kMaxPid) pids.push_back(static_cast<int64_t>(pid));
  }
  std::sort(pids.begin(), pids.end());
  pids.erase(std::unique(pids.begin(), pids.end()), pids.end());
  return lines.status();
}

bool IsThreadedCgroup(HostFiles &files, const std::string &folder) {
  char buffer[32];
  std::string_view type;
  return files.ReadShort(HostPath(folder, "/cgroup.type"), buffer, type) == HVC_OK && type == "threaded\n";
}

}  // namespace platkit
