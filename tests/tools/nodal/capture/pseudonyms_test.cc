#include "tools/nodal/capture/pseudonyms.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platkit/records.h"

namespace nodal {
namespace {

// A key must give the same pseudonyms in every version. The expected digests are BLAKE2b, computed by another tool.
TEST(Pseudonyms, OfAKeyNeverChange) {
  const Pseudonyms names("secret");
  EXPECT_EQ(names.Of("web-01"), "name-nujzv28yua");
  EXPECT_EQ(names.Of("web-01", 8), "nujzv28y");
  EXPECT_EQ(names.Of("b81d4c36-7e52-4f0b-8a49-2c90d7e4f502"), "f9d7b3e4-9bf1-66e9-2ed2-33f4b40f8f2e");
}

TEST(Pseudonyms, DependOnNameAndKey) {
  const Pseudonyms a("a"), again("a"), b("b"), unknown(""), other("");
  EXPECT_EQ(a.Of("web-01"), again.Of("web-01"));
  EXPECT_NE(a.Of("web-01"), a.Of("web-02"));
  EXPECT_NE(a.Of("web-01"), b.Of("web-01"));
  EXPECT_EQ(unknown.Of("web-01"), unknown.Of("web-01"));
  EXPECT_NE(unknown.Of("web-01"), other.Of("web-01"));
  EXPECT_TRUE(a.Of("web-01").starts_with("name-"));
}

TEST(Pseudonyms, Forms) {
  const Pseudonyms names("key");
  EXPECT_EQ(names.Of(""), "");
  EXPECT_EQ(names.Of("host"), "host");
  EXPECT_EQ(names.Of("prod-io-", 7).size(), 7u);
  const std::string uuid = names.Of("b81d4c36-7e52-4f0b-8a49-2c90d7e4f502");
  ASSERT_EQ(uuid.size(), 36u);
  EXPECT_NE(uuid, "b81d4c36-7e52-4f0b-8a49-2c90d7e4f502");
  for (size_t i = 0; i < uuid.size(); ++i)
    EXPECT_EQ(uuid[i] == '-', i == 8 || i == 13 || i == 18 || i == 23) << uuid;
}

TEST(Pseudonyms, InstancesThatReportsParseStay) {
  const Pseudonyms names("key");
  EXPECT_EQ(names.Of("buddy", TextArgument("memmap-00-lo")).text, "memmap-00-lo");
  EXPECT_EQ(names.Of("state", TextArgument("high")).text, "high");
  EXPECT_EQ(names.Of("group", IntArgument(7)), IntArgument(7));
  EXPECT_EQ(names.Of("heap", TextArgument("net")).text, names.Of("net"));
}

TEST(Pseudonyms, OfRecords) {
  const Pseudonyms names("key");
  HeapStatsRecord heap = {};
  std::memset(&heap, 'x', sizeof heap);
  std::memcpy(heap.name, "net\0secret", 11);
  names.Replace(*platkit::FindNode("system_heaps_stats")->record, std::as_writable_bytes(std::span(&heap, 1)));
  EXPECT_EQ(std::string(heap.name, sizeof heap.name), names.Of("net") + std::string(sizeof heap.name - 15, '\0'));
  EXPECT_EQ(heap.unread_37[0], 0);
  EXPECT_EQ(heap.dynGrow, 'x');
}

}  // namespace
}  // namespace nodal
