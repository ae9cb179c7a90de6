#include "platkit/linux/kernel/process_status.h"

#include "tests/platkit/linux/kernel/kernel_file.h"

namespace platkit {
namespace {

// The figure of process 7; absent if ReadProcessStatus does not find it.
ReadFigure Reader(Figure ProcessStatus::*figure) {
  return [figure](HostFiles &files) {
    ProcessStatus status;
    return ReadProcessStatus(files, 7, status) == HVC_OK ? status.*figure : kAbsent;
  };
}

TEST(ProcessStatus, EachLine) {
  const struct {
    std::string key;
    Figure ProcessStatus::*figure;
    Figure ifNoLine;
  } lines[] = {
      {"VmSize", &ProcessStatus::addressSpace, kUnreadable},
      {"VmData", &ProcessStatus::data, kUnreadable},
      {"VmStk", &ProcessStatus::stack, kUnreadable},
      {"VmRSS", &ProcessStatus::resident, kUnreadable},
      {"VmHWM", &ProcessStatus::residentPeak, kUnreadable},
      {"VmPTE", &ProcessStatus::pageTables, kUnreadable},
      {"HugetlbPages", &ProcessStatus::hugePages, Figure(0)},
      {"RssAnon", &ProcessStatus::anonymous, kAbsent},
      {"RssFile", &ProcessStatus::files, kAbsent},
      {"RssShmem", &ProcessStatus::sharedMemory, kAbsent},
      {"VmLck", &ProcessStatus::locked, kAbsent},
      {"VmPin", &ProcessStatus::pinned, kAbsent},
      {"VmSwap", &ProcessStatus::swapped, kAbsent},
      {"THP_enabled", &ProcessStatus::transparentHugePages, kAbsent},
  };
  for (const auto &line : lines) {
    ExpectFigures("proc/7/status", Reader(line.figure),
                  {{"VmLib: 1 kB\n" + line.key + ":\t  12 kB\n", Figure(12)},
                   {line.key + ": 12 kB\n" + line.key + ": 13 kB\nVmLib: 1 kB\n", Figure(12)},
                   {"VmLib: 1 kB\n" + line.key + ": many kB\n", kUnreadable},
                   {"VmLib: 1 kB\n", line.ifNoLine}},
                  kUnreadable, kAbsent);
  }
}

TEST(ProcessStatus, NameAndThreads) {
  KernelFiles kernel;
  ProcessStatus status;
  ASSERT_EQ(ReadProcessStatus(kernel.With("proc/7/status", "Name:\ta b\nVmLib: 1 kB\nThreads:\t12\n"), 7, status),
            HVC_OK);
  EXPECT_EQ(status.name, "a b");
  EXPECT_EQ(status.threads, 12u);
  EXPECT_NE(status.identity.inode, 0u);
  EXPECT_NE(status.identity.seenAt, 0u);
  ASSERT_EQ(ReadProcessStatus(kernel.With("proc/7/status", "VmLib: 1 kB\nThreads: x\n"), 7, status), HVC_OK);
  EXPECT_EQ(status.name, "?");
  EXPECT_EQ(status.threads, 0u);
}

TEST(ProcessStatus, KernelThreadsZombiesAndThreadsAreNotFound) {
  KernelFiles kernel;
  ProcessStatus status;
  for (const char *text : {"", "Name:\tx\n", "Kthread:\t1\nVmLib: 1 kB\n", "State:\tZ (zombie)\nVmLib: 1 kB\n",
                           "State:\tX (dead)\nVmLib: 1 kB\n", "Tgid:\t6\nVmLib: 1 kB\n"}) {
    EXPECT_EQ(ReadProcessStatus(kernel.With("proc/7/status", text), 7, status), HVC_NOT_FOUND) << text;
  }
}

TEST(ProcessStatus, TheProcessOfAThread) {
  KernelFiles kernel;
  int64_t pid = 0;
  EXPECT_EQ(ReadProcessOfThread(kernel.files(), 9, pid), HVC_NOT_FOUND);
  EXPECT_EQ(ReadProcessOfThread(kernel.With("proc/9/status", "Name:\tx\nTgid:\t7\n"), 9, pid), HVC_OK);
  EXPECT_EQ(pid, 7);
  EXPECT_EQ(ReadProcessOfThread(kernel.With("proc/9/status", "Tgid:\tx\n"), 9, pid), HVC_NOT_FOUND);
}

TEST(ProcessStatus, WhoRunsTheProcess) {
  const struct {
    std::string lines;
    std::optional<uint64_t> realID;
    bool isRootOnly, isContained;
  } cases[] = {
      {"Uid:\t0\t0\t0\t0\n", 0, true, false},
      {"Uid:\t1000\t1001\t1002\t1003\n", 1000, false, false},
      {"Uid:\t1000\t0\t0\t0\n", 1000, false, false},
      {"Uid:\t0\t0\t0\t1000\n", 0, false, false},
      {"Uid:\t0\t0\t0\t0\nNSpid:\t7\n", 0, true, false},
      {"Uid:\t0\t0\t0\t0\nNSpid:\t7\t1\n", 0, true, true},
      {"Uid:\t4294967295\t0\t0\t0\n", 4294967295, false, false},
      {"Uid:\t0\t0\t0\n", std::nullopt, false, false},
      {"Uid:\t0\t0\t0\tx\n", std::nullopt, false, false},
      {"Uid:\n", std::nullopt, false, false},
      {"", std::nullopt, false, false},
  };
  for (const auto &c : cases) {
    KernelFiles kernel;
    ProcessStatus status;
    EXPECT_EQ(ReadProcessStatus(kernel.With("proc/7/status", "Name:\tx\n" + c.lines + "VmSize: 1 kB\n"), 7, status),
              HVC_OK);
    EXPECT_EQ(status.user.realID, c.realID) << c.lines;
    EXPECT_EQ(status.user.isRootOnly, c.isRootOnly) << c.lines;
    EXPECT_EQ(status.user.isContained, c.isContained) << c.lines;
  }
}

}  // namespace
}  // namespace platkit
