// A snapshot that is truncated or overwritten while it is read. Each read returns the written value or a failure.
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "tests/platkit/scratch.h"
#include "tests/platkit/snapshot/small_host.h"
#include "tests/support/access_trap.h"

namespace platkit::snapshot {
namespace {

using testing_support::AccessTrap;

class OpenFile {
 public:
  explicit OpenFile(const std::string &path) : fd_(open(path.c_str(), O_RDWR | O_CLOEXEC)) { EXPECT_GE(fd_, 0); }
  ~OpenFile() { close(fd_); }
  OpenFile(const OpenFile &) = delete;
  OpenFile &operator=(const OpenFile &) = delete;

  void Truncate(size_t size) const { EXPECT_EQ(ftruncate(fd_, static_cast<off_t>(size)), 0); }
  void Write(std::string_view bytes, size_t position = 0) const {
    const auto written = pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(position));
    EXPECT_EQ(written, static_cast<ssize_t>(bytes.size()));
  }

 private:
  int fd_;
};

void ExpectPartOfSmallHost(const SmallHost &host) {
  EXPECT_TRUE(!host.groupName || host.groupName == kSmallHost.groupName);
  EXPECT_TRUE(!host.numVMs || host.numVMs == kSmallHost.numVMs);
  EXPECT_TRUE(!host.groups || host.groups == kSmallHost.groups);
  EXPECT_TRUE(!host.heaps || host.heaps == kSmallHost.heaps);
}

HVC_ReturnStatus ReadThrough(SnapshotFile &file) {
  SnapshotFile::Cursor cursor(file);
  HVC_ReturnStatus status;
  Value value;
  while ((status = cursor.Next()) == HVC_OK)
    static_cast<void>(cursor.Read(value));
  static_cast<void>(file.TablesAreWhole());
  static_cast<void>(file.CountUsedSlots());
  static_cast<void>(file.HasLongRun());
  return status;
}

// A small host in a file of many pages, so that each part of the file has pages of its own.
class Cut : public testing::Test {
 protected:
  Cut() {
    SnapshotWriter writer;
    AddSmallHost(writer);
    const std::vector<int64_t> members(6000);  // 12 pages
    EXPECT_EQ(writer.AddIntegers("/sched/groups/1/members/groups", members), HVC_OK);
    for (int i = 0; i < 2000; ++i)
      EXPECT_EQ(writer.AddFailure("/sched/groups/" + std::to_string(i) + "/groupFlags", HVC_NO_PERMISSION), HVC_OK);
    EXPECT_EQ(writer.Write(path_), HVC_OK);
    whole_ = Contents(path_);
  }

  // The position of the record with this key.
  size_t Record(std::string_view key) const { return whole_.find(key) - kRecordHead; }

  // The position of the slot that refers to the record.
  size_t Slot(std::string_view key) const {
    const auto position = static_cast<uint32_t>(Record(key));
    const uint32_t slot[2] = {Hash(key), position};
    return whole_.find(std::string_view(reinterpret_cast<const char *>(slot), sizeof slot), position);
  }

  // Truncates the file after it is opened and before `key` is looked up.
  HVC_ReturnStatus FindAfterCut(std::string_view key, size_t size) {
    const std::string path = scratch_.Write("cut", whole_);
    SnapshotFile file;
    EXPECT_EQ(file.Open(path.c_str()), HVC_OK);
    OpenFile(path).Truncate(size);
    Value value;
    const HVC_ReturnStatus status = file.Find(key, value);
    static_cast<void>(ReadThrough(file));
    return status;
  }

  Scratch scratch_;
  const std::string path_ = scratch_.Path("whole");
  std::string whole_;
};

TEST_F(Cut, BeforeEachPartOfALookUp) {
  const std::string_view key = "/sched/groups/1/members/groups";
  EXPECT_EQ(FindAfterCut(key, whole_.size()), HVC_OK);
  EXPECT_EQ(FindAfterCut(key, Slot(key)), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(FindAfterCut(key, Record(key) + 4096), HVC_SNAPSHOT_DAMAGED) << "within the value";
  EXPECT_EQ(FindAfterCut(key, Record(key)), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(FindAfterCut(key, 2048), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(FindAfterCut(key, 0), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(FindAfterCut("/absent", 0), HVC_SNAPSHOT_DAMAGED);
}

TEST_F(Cut, AtEveryPage) {
  for (size_t size = 0; size < whole_.size(); size += 2048) {
    const std::string path = scratch_.Write("cut", whole_);
    SnapshotFile file;
    ASSERT_EQ(file.Open(path.c_str()), HVC_OK);
    std::unique_ptr<Source> source;
    ASSERT_EQ(OpenSnapshot(path.c_str(), source), HVC_OK);
    OpenFile(path).Truncate(size);
    ExpectPartOfSmallHost(ReadSmallHost(*source, {HVC_OK, HVC_SNAPSHOT_DAMAGED}));
    static_cast<void>(ReadThrough(file));
    // Bytes beyond the end, but in the last page, read as zeros without a fault.
    const bool isPageLost = size + 4096 <= whole_.size();
    EXPECT_TRUE(!isPageLost || file.status() == HVC_SNAPSHOT_DAMAGED) << size;
  }
}

TEST_F(Cut, AFileThatGrowsAgain) {
  std::unique_ptr<Source> source;
  ASSERT_EQ(OpenSnapshot(path_.c_str(), source), HVC_OK);
  const OpenFile file(path_);
  file.Truncate(0);
  file.Truncate(whole_.size());
  EXPECT_EQ(ReadSmallHost(*source, {HVC_SNAPSHOT_DAMAGED}), SmallHost());
  file.Write(whole_);
  EXPECT_EQ(ReadSmallHost(*source), kSmallHost);
}

// After a read beyond the end, every operation fails, even if the file is whole again.
TEST_F(Cut, AMarkedFileStaysDamaged) {
  SnapshotFile file;
  ASSERT_EQ(file.Open(path_.c_str()), HVC_OK);
  SnapshotFile::Cursor cursor(file);
  ASSERT_EQ(cursor.Next(), HVC_OK);
  const OpenFile changed(path_);
  changed.Truncate(0);
  Value value;
  ASSERT_EQ(file.Find("/system/heaps", value), HVC_SNAPSHOT_DAMAGED);
  changed.Write(whole_);
  EXPECT_EQ(file.Find("/system/heaps", value), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(cursor.Read(value), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(cursor.Next(), HVC_SNAPSHOT_DAMAGED);
  SnapshotFile again;
  EXPECT_EQ(again.Open(path_.c_str()), HVC_OK);
}

// Opens and reads the snapshot of a small host, and changes the file before a chosen access.
class Change : public testing::Test {
 protected:
  Change() {
    if (!AccessTrap::kIsSupported) return;
    WriteSmallHost(path_);
    whole_ = Contents(path_);
  }

  // Calls `change` before access `chosen`. Returns the number of accesses.
  template <typename Act>
  size_t ReadWithChange(size_t chosen, Act change) {
    scratch_.Write("host", whole_);
    const OpenFile file(path_);
    AccessTrap trap([&](size_t access) {
      if (access != chosen) return;
      change(file);
      trap.Stop();
    });
    std::unique_ptr<Source> source;
    const HVC_ReturnStatus status = OpenSnapshot(path_.c_str(), source);
    EXPECT_TRUE(status == HVC_OK || status == HVC_SNAPSHOT_DAMAGED || status == HVC_NOT_A_SNAPSHOT) << status;
    accessesOfOpening_ = trap.accesses();
    if (status == HVC_OK) {
      // A lookup in a table of no slots finds nothing. A truncated file can look as if it had such a table.
      ExpectPartOfSmallHost(ReadSmallHost(*source, {HVC_OK, HVC_NOT_FOUND, HVC_SNAPSHOT_DAMAGED}));
    }
    return trap.accesses();
  }

  // Changes the file before each access in turn. Of the accesses that open the file, only about 50 are tried.
  template <typename Act>
  void ReadWithEachChange(Act change) {
    if (!AccessTrap::kIsSupported) GTEST_SKIP() << "this architecture has no single steps";
    const size_t accesses = ReadWithChange(SIZE_MAX, change);
    const size_t opening = accessesOfOpening_;
    ASSERT_GT(opening, 50u);
    ASSERT_GT(accesses, opening);
    for (size_t access = 0; access < accesses; access += access < opening ? 1 + opening / 50 : 1) {
      ReadWithChange(access, change);
      if (HasFailure()) FAIL() << "at access " << access;
    }
  }

  Scratch scratch_;
  const std::string path_ = scratch_.Path("host");
  std::string whole_;
  size_t accessesOfOpening_ = 0;
};

TEST_F(Change, CutBeforeEachAccess) {
  ReadWithEachChange([](const OpenFile &file) { file.Truncate(0); });
}

TEST_F(Change, ZerosBeforeEachAccess) {
  const std::string zeros(whole_.size(), '\0');
  ReadWithEachChange([&](const OpenFile &file) { file.Write(zeros); });
}

TEST_F(Change, OnesBeforeEachAccess) {
  const std::string ones(whole_.size(), '\xff');
  ReadWithEachChange([&](const OpenFile &file) { file.Write(ones); });
}

TEST_F(Change, TheLastNulOfATextListVanishes) {
  const size_t nul = whole_.find("a/b") + 3;
  ReadWithEachChange([&](const OpenFile &file) { file.Write("x", nul); });
}

TEST_F(Change, LengthsGrow) {
  const size_t head = whole_.find("/system/heaps") - kRecordHead;
  ReadWithEachChange([&](const OpenFile &file) { file.Write(std::string(8, '\x7f'), head); });
}

// A byte of a value changes all the time. A read returns only the value that matches its checksum.
TEST_F(Change, AnotherThreadOverwritesAValue) {
  WriteSmallHost(path_);
  const OpenFile file(path_);
  const size_t position = Contents(path_).find("a/b");
  std::unique_ptr<Source> source;
  ASSERT_EQ(OpenSnapshot(path_.c_str(), source), HVC_OK);
  std::atomic<bool> isDone = false;
  std::thread writer([&] {
    while (!isDone) {
      file.Write("z", position);
      file.Write("a", position);
    }
  });
  for (int i = 0; i < 5000; ++i)
    ExpectPartOfSmallHost(ReadSmallHost(*source, {HVC_OK, HVC_SNAPSHOT_DAMAGED}));
  isDone = true;
  writer.join();
  EXPECT_EQ(ReadSmallHost(*source), kSmallHost);
}

}  // namespace
}  // namespace platkit::snapshot
