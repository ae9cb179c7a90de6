// Strange cache files: a folder, a pipe, a truncated file, a file of 4 GB.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "tests/stress/large_host.h"
#include "tests/support/process.h"

namespace stress {
namespace {

using testing_support::Outcome;
using testing_support::ScratchDirectory;

Outcome HeapStats(const std::string &path, const std::string &limit = "true") {
  return testing_support::Run(
      {.program = "/bin/sh",
       .arguments = {"-c", limit + "; exec \"$0\" -c \"$1\" -r heap-stats -q -s name", KESTREL_PROGRAM, path}});
}

std::string Refusal(const std::string &path, HVC_ReturnStatus status) {
  return "Couldn't open cache file " + path + ", error code: " + std::to_string(status) + "\n";
}

std::string SmallSnapshot() {
  LargeHost host;
  host.AddList("/system/heaps", std::vector<std::string>{"heap"});
  host.AddHeap("heap");
  return testing_support::ReadFile(host.Write());
}

TEST(StrangeFile, IsRefusedAtOnce) {
  const ScratchDirectory scratch;
  const std::string whole = SmallSnapshot();
  testing_support::WriteFile(scratch.File("empty"), "");
  testing_support::WriteFile(scratch.File("cut"), whole.substr(0, whole.size() - 1));
  testing_support::WriteFile(scratch.File("start"), whole.substr(0, 2060));
  ASSERT_EQ(mkfifo(scratch.File("pipe").c_str(), 0600), 0);
  const std::pair<std::string, HVC_ReturnStatus> files[] = {
      {scratch.path().string(), HVC_NOT_A_SNAPSHOT},
      {scratch.File("missing"), HVC_NOT_FOUND},
      {scratch.File("empty"), HVC_NOT_A_SNAPSHOT},
      {scratch.File("cut"), HVC_SNAPSHOT_DAMAGED},
      {scratch.File("start"), HVC_NOT_A_SNAPSHOT},
      {scratch.File("pipe"), HVC_NOT_A_SNAPSHOT},
      {"/dev/zero", HVC_NOT_A_SNAPSHOT},
      {"/proc/self/mem", HVC_NOT_A_SNAPSHOT},
  };
  for (const auto &[path, status] : files) {
    const Outcome report = HeapStats(path);
    EXPECT_EQ(report.exitStatus, 1) << path;
    EXPECT_EQ(report.output, "") << path;
    EXPECT_EQ(report.errors, Refusal(path, status));
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"verify", path}, {"dump", path}, {"--cache", path, "ls"}}) {
      const Outcome run = testing_support::Run({.program = NODAL_PROGRAM, .arguments = words});
      EXPECT_EQ(run.exitStatus, 1) << path;
      EXPECT_TRUE(run.errors.starts_with("nodal: " + path + ": ")) << run;
    }
  }
}

uint32_t IntegerAt(const std::string &bytes, size_t position) {
  uint32_t integer;
  std::memcpy(&integer, bytes.data() + position, sizeof integer);
  return integer;
}

void SetInteger(std::string &bytes, size_t position, uint64_t integer) {
  const auto narrow = static_cast<uint32_t>(integer);
  std::memcpy(bytes.data() + position, &narrow, sizeof narrow);
}

void WriteAt(int fd, const std::string &bytes, uint64_t position) {
  ASSERT_EQ(pwrite(fd, bytes.data(), bytes.size(), static_cast<off_t>(position)), static_cast<ssize_t>(bytes.size()));
}

// Writes a file of this size with `start`, a hole, and `end`. Returns false if the file system does not allow the size.
bool WriteWithHole(const std::string &path, const std::string &start, uint64_t size, const std::string &end) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  const bool large = fd >= 0 && ftruncate(fd, static_cast<off_t>(size)) == 0;
  if (large) {
    WriteAt(fd, start, 0);
    WriteAt(fd, end, size - end.size());
  }
  close(fd);
  return large;
}

// Writes a snapshot of this size: between its records and its hash tables is a long record that no table lists.
bool WriteLongSnapshot(const std::string &path, uint64_t size) {
  constexpr uint32_t kContents = 2048;
  const std::string small = SmallSnapshot();
  const uint32_t records = IntegerAt(small, 0);  // position of the first hash table
  const uint64_t grown = size - small.size();
  const std::string key = "/unknown";
  std::string start = small.substr(0, records) + std::string(8, '\0') + key;
  SetInteger(start, records, key.size());
  SetInteger(start, records + 4, grown - 8 - key.size());
  for (size_t table = 0; table < kContents; table += 8)
    SetInteger(start, table, IntegerAt(small, table) + grown);
  return WriteWithHole(path, start, size, small.substr(records));
}

constexpr uint64_t kLongest = UINT32_MAX;

TEST(StrangeFile, ALongSnapshotIsNotLoaded) {
  const ScratchDirectory scratch;
  const std::string path = scratch.File("long");
  if (!WriteLongSnapshot(path, kLongest)) GTEST_SKIP() << "no file system for files of 4 GB";
  const Outcome run = HeapStats(path);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_TRUE(run.output.starts_with("name\nheap\n")) << run.output;
#ifndef KESTREL_SANITIZE
  // Limits private memory but not address space.
  EXPECT_EQ(HeapStats(path, "ulimit -d 16384").output, run.output);
  // The file does not fit into this address space, so it cannot be mapped.
  const Outcome refused = HeapStats(path, "ulimit -v 1000000");
  EXPECT_EQ(refused.exitStatus, 1);
  EXPECT_EQ(refused.errors, Refusal(path, HVC_NO_MEMORY));
#endif
}

TEST(StrangeFile, ALongerOneIsNone) {
  const ScratchDirectory scratch;
  if (!WriteLongSnapshot(scratch.File("longer"), kLongest + 1)) GTEST_SKIP() << "no file system for files of 4 GB";
  EXPECT_EQ(HeapStats(scratch.File("longer")).errors, Refusal(scratch.File("longer"), HVC_SNAPSHOT_DAMAGED));

  // The version has no terminator, and the low 32 bits of the file's size are small or zero.
  std::string endless = SmallSnapshot().substr(0, 2048 + 8 + 14);
  SetInteger(endless, 2048 + 4, UINT32_MAX);
  endless.resize(1 << 16, '1');
  for (const uint64_t excess : {1u, 2u, 2049u, 4097u}) {
    const std::string path = scratch.File("endless-" + std::to_string(excess));
    ASSERT_TRUE(WriteWithHole(path, endless, kLongest + excess, ""));
    EXPECT_EQ(HeapStats(path).errors, Refusal(path, HVC_SNAPSHOT_DAMAGED));
  }

  // A newer version may allow larger files.
  std::string newer = SmallSnapshot();
  newer[2048 + 8 + 14] = '2';
  ASSERT_TRUE(WriteWithHole(scratch.File("newer"), newer, 2 * kLongest, ""));
  EXPECT_EQ(HeapStats(scratch.File("newer")).errors, Refusal(scratch.File("newer"), HVC_SNAPSHOT_TOO_NEW));
}

}  // namespace
}  // namespace stress
