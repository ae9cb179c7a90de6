// Truncated and overwritten snapshots. Whatever the damage, a read returns the written value or a failure.
#include <cdb.h>

#include "tests/platkit/scratch.h"
#include "tests/platkit/snapshot/small_host.h"

namespace platkit::snapshot {
namespace {

class Damage : public testing::Test {
 protected:
  Damage() {
    WriteSmallHost(scratch_.Path("whole"));
    whole_ = Contents(scratch_.Path("whole"));
  }

  // Opens and reads the bytes as a snapshot; returns the status of opening it.
  HVC_ReturnStatus Check(const std::string &bytes) {
    std::unique_ptr<Source> source;
    const HVC_ReturnStatus status = OpenSnapshot(scratch_.Write("damaged", bytes).c_str(), source);
    if (status == HVC_OK) {
      // A value that was not written is reported as damaged, never as absent.
      const SmallHost host = ReadSmallHost(*source, {HVC_OK, HVC_SNAPSHOT_DAMAGED});
      EXPECT_TRUE(!host.groupName || host.groupName == kSmallHost.groupName);
      EXPECT_TRUE(!host.numVMs || host.numVMs == kSmallHost.numVMs);
      EXPECT_TRUE(!host.groups || host.groups == kSmallHost.groups);
      EXPECT_TRUE(!host.heaps || host.heaps == kSmallHost.heaps);
      anythingLost_ = host != kSmallHost;
    }
    if (status == HVC_OK) ReadThrough();
    return status;
  }

  // Reads the whole file, to check that this terminates.
  void ReadThrough() {
    SnapshotFile file;
    ASSERT_EQ(file.Open(scratch_.Path("damaged").c_str()), HVC_OK);
    static_cast<void>(file.TablesAreWhole());
    static_cast<void>(file.CountUsedSlots());
    SnapshotFile::Cursor cursor(file);
    Value value;
    while (cursor.Next() == HVC_OK)
      static_cast<void>(cursor.Read(value));
  }

  // The file with one bit of byte `i` flipped. Which bit depends on `i`.
  std::string Flipped(size_t i) const {
    std::string bytes = whole_;
    bytes[i] = static_cast<char>(static_cast<unsigned char>(bytes[i]) ^ 1u << i % 8);
    return bytes;
  }

  uint32_t EndOfRecords() const { return cdb_unpack(reinterpret_cast<const unsigned char *>(whole_.data())); }

  Scratch scratch_;
  std::string whole_;
  bool anythingLost_ = false;
};

TEST_F(Damage, CutAtEveryLength) {
  ASSERT_EQ(Check(whole_), HVC_OK);
  ASSERT_FALSE(anythingLost_);
  // A file truncated before the version is not recognized as a snapshot.
  const size_t identified = 2048 + 8 + kVersionKey.size() + 1;
  for (size_t length = 0; length < whole_.size(); ++length) {
    ASSERT_EQ(Check(whole_.substr(0, length)), length < identified ? HVC_NOT_A_SNAPSHOT : HVC_SNAPSHOT_DAMAGED)
        << length;
  }
}

TEST_F(Damage, ContinuedBeyondItsEnd) {
  EXPECT_EQ(Check(whole_ + '\0'), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(Check(whole_ + std::string(8, '\0')), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(Check(whole_ + whole_), HVC_SNAPSHOT_DAMAGED);
}

TEST_F(Damage, EveryByteOfTheTableOfContents) {
  for (size_t i = 0; i < 2048; ++i) {
    ASSERT_EQ(Check(Flipped(i)), HVC_SNAPSHOT_DAMAGED) << i;
  }
}

TEST_F(Damage, EveryByteOfTheRecords) {
  for (size_t i = 2048; i < EndOfRecords(); ++i) {
    const HVC_ReturnStatus status = Check(Flipped(i));
    ASSERT_TRUE(status != HVC_OK || anythingLost_) << "byte " << i << " may be anything";
  }
}

TEST_F(Damage, EveryByteOfTheHashTables) {
  for (size_t i = EndOfRecords(); i < whole_.size(); ++i) {
    // Overwriting an empty slot does no harm.
    const HVC_ReturnStatus status = Check(Flipped(i));
    ASSERT_TRUE(status == HVC_OK || status == HVC_SNAPSHOT_DAMAGED) << i;
  }
}

// A key whose length extends into its value costs no more time than the longest valid key.
TEST_F(Damage, AKeyThatIsTooLong) {
  SnapshotWriter writer;
  AddSmallHost(writer);
  ASSERT_EQ(writer.AddTexts("/system/buddy", std::vector<std::string>{std::string(9000, 'x')}), HVC_OK);
  ASSERT_EQ(writer.Write(scratch_.Path("long")), HVC_OK);
  std::string bytes = Contents(scratch_.Path("long"));
  const size_t head = bytes.find("/system/buddy") - 8;
  const auto length = [&](size_t at) { return reinterpret_cast<unsigned char *>(&bytes[at]); };
  cdb_pack(13 + 8000, length(head));
  cdb_pack(cdb_unpack(length(head + 4)) - 8000, length(head + 4));
  std::unique_ptr<Source> source;
  ASSERT_EQ(OpenSnapshot(scratch_.Write("damaged", bytes).c_str(), source), HVC_OK);
  EXPECT_EQ(Reading("/system/buddy").List(*source), HVC_SNAPSHOT_DAMAGED);
  EXPECT_EQ(Reading("/system/heaps").List(*source), HVC_OK);
  SnapshotFile file;
  ASSERT_EQ(file.Open(scratch_.Path("damaged").c_str()), HVC_OK);
  SnapshotFile::Cursor cursor(file);
  HVC_ReturnStatus status = HVC_OK;
  while (status == HVC_OK)
    status = cursor.Next();
  EXPECT_EQ(status, HVC_SNAPSHOT_DAMAGED);
}

TEST_F(Damage, ManyBytesAtOnce) {
  uint32_t state = 12345;
  const auto random = [&state] { return state = state * 1664525 + 1013904223, state >> 8; };
  for (int round = 0; round < 500; ++round) {
    std::string bytes = whole_;
    for (uint32_t n = random() % 64; n > 0; --n)
      bytes[2048 + random() % (bytes.size() - 2048)] = static_cast<char>(random());
    Check(bytes);
  }
}

}  // namespace
}  // namespace platkit::snapshot
