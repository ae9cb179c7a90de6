#include "tests/platkit/scratch.h"
#include "tests/platkit/snapshot/small_host.h"

namespace platkit::snapshot {
namespace {

class Read : public testing::Test {
 protected:
  std::unique_ptr<Source> Opened(SnapshotWriter &writer) {
    EXPECT_EQ(writer.AddHeader(SmallHeader()), HVC_OK);
    EXPECT_EQ(writer.Write(scratch_.Path("file")), HVC_OK);
    std::unique_ptr<Source> source;
    EXPECT_EQ(OpenSnapshot(scratch_.Path("file").c_str(), source), HVC_OK);
    return source;
  }

  static std::span<const std::byte> Bytes(std::string_view text) { return std::as_bytes(std::span(text)); }

  Scratch scratch_;
};

TEST_F(Read, WhatWasWritten) {
  WriteSmallHost(scratch_.Path("small"));
  std::unique_ptr<Source> source;
  ASSERT_EQ(OpenSnapshot(scratch_.Path("small").c_str(), source), HVC_OK);
  EXPECT_EQ(ReadSmallHost(*source), kSmallHost);
}

TEST_F(Read, WhatIsNotThereIsNotFound) {
  SnapshotWriter writer;
  const auto source = Opened(writer);
  GroupNameRecord record;
  EXPECT_EQ(Reading("/sched/groups/1/groupName").Get(*source, &record), HVC_NOT_FOUND);
  EXPECT_EQ(Reading("/system/heaps").List(*source), HVC_NOT_FOUND);
  HeapStatsRecord heap;
  EXPECT_EQ(Reading("/system/heaps/" + std::string(5000, 'x') + "/stats").Get(*source, &heap), HVC_NOT_FOUND);
}

TEST_F(Read, WhatCouldNotBeReadFailsWithItsStatus) {
  SnapshotWriter writer;
  ASSERT_EQ(writer.AddFailure("/sched/groups/1/groupName", HVC_NO_PERMISSION), HVC_OK);
  ASSERT_EQ(writer.AddFailure("/system/heaps", 4000000000), HVC_OK);
  ASSERT_EQ(writer.AddFailure("/system/buddy", HVC_OK), HVC_OK);
  ASSERT_EQ(writer.AddRecord("failed:/hardware/nvd/dimm", Bytes("three")), HVC_OK);
  ASSERT_EQ(writer.AddTexts("failed:/hardware/pci/seg", {}), HVC_OK);
  const auto source = Opened(writer);
  GroupNameRecord record;
  EXPECT_EQ(Reading("/sched/groups/1/groupName").Get(*source, &record), HVC_NO_PERMISSION);
  EXPECT_EQ(Reading("/system/heaps").List(*source), 4000000000);
  for (const char *path : {"/system/buddy", "/hardware/nvd/dimm", "/hardware/pci/seg"})
    EXPECT_EQ(Reading(path).List(*source), HVC_SNAPSHOT_DAMAGED) << path;
}

TEST_F(Read, RecordOfAnotherSize) {
  SnapshotWriter writer;
  for (const char *size : {"0", "3", "5"}) {
    const std::string path = std::string("/sched/groups/") + size + "/groupFlags";
    ASSERT_EQ(writer.AddRecord(path, Bytes(std::string_view("12345").substr(0, static_cast<size_t>(*size - '0')))),
              HVC_OK);
  }
  const auto source = Opened(writer);
  GroupFlagsRecord flags;
  for (const char *path : {"/sched/groups/0/groupFlags", "/sched/groups/3/groupFlags", "/sched/groups/5/groupFlags"})
    EXPECT_EQ(Reading(path).Get(*source, &flags), HVC_WRONG_SIZE) << path;
}

TEST_F(Read, ValueOfAnotherKind) {
  SnapshotWriter writer;
  ASSERT_EQ(writer.AddIntegers("/system/heaps", std::vector<int64_t>{1}), HVC_OK);
  ASSERT_EQ(writer.AddTexts("/hardware/nvd/dimm", std::vector<std::string>{"one"}), HVC_OK);
  ASSERT_EQ(writer.Add("/sched/groups/0/groupFlags", ValueType::kHeader, Bytes("four")), HVC_OK);
  ASSERT_EQ(writer.Add("/sched/groups/0/members/groups", ValueType::kIntegers, Bytes("seven..")), HVC_OK);
  ASSERT_EQ(writer.Add("/system/buddy", ValueType::kTexts, Bytes("no terminator")), HVC_OK);
  const auto source = Opened(writer);
  GroupFlagsRecord flags;
  EXPECT_EQ(Reading("/sched/groups/0/groupFlags").Get(*source, &flags), HVC_SNAPSHOT_DAMAGED);
  for (const char *path : {"/system/heaps", "/hardware/nvd/dimm", "/sched/groups/0/members/groups", "/system/buddy"})
    EXPECT_EQ(Reading(path).List(*source), HVC_SNAPSHOT_DAMAGED) << path;
}

TEST_F(Read, EmptyAndLongLists) {
  SnapshotWriter writer;
  std::vector<int64_t> groups(100000);
  std::vector<std::string> heaps(50000);
  for (size_t i = 0; i < groups.size(); ++i)
    groups[i] = static_cast<int64_t>(i * i);
  for (size_t i = 0; i < heaps.size(); ++i)
    heaps[i] = std::to_string(i);
  ASSERT_EQ(writer.AddIntegers("/sched/groups/0/members/groups", groups), HVC_OK);
  ASSERT_EQ(writer.AddIntegers("/sched/groups/1/members/groups", {}), HVC_OK);
  ASSERT_EQ(writer.AddTexts("/system/heaps", heaps), HVC_OK);
  ASSERT_EQ(writer.AddTexts("/system/buddy", {}), HVC_OK);
  const auto source = Opened(writer);
  Reading longGroups("/sched/groups/0/members/groups"), noGroups("/sched/groups/1/members/groups");
  Reading longHeaps("/system/heaps"), noBuddies("/system/buddy");
  ASSERT_EQ(longGroups.List(*source), HVC_OK);
  ASSERT_EQ(longHeaps.List(*source), HVC_OK);
  EXPECT_EQ(noGroups.List(*source), HVC_OK);
  EXPECT_EQ(noBuddies.List(*source), HVC_OK);
  EXPECT_TRUE(noGroups.list().empty());
  EXPECT_TRUE(noBuddies.list().empty());
  ASSERT_EQ(longGroups.list().size(), groups.size());
  ASSERT_EQ(longHeaps.list().size(), heaps.size());
  for (size_t i = 0; i < groups.size(); ++i)
    ASSERT_EQ(longGroups.list()[i].integer, groups[i]);
  for (size_t i = 0; i < heaps.size(); ++i)
    ASSERT_EQ(longHeaps.list()[i].text(), heaps[i]);
}

}  // namespace
}  // namespace platkit::snapshot
