// Buddy allocators and memory nodes.
#include "platkit/linux/records/buddy_records.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

BuddyComprehensiveRecord Buddy(SavedHost &host, const char *name) {
  return host.ask().Record(nodes::system_buddy_comprehensive, {name});
}

using Names = std::vector<std::string>;

TEST(BuddyRecords, OnePerMemoryNodeAndKindOfZone) {
  SavedHost host("two-nodes.host");
  EXPECT_EQ(host.ask().Names(nodes::system_buddy), (Names{"memmap-00-lo", "memmap-00-hi", "memmap-01-hi"}));
  EXPECT_CELL(host.ask().Record(nodes::memory_memNodes, {0}).numaNode, 0u);
  EXPECT_CELL(host.ask().Record(nodes::memory_memNodes, {1}).numaNode, 2u);
  EXPECT_CELL(host.ask().Record(nodes::memory_memInfo).numNodes, 2u);
  for (const int64_t node : {int64_t{2}, int64_t{-1}, INT64_MAX}) {
    EXPECT_EQ(host.ask().Status(nodes::memory_memNodes, {node}), HVC_NOT_FOUND);
  }
}

TEST(BuddyRecords, FreeBuffers) {
  SavedHost host("two-nodes.host");
  const BuddyComprehensiveRecord low = Buddy(host, "memmap-00-lo");
  const uint32_t expected[] = {5, 4, 3, 2, 1, 0, 0, 0, 1, 3, 703};
  for (size_t k = 0; k < 19; ++k) {
    EXPECT_CELL(low.sizes[k].free, k < std::size(expected) ? expected[k] : 0) << k;
    EXPECT_CELL(low.sizes[k].used, 0u);
  }
  EXPECT_CELL(Buddy(host, "memmap-01-hi").sizes[0].free, 11u);
  for (const char *other : {"memmap-01-lo", "memmap-0-lo", "memmap-02-hi", ""}) {
    EXPECT_EQ(host.ask().Status(nodes::system_buddy_comprehensive, {other}), HVC_NOT_FOUND) << other;
  }
}

TEST(BuddyRecords, LargePagesStartAtALargerSize) {
  SavedHost host("64k-pages.host");
  host.Write("proc/buddyinfo", "Node 0, zone Normal 1 2 3 0 0 0 0 0 0 0 0 0 0 4 5 6 7\n");
  const BuddyComprehensiveRecord buddy = Buddy(host, "memmap-00-hi");
  EXPECT_CELL(buddy.sizes[3].free, 0u);
  EXPECT_CELL(buddy.sizes[4].free, 1u);
  EXPECT_CELL(buddy.sizes[17].free, 4u);
  EXPECT_CELL(buddy.sizes[18].free, 5u + 2 * 6 + 4 * 7) << "what is larger counts as several";
}

TEST(BuddyRecords, LinesOfAllKinds) {
  SavedHost host("two-nodes.host");
  const auto names = [&](std::string_view text) {
    host.Write("proc/buddyinfo", text);
    return host.ask().Names(nodes::system_buddy);
  };
  EXPECT_EQ(names(""), Names{});
  EXPECT_EQ(names("Node 0, zone\nNode x, zone Normal 1\nNode 5 zone Normal 1\nzone\n\nNode -1, zone DMA 1\n"), Names{});
  EXPECT_EQ(names("Node 99999999999, zone Normal 1\n"), Names{});
  EXPECT_EQ(names("Node 7, zone Normal 1\nNode 3, zone Movable 1\nNode 7, zone DMA 2\n"),
            (Names{"memmap-00-hi", "memmap-01-lo", "memmap-01-hi"}));
  names("Node 0, zone Normal 1 x 3\nNode 0, zone Normal 10 20 30\nNode 0, zone Movable 4 5 4294967295\n");
  const BuddyComprehensiveRecord buddy = Buddy(host, "memmap-00-hi");
  EXPECT_CELL(buddy.sizes[0].free, 5u) << "the first line of a zone counts";
  EXPECT_CELL(buddy.sizes[1].free, kNoFigure32);
  EXPECT_CELL(buddy.sizes[2].free, kNoFigure32) << "the sum does not fit";
  std::string many;
  for (int node = 0; node < 300; ++node)
    many += "Node " + std::to_string(node) + ", zone Normal 1\n";
  EXPECT_EQ(names(many).size(), 99u);
  EXPECT_EQ(names(many).back(), "memmap-98-hi");
  EXPECT_CELL(host.ask().Record(nodes::memory_memNodes, {299}).numaNode, 255u);
}

TEST(BuddyRecords, AFileThatCannotBeRead) {
  SavedHost host("two-nodes.host");
  Names names;
  host.Forbid("proc/buddyinfo");
  {
    OrdinaryUser user;
    EXPECT_EQ(host.ask().List(nodes::system_buddy, {}, names), HVC_NO_PERMISSION);
  }
  host.Remove("proc/buddyinfo");
  EXPECT_EQ(host.ask().List(nodes::system_buddy, {}, names), HVC_NOT_FOUND);
  EXPECT_EQ(host.ask().Status(nodes::memory_memInfo), HVC_NOT_FOUND);
}

}  // namespace
}  // namespace platkit
