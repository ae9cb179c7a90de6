// Pools of huge pages.
#include "platkit/linux/records/large_page_pool_records.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

LPoolStatsRecord Pool(SavedHost &host, int64_t node, const char *name) {
  return host.ask().Record(nodes::memory_lpage_nodeList_vmPools, {node, name});
}

using Names = std::vector<std::string>;

TEST(LargePagePoolRecords, OnePerNodeAndSize) {
  SavedHost host("two-nodes.host");
  EXPECT_EQ(host.ask().Names(nodes::memory_lpage_nodeList_vmPools, {0}), (Names{"hugepages-2MB", "hugepages-1GB"}));
  EXPECT_EQ(host.ask().Names(nodes::memory_lpage_nodeList_vmPools, {1}), Names{"hugepages-2MB"});
  EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrLPages, 10u);
  EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrFreeSPages, 4u * 512);
  EXPECT_CELL(Pool(host, 0, "hugepages-1GB").nrLPages, 2u * 512);
  EXPECT_CELL(Pool(host, 0, "hugepages-1GB").nrFreeSPages, 512u * 512);
  EXPECT_CELL(Pool(host, 1, "hugepages-2MB").nrLPages, 5u) << "of the second memory node, which is NUMA node 2";
  for (const char *other : {"hugepages-1GB", "hugepages-2048KB", "hugepages-2048kB", "hugepages-", "hugepages-MB",
                            "hugepages-02MB", "hugepages- 2MB", "hugepages-99999999999999999999GB",
                            "hugepages-17592186044416GB", "hugepages-0KB", "2MB", ""}) {
    EXPECT_EQ(host.ask().Status(nodes::memory_lpage_nodeList_vmPools, {1, other}), HVC_NOT_FOUND) << other;
  }
  Names names;
  EXPECT_EQ(host.ask().List(nodes::memory_lpage_nodeList_vmPools, {2}, names), HVC_NOT_FOUND);
  EXPECT_EQ(host.ask().Status(nodes::memory_lpage_nodeList_vmPools, {2, "hugepages-2MB"}), HVC_NOT_FOUND);
}

TEST(LargePagePoolRecords, SizesAndNames) {
  SavedHost host("two-nodes.host");
  const std::string folder = "sys/devices/system/node/node2/hugepages/hugepages-";
  for (const char *size : {"64kB", "32768kB", "16777216kB", "1536kB", "0kB", "xkB", "kB", "5"}) {
    host.Write(folder + size + "/nr_hugepages", "3\n");
    host.Write(folder + size + "/free_hugepages", "1\n");
  }
  EXPECT_EQ(host.ask().Names(nodes::memory_lpage_nodeList_vmPools, {1}),
            (Names{"hugepages-64KB", "hugepages-1536KB", "hugepages-2MB", "hugepages-32MB", "hugepages-16GB"}));
  EXPECT_CELL(Pool(host, 1, "hugepages-64KB").nrLPages, 0u) << "three are less than a large page";
  EXPECT_CELL(Pool(host, 1, "hugepages-64KB").nrFreeSPages, 16u);
  EXPECT_CELL(Pool(host, 1, "hugepages-16GB").nrLPages, 3u * 8192);
}

TEST(LargePagePoolRecords, EachFile) {
  SavedHost host("two-nodes.host");
  const std::string folder = "sys/devices/system/node/node0/hugepages/hugepages-2048kB/";
  for (const char *bad : {"x\n", "", "-1\n", "99999999999\n"}) {
    host.Write(folder + "nr_hugepages", bad);
    EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrLPages, kNoFigure32) << bad;
    EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrFreeSPages, 2048u);
  }
  host.Forbid(folder + "free_hugepages");
  {
    OrdinaryUser user;
    EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrFreeSPages, kNoFigure32);
  }
  host.Remove(folder + "free_hugepages");
  EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrFreeSPages, kNoFigure32);
  host.Remove("sys/devices/system/node/node0/hugepages");
  EXPECT_EQ(host.ask().Names(nodes::memory_lpage_nodeList_vmPools, {0}), Names{}) << "a kernel without huge pages";
}

TEST(LargePagePoolRecords, AKernelWithoutNuma) {
  SavedHost host("two-nodes.host");
  host.Remove("sys/devices/system/node");
  host.Write("sys/kernel/mm/hugepages/hugepages-2048kB/nr_hugepages", "7\n");
  EXPECT_EQ(host.ask().Names(nodes::memory_lpage_nodeList_vmPools, {0}), Names{"hugepages-2MB"});
  EXPECT_CELL(Pool(host, 0, "hugepages-2MB").nrLPages, 7u);
}

TEST(LargePagePoolRecords, ThePoolOfPageSharingIsEmpty) {
  SavedHost host("two-nodes.host");
  EXPECT_CELL(host.ask().Record(nodes::memory_lpage_nodeList_psharePool, {1}).nrLPages, 0u);
  EXPECT_EQ(host.ask().Status(nodes::memory_lpage_nodeList_psharePool, {2}), HVC_NOT_FOUND);
}

}  // namespace
}  // namespace platkit
