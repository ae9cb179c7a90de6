#include "platkit/linux/groups/process_memory.h"

#include <gtest/gtest.h>

namespace platkit {
namespace {

using enum GuestBacking;

// A monitor with 1000 KB of writable memory besides the 5000 KB of its guest, and 4000 KB of resident anonymous pages.
ProcessStatus Status() {
  ProcessStatus status;
  status.data = Figure(5900);
  status.stack = Figure(100);
  status.resident = Figure(4700);
  status.anonymous = Figure(4000);
  status.files = Figure(200);
  status.sharedMemory = Figure(500);
  status.hugePages = Figure(0);
  status.pageTables = Figure(30);
  return status;
}

Figure Part(GuestBacking backing, Figure size = Figure(5000), Figure mapped = {}) {
  return GuestPart(Status(), {.size = size, .backing = backing, .mapped = mapped});
}

TEST(ProcessMemory, TheGuestsPart) {
  EXPECT_EQ(Part(kAnonymous), Figure(4500));
  EXPECT_EQ(Part(kSharedMemory), Figure(500));
  EXPECT_EQ(Part(kFiles), Figure(4700));
  EXPECT_EQ(Part(kAnonymous, Figure()), Figure(4500)) << "of unknown size";
  for (const GuestBacking backing : {kAnonymous, kSharedMemory, kFiles})
    EXPECT_EQ(Part(backing, Figure(100)), Figure(100)) << "at most its size";
}

TEST(ProcessMemory, HugePagesAreTheGuests) {
  ProcessStatus status = Status();
  status.hugePages = Figure(2048);
  EXPECT_EQ(GuestPart(status, {.size = Figure(5000), .backing = kSharedMemory, .mapped = {}}), Figure(2548));
  EXPECT_EQ(GuestPart(status, {.size = Figure(9000), .backing = kAnonymous, .mapped = {}}), Figure(6548));
  const GuestMemory guest = {.size = Figure(5000), .backing = kHugetlb, .mapped = {}};
  EXPECT_EQ(GuestPart(status, guest), Figure(2048)) << "shared memory is the monitor's";
  EXPECT_EQ(VmOverhead(status, guest), Figure(4700 + 30));
}

TEST(ProcessMemory, KvmsCountIsALowerBound) {
  const auto part = [](uint64_t mapped) { return Part(kAnonymous, Figure(5000), Figure(mapped)); };
  EXPECT_EQ(part(3500), Figure(3500));
  EXPECT_EQ(part(10), Figure(3000)) << "the monitor itself has at most 1000 KB";
  EXPECT_EQ(part(4600), Figure(4500)) << "at most what the process has";
  EXPECT_EQ(Part(kAnonymous, Figure(5000), Figure::Unreadable()), Figure(4500));
  EXPECT_EQ(Part(kAnonymous, Figure(), Figure(10)), Figure(10)) << "of unknown size";
  EXPECT_EQ(Part(kSharedMemory, Figure(5000), Figure(10)), Figure(500)) << "exact without it";
  EXPECT_EQ(Part(kFiles, Figure(5000), Figure(10)), Figure(4700));
}

TEST(ProcessMemory, KernelsThatDoNotTellTheParts) {
  ProcessStatus status = Status();
  status.anonymous = status.sharedMemory = Figure();
  for (const GuestBacking backing : {kAnonymous, kSharedMemory, kFiles}) {
    EXPECT_EQ(GuestPart(status, {.size = Figure(5000), .backing = backing, .mapped = {}}), Figure(4700));
  }
}

TEST(ProcessMemory, Overhead) {
  EXPECT_EQ(VmOverhead(Status(), {.size = Figure(5000), .backing = kSharedMemory, .mapped = {}}), Figure(4200 + 30));
  EXPECT_EQ(VmOverhead(Status(), {.size = Figure(5000), .backing = kAnonymous, .mapped = Figure(10)}),
            Figure(1700 + 30));
}

}  // namespace
}  // namespace platkit
