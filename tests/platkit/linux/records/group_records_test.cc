// Figures of groups when a file is missing, garbled or not readable.
#include "platkit/linux/records/group_records.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

// A bad file affects only the fields of the record that come from it.
TEST(GroupRecords, EachFileOfAControlGroup) {
  const struct {
    const char *file;
    uint64_t (*cell)(const GroupMemoryStatsRecord &);
    uint64_t ifMissing;
  } files[] = {
      {"memory.current", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.consumed; }, kNoFigure},
      {"memory.peak", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.consumedPeak; }, kNoFigure},
      {"memory.min", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.bMin; }, 0},
      {"memory.low", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.iMin; }, 0},
      {"memory.max", [](const GroupMemoryStatsRecord &r) -> uint64_t { return r.bMax; }, kNoFigure},
  };
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const int64_t web = host.ControlGroup(kWeb);
  ask.Members(0);
  for (const auto &file : files) {
    const std::string path = kWeb + "/" + file.file;
    const auto cell = [&] { return file.cell(ask.Stats(web)); };
    host.Write(path, "126877696\n");
    EXPECT_EQ(cell(), 123904u) << path;
    host.Write(path, "126877696");
    EXPECT_EQ(cell(), 123904u) << path;
    for (const std::string &bad : {std::string("max\n"), std::string("12x\n"), std::string("-1\n"), std::string(),
                                   std::string("\n"), std::string("18446744073709551616\n"), std::string("1 2\n"),
                                   std::string(10000, '1'), std::string("1\0002", 3)}) {
      host.Write(path, bad);
      EXPECT_EQ(cell(), kNoFigure) << path << ": " << bad;
      EXPECT_CELL(ask.Stats(web).ovhd, 256u) << path;
    }
    host.Write(path, "126877696\n");
    host.Forbid(path);
    {
      OrdinaryUser user;
      EXPECT_EQ(cell(), kNoFigure) << path;
    }
    host.Remove(path);
    EXPECT_EQ(cell(), file.ifMissing) << path;
    host.MakeFolder(path);
    EXPECT_EQ(cell(), kNoFigure) << path << " is no file at all";
    host.Remove(path);
    host.Write(path, "0\n");
  }
}

TEST(GroupRecords, EachLineOfMemoryStat) {
  SavedHost host("v2.host");
  const int64_t web = host.ControlGroup(kWeb);
  const auto overhead = [&](std::string_view text) -> uint64_t {
    host.Write(kWeb + "/memory.stat", text);
    return host.ask().Stats(web).ovhd;
  };
  host.ask().Members(0);
  EXPECT_EQ(overhead("kernel 1024\nsock 2048\n"), 3u);
  EXPECT_EQ(overhead("sock 2048\nnew_key 7\n\nkernel 1024"), 3u) << "in any order, ended or not";
  EXPECT_EQ(overhead("kernel 1024\nsock 2048\nkernel 4096\n"), 3u) << "the first line counts";
  EXPECT_EQ(overhead("kernel 1024\n"), 1u);
  EXPECT_EQ(overhead("kernel x\nsock 2048\n"), kNoFigure);
  EXPECT_EQ(overhead("kernel\nsock 2048\n"), 2u) << "a key alone is no figure";
  EXPECT_EQ(overhead("kernel 99999999999999999999\nsock 2048\n"), kNoFigure);
  EXPECT_EQ(overhead("kernel 18446744073709551615\nsock 2048\n"), kNoFigure) << "the sum does not fit";
  EXPECT_EQ(overhead(std::string(9000, 'x') + "\nkernel 1024\n"), 1u) << "an overlong line is passed over";
  EXPECT_EQ(overhead(""), kNoFigure);
  EXPECT_EQ(overhead(std::string("\0\xff\n:\n ", 6)), kNoFigure);
  host.Forbid(kWeb + "/memory.stat");
  {
    OrdinaryUser user;
    EXPECT_CELL(host.ask().Stats(web).ovhd, kNoFigure);
  }
  host.Remove(kWeb + "/memory.stat");
  EXPECT_CELL(host.ask().Stats(web).ovhd, kNoFigure);
  EXPECT_CELL(host.ask().Stats(web).consumed, 4096u);
}

TEST(GroupRecords, EachLineOfStatus) {
  SavedHost host("v2.host");
  Asker ask = host.ask();
  const auto stats = [&](std::string_view text) -> const GroupMemoryStatsRecord & {
    host.Write("proc/100/status", text);
    ask.Members(host.ControlGroup(kWeb));
    return ask.Stats(100);
  };
  EXPECT_CELL(stats("VmRSS:\t  10 kB\nName:\tx\nHugetlbPages: 5 kB\n").consumed, 15u);
  EXPECT_EQ(host.ask().Name(100), "x");
  EXPECT_CELL(stats("VmHWM: 12 kB\nVmRSS: 10 kB\nHugetlbPages: 5 kB\n").consumedPeak, kNoFigure);
  EXPECT_CELL(stats("VmHWM: 12 kB\nVmRSS: 10 kB\nHugetlbPages: 0 kB\n").consumedPeak, 12u);
  EXPECT_CELL(stats("VmHWM: 12 kB\nVmRSS: 10 kB\n").consumedPeak, 12u);
  EXPECT_CELL(stats("VmRSS: 10 kB\n").consumed, 10u) << "a kernel without huge pages";
  EXPECT_CELL(stats("VmRSS: 10 kB\n").memSize, kNoFigure);
  EXPECT_CELL(stats("VmRSS: 10 kB\nVmRSS: 11 kB\n").consumed, 10u);
  EXPECT_CELL(stats("VmRSS: ten kB\nVmData: 7 kB\nVmStk: 0 kB\n").consumed, kNoFigure);
  EXPECT_CELL(stats("VmRSS: ten kB\nVmData: 7 kB\nVmStk: 0 kB\n").memSize, 7u);
  EXPECT_CELL(stats("Groups: " + std::string(100000, '7') + "\nVmData: 7 kB\nVmStk: 0 kB\n").memSize, 7u);
  EXPECT_CELL(stats("Name:\ta\tb\x01\x7f\nVmData: 1 kB\nVmStk: 0 kB\n").memSize, 1u);
  EXPECT_EQ(host.ask().Name(100), "a?b??");
  EXPECT_CELL(stats("Name:\t" + std::string(200, 'n') + "\nVmData: 1 kB\nVmStk: 0 kB\n").memSize, 1u);
  EXPECT_EQ(host.ask().Name(100), std::string(63, 'n'));
  EXPECT_CELL(stats("Name:\ta,b\"c\xc2\x9b"
                    "2J\xe2\x80\xae\nVmData: 1 kB\nVmStk: 0 kB\n")
                  .memSize,
              1u);
  EXPECT_EQ(host.ask().Name(100), "a?b?c?2J?");
  EXPECT_CELL(stats("Name:\t" + std::string(62, 'n') + "\xc3\xa9\nVmData: 1 kB\nVmStk: 0 kB\n").memSize, 1u);
  EXPECT_EQ(host.ask().Name(100), std::string(62, 'n')) << "no half character";
}

TEST(GroupRecords, MeminfoLines) {
  SavedHost host("v2.host");
  host.Write("proc/meminfo", "MemFree: 1 kB\nMemTotal: 10 kB\nMemTotal: 11 kB\nSlab: x kB\n");
  const GroupMemoryStatsRecord stats = host.ask().Stats(0);
  EXPECT_CELL(stats.memSize, 10u);
  EXPECT_CELL(stats.consumed, 9u);
  EXPECT_CELL(stats.ovhd, kNoFigure);
  host.Forbid("proc/meminfo");
  OrdinaryUser user;
  EXPECT_CELL(host.ask().Stats(0).memSize, kNoFigure);
}

TEST(GroupRecords, TheMembersOfTheHostAddUp) {
  SavedHost host("v2.host");
  const std::string processes = "sys/fs/cgroup/cgroup.procs";
  host.Write(processes, host.Read(processes) + "500\n");
  host.Write("proc/500/status", "Name:\tswitch\nTgid:\t500\nVmRSS:\t  100 kB\nHugetlbPages:\t  4096 kB\n");
  Asker ask = host.ask();
  const std::vector<int64_t> members = ask.Members(0);
  ASSERT_TRUE(std::ranges::count(members, 500) == 1) << "a process outside of control groups";
  uint64_t sum = 0;
  for (const int64_t member : members)
    sum += ask.Stats(member).consumed;
  EXPECT_CELL(ask.Stats(0).consumed, sum);
}

TEST(GroupRecords, PageSharingFiles) {
  SavedHost host("v2.host");
  const std::string ksm = "sys/kernel/mm/ksm/";
  host.Write(ksm + "ksm_zero_pages", "many\n");
  host.Write("proc/vmstat", "cow_ksm\n");
  host.Remove(ksm + "pages_unshared");
  host.Forbid(ksm + "pages_sharing");
  OrdinaryUser user;
  const PShareStatsRecord stats = host.ask().Record(nodes::memory_pshare_stats);
  EXPECT_CELL(stats.zero, kNoFigure);
  EXPECT_CELL(stats.reclaimed, kNoFigure);
  EXPECT_CELL(stats.cow, kNoFigure);
  EXPECT_CELL(stats.used, 100u);
  EXPECT_CELL(stats.totRemove, 0u);
  EXPECT_CELL(stats.hintsActive, 0u);
}

}  // namespace
}  // namespace platkit
