// Keys that were chosen to collide in the index.
#include <algorithm>

#include "tests/platkit/snapshot/colliding_keys.h"
#include "tests/platkit/snapshot/small_host.h"

namespace platkit::snapshot {
namespace {

class Collisions : public testing::Test {
 protected:
  HVC_ReturnStatus Write(size_t count) {
    SnapshotWriter writer;
    AddSmallHost(writer);
    for (const std::string &key : CollidingKeys("/", count))
      EXPECT_EQ(writer.Add(key, ValueType::kRecord, {}), HVC_OK);
    return writer.Write(scratch_.Path("host"));
  }

  Scratch scratch_;
};

TEST(CollidingKeys, HaveTheSameHash) {
  std::vector<std::string> keys = CollidingKeys("/", 64);
  EXPECT_EQ(keys.size(), 64u);
  for (const std::string &key : keys)
    EXPECT_EQ(Hash(key), Hash(keys[0])) << key;
  std::ranges::sort(keys);
  EXPECT_EQ(std::ranges::adjacent_find(keys), keys.end());
}

TEST_F(Collisions, AFewAreHarmless) {
  ASSERT_EQ(Write(kMaxRun / 2), HVC_OK);
  SnapshotFile file;
  ASSERT_EQ(file.Open(scratch_.Path("host").c_str()), HVC_OK);
  EXPECT_FALSE(file.HasLongRun());
  Value value;
  for (const std::string &key : CollidingKeys("/", kMaxRun / 2))
    EXPECT_EQ(file.Find(key, value), HVC_OK);
}

TEST_F(Collisions, TheWriterRefusesMany) {
  EXPECT_EQ(Write(2 * kMaxRun), HVC_LIMIT_EXCEEDED);
  EXPECT_TRUE(scratch_.Names().empty());
}

// Fills the last slots of a table, so that the run of slots continues at the start of the table.
TEST_F(Collisions, ARunThatContinuesAtTheStartOfTheTable) {
  for (const size_t count : {kMaxRun, kMaxRun + 1}) {
    // All keys are in one table, which gets 2 * count slots.
    std::vector<std::string> keys;
    for (uint32_t i = 0; keys.size() < count; ++i) {
      std::string key = "/" + std::to_string(i);
      const uint32_t hash = Hash(key);
      const uint32_t slot = hash / kTables % static_cast<uint32_t>(2 * count);
      if (hash % kTables == 7 && slot >= 2 * count - 30) keys.push_back(std::move(key));
    }
    for (const std::string_view key : {kVersionKey, kIndexCheckKey, kBuildKey, kHostKey, kSignatureKey, kTimeKey})
      ASSERT_NE(Hash(key) % kTables, 7u) << key;
    SnapshotWriter writer;
    for (const std::string &key : keys)
      ASSERT_EQ(writer.Add(key, ValueType::kRecord, {}), HVC_OK);
    EXPECT_EQ(writer.Write(scratch_.Path("run")), count > kMaxRun ? HVC_LIMIT_EXCEEDED : HVC_OK) << count;

    std::ranges::sort(keys);
    WriteWithoutLimit(scratch_.Path("run"), keys);
    SnapshotFile file;
    ASSERT_EQ(file.Open(scratch_.Path("run").c_str()), HVC_OK);
    EXPECT_EQ(file.HasLongRun(), count > kMaxRun) << count;
    Value value;
    const auto isLost = [&](const std::string &key) { return file.Find(key, value) == HVC_SNAPSHOT_DAMAGED; };
    EXPECT_EQ(std::ranges::count_if(keys, isLost), 0);
  }
}

TEST_F(Collisions, ALookUpIsBounded) {
  std::vector<std::string> keys = CollidingKeys("/", 1 << 16);
  std::ranges::sort(keys);
  WriteWithoutLimit(scratch_.Path("host"), keys);
  SnapshotFile file;
  ASSERT_EQ(file.Open(scratch_.Path("host").c_str()), HVC_OK);
  EXPECT_TRUE(file.HasLongRun());
  size_t found = 0;
  Value value;
  for (const std::string &key : keys) {
    const HVC_ReturnStatus status = file.Find(key, value);
    EXPECT_TRUE(status == HVC_OK || status == HVC_SNAPSHOT_DAMAGED) << status;
    if (status == HVC_OK) ++found;
  }
  EXPECT_GT(found, kMaxRun / 2);
  EXPECT_LE(found, kMaxRun + 1);
}

}  // namespace
}  // namespace platkit::snapshot
