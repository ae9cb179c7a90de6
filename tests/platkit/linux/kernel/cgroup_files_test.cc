#include "platkit/linux/kernel/cgroup_files.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

constexpr CgroupVersion kV1 = CgroupVersion::kV1;
constexpr CgroupVersion kV2 = CgroupVersion::kV2;

struct AmountFile {
  CgroupAmount amount;
  CgroupVersion version;
  const char *file;
};

constexpr AmountFile kAmounts[] = {
    {CgroupAmount::kMin, kV2, "memory.min"},
    {CgroupAmount::kLow, kV2, "memory.low"},
    {CgroupAmount::kHigh, kV2, "memory.high"},
    {CgroupAmount::kHigh, kV1, "memory.soft_limit_in_bytes"},
    {CgroupAmount::kMax, kV2, "memory.max"},
    {CgroupAmount::kMax, kV1, "memory.limit_in_bytes"},
    {CgroupAmount::kCurrent, kV2, "memory.current"},
    {CgroupAmount::kCurrent, kV1, "memory.usage_in_bytes"},
    {CgroupAmount::kPeak, kV2, "memory.peak"},
    {CgroupAmount::kPeak, kV1, "memory.max_usage_in_bytes"},
    {CgroupAmount::kSwap, kV2, "memory.swap.current"},
    {CgroupAmount::kWithSwapPeak, kV1, "memory.memsw.max_usage_in_bytes"},
    {CgroupAmount::kKernel, kV1, "memory.kmem.usage_in_bytes"},
    {CgroupAmount::kZswapMax, kV2, "memory.zswap.max"},
    {CgroupAmount::kGiganticPages, kV2, "hugetlb.1GB.current"},
};

TEST(CgroupFiles, EachAmount) {
  for (const AmountFile &file : kAmounts) {
    ExpectFigures(
        std::string("group/") + file.file,
        [&file](HostFiles &files) { return ReadCgroupAmount(files, file.version, "group", file.amount); },
        {{"4096\n", Figure(4096)},
         {"max\n", kUnlimited},
         {"9223372036854771712\n", kUnlimited},
         {"x\n", kUnreadable},
         {"", kUnreadable}},
        kUnreadable, kAbsent);
  }
}

TEST(CgroupFiles, AVersionWithoutTheFile) {
  KernelFiles kernel;
  EXPECT_EQ(ReadCgroupAmount(kernel.With("group/memory.min", "1\n"), kV1, "group", CgroupAmount::kMin), kAbsent);
  EXPECT_EQ(ReadCgroupAmount(kernel.files(), CgroupVersion::kNone, "group", CgroupAmount::kMin), kAbsent);
}

struct StatLine {
  CgroupVersion version;
  const char *key;
  Figure CgroupStat::*figure;
};

constexpr StatLine kLines[] = {
    {kV2, "swapcached", &CgroupStat::swapCached},
    {kV2, "anon_thp", &CgroupStat::transparent},
    {kV2, "shmem_thp", &CgroupStat::transparent},
    {kV2, "file", &CgroupStat::unmapped},
    {kV2, "hugetlb", &CgroupStat::hugePages},
    {kV2, "kernel", &CgroupStat::kernel},
    {kV2, "kernel_stack", &CgroupStat::kernel},
    {kV2, "pagetables", &CgroupStat::kernel},
    {kV2, "sec_pagetables", &CgroupStat::kernel},
    {kV2, "percpu", &CgroupStat::kernel},
    {kV2, "slab", &CgroupStat::kernel},
    {kV2, "sock", &CgroupStat::kernel},
    {kV2, "zswap", &CgroupStat::zswap},
    {kV2, "zswapped", &CgroupStat::zswapped},
    {kV2, "zswpin", &CgroupStat::zswapIn},
    {kV2, "zswpout", &CgroupStat::zswapOut},
    {kV2, "pswpin", &CgroupStat::swapIn},
    {kV2, "pswpout", &CgroupStat::swapOut},
    {kV2, "swpin_zero", &CgroupStat::swapIn},
    {kV2, "swpout_zero", &CgroupStat::swapOut},
    {kV2, "pswpout", &CgroupStat::unzippable},
    {kV2, "thp_fault_alloc", &CgroupStat::hugeAllocs},
    {kV2, "thp_collapse_alloc", &CgroupStat::hugeAllocs},
    {kV2, "thp_swpout_fallback", &CgroupStat::hugeSplits},
    {kV2, "numa_pages_migrated", &CgroupStat::numaMoved},
    {kV2, "numa_hint_faults", &CgroupStat::numaFaults},
    {kV2, "pgpromote_success", &CgroupStat::promoted},
    {kV2, "pgdemote_kswapd", &CgroupStat::demoted},
    {kV2, "pgdemote_direct", &CgroupStat::demoted},
    {kV2, "pgdemote_khugepaged", &CgroupStat::demoted},
    {kV2, "pgdemote_proactive", &CgroupStat::demoted},
    {kV1, "total_swap", &CgroupStat::swap},
    {kV1, "total_swapcached", &CgroupStat::swapCached},
    {kV1, "total_cache", &CgroupStat::unmapped},
    {kV1, "total_rss_huge", &CgroupStat::transparent},
};

TEST(CgroupFiles, EachLineOfMemoryStat) {
  for (const StatLine &line : kLines) {
    const std::string key = line.key;
    ExpectFigures(
        "group/memory.stat",
        [&line](HostFiles &files) { return ReadCgroupStat(files, line.version, "group").*line.figure; },
        {{key + " 4096\n", Figure(4096)},
         {"other 1\n" + key + " 4096\n" + key + " 1\n", Figure(4096)},
         {key + " x\n", kUnreadable},
         {"other 1\n", kAbsent},
         {"", kAbsent}},
        kUnreadable, kAbsent);
  }
}

TEST(CgroupFiles, PartsOfKernelMemoryCountOnlyWithoutTheirSum) {
  KernelFiles kernel;
  EXPECT_EQ(ReadCgroupStat(kernel.With("group/memory.stat", "slab 1\npercpu 2\nsock 4\n"), kV2, "group").kernel,
            Figure(7));
  EXPECT_EQ(ReadCgroupStat(kernel.With("group/memory.stat", "slab 1\nkernel 8\nsock 4\n"), kV2, "group").kernel,
            Figure(12));
}

TEST(CgroupFiles, MemoryThatWasCompressedBeforeItWasWritten) {
  KernelFiles kernel;
  EXPECT_EQ(ReadCgroupStat(kernel.With("group/memory.stat", "pswpout 9\nzswpwb 2\n"), kV2, "group").unzippable,
            Figure(7));
  EXPECT_EQ(ReadCgroupStat(kernel.With("group/memory.stat", "zswpwb 2\n"), kV2, "group").unzippable, kAbsent);
}

TEST(CgroupFiles, CachedFilesThatNoProcessMaps) {
  const auto unmapped = [](CgroupVersion version, const char *text) {
    KernelFiles kernel;
    return ReadCgroupStat(kernel.With("group/memory.stat", text), version, "group").unmapped;
  };
  EXPECT_EQ(unmapped(kV2, "file 9\nfile_mapped 2\n"), Figure(7));
  EXPECT_EQ(unmapped(kV1, "total_cache 9\ntotal_mapped_file 2\n"), Figure(7));
  EXPECT_EQ(unmapped(kV2, "file 9\nfile_mapped x\n"), kUnreadable);
  EXPECT_EQ(unmapped(kV2, "file_mapped 2\n"), kAbsent);
}

TEST(CgroupFiles, HowOftenTheLimitWasReached) {
  const auto hits = [](CgroupVersion version) {
    return [version](HostFiles &files) { return ReadCgroupLimitHits(files, version, "group"); };
  };
  ExpectFigures("group/memory.events", hits(kV2),
                {{"low 1\nhigh 2\nmax 3\noom 4\n", Figure(3)}, {"max x\n", kUnreadable}, {"low 1\n", kAbsent}},
                kUnreadable, kAbsent);
  ExpectFigures("group/memory.failcnt", hits(kV1), {{"3\n", Figure(3)}, {"x\n", kUnreadable}}, kUnreadable, kAbsent);
}

TEST(CgroupFiles, Pids) {
  KernelFiles kernel;
  std::vector<int64_t> pids;
  EXPECT_EQ(ReadCgroupPids(kernel.files(), "group", pids), HVC_NOT_FOUND);
  EXPECT_EQ(
      ReadCgroupPids(kernel.With("group/cgroup.procs", "30\nx\n-5\n0\n4\n30\n\n4999999\n5000000\n"), "group", pids),
      HVC_OK);
  EXPECT_EQ(pids, (std::vector<int64_t>{4, 30, 4999999}));
  kernel.host().Forbid("group/cgroup.procs");
  OrdinaryUser user;
  EXPECT_EQ(ReadCgroupPids(kernel.files(), "group", pids), HVC_NO_PERMISSION);
  EXPECT_TRUE(pids.empty());
}

TEST(CgroupFiles, ThreadedGroups) {
  KernelFiles kernel;
  EXPECT_FALSE(IsThreadedCgroup(kernel.files(), "group"));
  EXPECT_TRUE(IsThreadedCgroup(kernel.With("group/cgroup.type", "threaded\n"), "group"));
  EXPECT_FALSE(IsThreadedCgroup(kernel.With("group/cgroup.type", "domain threaded\n"), "group"));
}

}  // namespace
}  // namespace platkit
