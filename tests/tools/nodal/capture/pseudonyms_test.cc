#include "tools/nodal/capture/pseudonyms.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platkit/node_ref.h"
#include "platkit/records.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/tree/instances.h"

namespace nodal {
namespace {

PseudonymKey KeyOf(char letter) {
  PseudonymKey::Bytes bytes;
  bytes.fill(static_cast<unsigned char>(letter));
  return PseudonymKey(bytes);
}

template <typename Record>
void Replace(Pseudonyms &names, platkit::NodeRef<Record> node, Record &record) {
  names.Replace(*node->record, std::as_writable_bytes(std::span(&record, 1)));
}

// A key must give the same pseudonyms in every version. The expected digests are BLAKE2b, computed by another tool.
TEST(Pseudonyms, OfAKeyNeverChange) {
  Pseudonyms names(KeyOf('k'));
  EXPECT_EQ(names.Of("web-01"), "name-83r48byehznv");
  EXPECT_EQ(names.Of("web-01", 7), "83r48by");
  EXPECT_EQ(names.Of("b81d4c36-7e52-4f0b-8a49-2c90d7e4f502"), "4cd8c4d6-11ab-0559-1258-376df86cc261");
}

TEST(Pseudonyms, DependOnNameAndKey) {
  Pseudonyms a(KeyOf('a')), again(KeyOf('a')), b(KeyOf('b'));
  Pseudonyms unknown(PseudonymKey::Random()), other(PseudonymKey::Random());
  EXPECT_EQ(a.Of("web-01"), again.Of("web-01"));
  EXPECT_NE(a.Of("web-01"), a.Of("web-02"));
  EXPECT_NE(a.Of("web-01"), b.Of("web-01"));
  EXPECT_EQ(unknown.Of("web-01"), unknown.Of("web-01"));
  EXPECT_NE(unknown.Of("web-01"), other.Of("web-01"));
}

TEST(Pseudonyms, Forms) {
  Pseudonyms names(KeyOf('k'));
  EXPECT_EQ(names.Of(""), "");
  EXPECT_EQ(names.Of("prod-io-", 7).size(), 7u);
  EXPECT_EQ(names.Of(std::string(300, 'x')).size(), names.Of("x").size());
  const std::string uuid = names.Of("B81D4C36-7e52-4f0b-8a49-2c90d7e4f502");
  ASSERT_EQ(uuid.size(), 36u);
  for (size_t i = 0; i < uuid.size(); ++i)
    EXPECT_EQ(uuid[i] == '-', i == 8 || i == 13 || i == 18 || i == 23) << uuid;
  EXPECT_TRUE(names.Of("b81d4c36-7e52-4f0b-8a49-2c90d7e4f502", 35).starts_with("name-"));
}

TEST(Pseudonyms, OfInstances) {
  Pseudonyms names(KeyOf('k'));
  EXPECT_EQ(names.Of("buddy", TextArgument("memmap-00-lo")).text, "memmap-00-lo");
  EXPECT_EQ(names.Of("buddy", TextArgument("heap-large")).text, names.Of("heap-large"));
  EXPECT_EQ(names.Of("remapType", TextArgument("secret")).text, names.Of("secret"));
  EXPECT_EQ(names.Of("group", IntArgument(7)), IntArgument(7));
  EXPECT_EQ(names.Of("heap", TextArgument("numa")).text, names.Of("numa"));
}

// Reports and verify take the memory node from the name.
TEST(Pseudonyms, OfBuddyAllocators) {
  Pseudonyms names(KeyOf('k'));
  for (const char *name : {"memmap-07-secret", "memmap-12-", "memmapsecret", "memmap--3", "memmap-123456789012-lo"}) {
    const std::string pseudonym = names.Of("buddy", TextArgument(name)).text;
    EXPECT_EQ(MemNodeOf(pseudonym), MemNodeOf(name)) << pseudonym;
    EXPECT_EQ(pseudonym.find("secret"), std::string::npos);
    EXPECT_NE(pseudonym, names.Of("buddy", TextArgument(name + std::string("x"))).text);
  }
  const std::string digits = names.Of("memmap-07-secret").substr(5);
  EXPECT_EQ(names.Of("buddy", TextArgument("memmap-07-secret")).text, "memmap-07-" + digits);
}

TEST(Pseudonyms, OfRecords) {
  Pseudonyms names(KeyOf('k'));
  HeapStatsRecord heap;
  std::memset(&heap, 'x', sizeof heap);
  std::memcpy(heap.name, "net\0secret", 11);
  Replace(names, platkit::nodes::system_heaps_stats, heap);
  const std::string pseudonym = names.Of("net");
  EXPECT_EQ(std::string(heap.name, sizeof heap.name), pseudonym + std::string(sizeof heap.name - pseudonym.size(), 0));
  EXPECT_EQ(heap.unread_37[0], 0);
  EXPECT_EQ(heap.dynGrow, 'x');
}

// A known tag of a group is kept, and the bytes after its terminator are cleared. An unknown tag is replaced.
TEST(Pseudonyms, OfTags) {
  Pseudonyms names(KeyOf('k'));
  GroupTagRecord tag = {.tag = {'v', 'm', 0, 's', 'e', 'c', 'r', 'e'}};
  Replace(names, platkit::nodes::sched_groups_groupTag, tag);
  EXPECT_EQ(std::string(tag.tag, sizeof tag.tag), std::string("vm\0\0\0\0\0\0", 8));
  std::memcpy(tag.tag, "unending", 8);
  Replace(names, platkit::nodes::sched_groups_groupTag, tag);
  EXPECT_EQ(std::string(tag.tag, sizeof tag.tag), names.Of("unending", 7) + std::string(1, 0));
}

// The pseudonyms of both names start with the same seven digits.
TEST(Pseudonyms, TwoNamesNeverShareOne) {
  Pseudonyms names(KeyOf('k'));
  EXPECT_EQ(names.Of("tag-489064", 7), "rvvww24");
  EXPECT_EQ(names.Of("tag-489064", 7), "rvvww24");
  EXPECT_NE(names.Of("tag-489064"), names.Of("tag-546732"));
  try {
    names.Of("tag-546732", 7);
    FAIL();
  } catch (const Failure &failure) {
    EXPECT_STREQ(failure.what(), "rvvww24: two names have this pseudonym; use another key");
  }
}

}  // namespace
}  // namespace nodal
