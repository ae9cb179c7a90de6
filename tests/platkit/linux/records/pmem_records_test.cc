// Persistent memory, as the kernel shows it below /sys/bus/nd.
#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

const std::string kDevices = "sys/bus/nd/devices/";
const std::string kVolume = "iset-2c8ff1f1a1b2c3d4";
const std::string kMapped = "6c94b9a5-7e4f-4d1b-9d5e-0f3b8a2c1d00";
const std::string kDax = "11111111-2222-3333-4444-555555555555";

using Names = std::vector<std::string>;

Names Volumes(SavedHost &host) { return host.ask().Names(nodes::memory_pmem_volumes); }

Names Regions(SavedHost &host, const std::string &volume) {
  return host.ask().Names(nodes::memory_pmem_volumes_regionStore_regions, {volume});
}

RegionStoreRecord Store(SavedHost &host, const std::string &volume) {
  return host.ask().Record(nodes::memory_pmem_volumes_regionStore_info, {volume});
}

bool IsClean(SavedHost &host, const std::string &volume) {
  return host.ask().Record(nodes::memory_pmem_volumes_regionStore_isClean, {volume}).isClean != 0;
}

RegionRecord Region(SavedHost &host, const std::string &volume, const std::string &region) {
  return host.ask().Record(nodes::memory_pmem_volumes_regionStore_regions_info, {volume, region});
}

std::vector<int64_t> NumaNodes(SavedHost &host, const std::string &volume, const std::string &region) {
  std::vector<int64_t> numaNodes;
  EXPECT_EQ(host.ask().List(nodes::memory_pmem_volumes_regionStore_regions_numaAllocInfo, {volume, region}, numaNodes),
            HVC_OK);
  return numaNodes;
}

ExtentRecord Extent(SavedHost &host, const std::string &volume) {
  return host.ask().Record(nodes::memory_pmem_volumes_extents, {volume, 0});
}

TEST(PmemRecords, AHostWithoutPersistentMemory) {
  SavedHost host("v2.host");
  EXPECT_EQ(Volumes(host), Names{});
  host.MakeFolder(kDevices);
  EXPECT_EQ(Volumes(host), Names{});
  host.Forbid(kDevices);
  OrdinaryUser user;
  Names names;
  EXPECT_EQ(host.ask().List(nodes::memory_pmem_volumes, {}, names), HVC_NO_PERMISSION);
}

TEST(PmemRecords, VolumesAndTheirRegions) {
  SavedHost host("two-nodes.host");
  EXPECT_EQ(Volumes(host), (Names{kVolume, "region10"})) << "a region of memory that forgets is none";
  EXPECT_EQ(Regions(host, kVolume), (Names{kMapped, kDax})) << "a namespace of no size is none";
  EXPECT_EQ(Regions(host, "region10"), Names{"namespace10.0"});
  EXPECT_EQ(host.ask().Status(nodes::memory_pmem_volumes_info, {kVolume}), HVC_OK);
  for (const char *other : {"region0", "region1", "namespace10.0", "", ".."}) {
    EXPECT_EQ(host.ask().Status(nodes::memory_pmem_volumes_info, {other}), HVC_NOT_FOUND) << other;
  }
}

TEST(PmemRecords, RegionStores) {
  SavedHost host("two-nodes.host");
  const RegionStoreRecord store = Store(host, kVolume);
  EXPECT_CELL(store.totalBlocks, 4096u);
  EXPECT_CELL(store.availableBlocks, 1024u);
  EXPECT_CELL(store.allocatedBlocks, 3073u) << "the sizes of its regions, rounded up";
  EXPECT_CELL(store.reservedBlocks, 3073u);
  EXPECT_CELL(store.freeRegions, 120u) << "of the module that has fewest";
  EXPECT_CELL(store.totalRegions, 122u);
  EXPECT_TRUE(IsClean(host, kVolume));
  const RegionStoreRecord unlabelled = Store(host, "region10");
  EXPECT_CELL(unlabelled.totalBlocks, 512u);
  EXPECT_CELL(unlabelled.allocatedBlocks, 512u);
  EXPECT_CELL(unlabelled.freeRegions, 0u);
  EXPECT_CELL(unlabelled.totalRegions, 1u);
  EXPECT_FALSE(IsClean(host, "region10"));
}

TEST(PmemRecords, Regions) {
  SavedHost host("two-nodes.host");
  const RegionRecord mapped = Region(host, kVolume, kMapped);
  EXPECT_CELL(mapped.size, uint64_t{4} << 30);
  EXPECT_CELL(mapped.allocatedBlocks, 2048u);
  EXPECT_CELL(mapped.reservedBlocks, 2048u);
  EXPECT_CELL(mapped.flags, HVC_REGION_ALLOCATED | HVC_REGION_BLOCK_DEVICE | HVC_REGION_PERSISTENT_RESERVATION);
  EXPECT_CELL(mapped.numaAffinityMask, 4u);
  EXPECT_CELL(mapped.openCount, UINT32_MAX) << "it has no block device";
  const RegionRecord dax = Region(host, kVolume, kDax);
  EXPECT_CELL(dax.allocatedBlocks, 1025u);
  EXPECT_CELL(dax.flags, HVC_REGION_ALLOCATED | HVC_REGION_PERSISTENT_RESERVATION);
  const RegionRecord unlabelled = Region(host, "region10", "namespace10.0");
  EXPECT_CELL(unlabelled.flags, HVC_REGION_ALLOCATED | HVC_REGION_READ_ONLY | HVC_REGION_BLOCK_DEVICE);
  EXPECT_CELL(unlabelled.numaAffinityMask, 0u);
  for (const char *other : {"namespace0.0", "namespace0.2", ""}) {
    EXPECT_EQ(host.ask().Status(nodes::memory_pmem_volumes_regionStore_regions_info, {kVolume, other}), HVC_NOT_FOUND);
  }
  EXPECT_EQ(host.ask().Status(nodes::memory_pmem_volumes_regionStore_regions_info, {"region10", kMapped}),
            HVC_NOT_FOUND);
}

TEST(PmemRecords, RegionsThatAreInUse) {
  SavedHost host("two-nodes.host");
  const std::string disk = kDevices + "namespace10.0/block/pmem10";
  host.Write(disk + "/dev", "259:1\n");
  host.MakeFolder(disk + "/holders/dm-0");
  EXPECT_CELL(Region(host, "region10", "namespace10.0").openCount, 1u);
}

TEST(PmemRecords, NumaNodesOfARegion) {
  SavedHost host("two-nodes.host");
  EXPECT_EQ(NumaNodes(host, kVolume, kDax), std::vector<int64_t>{2});
  EXPECT_EQ(NumaNodes(host, "region10", "namespace10.0"), std::vector<int64_t>{});
  constexpr auto kNode = nodes::memory_pmem_volumes_regionStore_regions_numaAllocInfo;
  const auto record = host.ask().Record(kNode, {kVolume, kDax, 2});
  EXPECT_CELL(record.numaNode, 2u);
  EXPECT_CELL(record.allocatedBlocks, 1025u);
  EXPECT_EQ(host.ask().Status(kNode, {kVolume, kDax, 0}), HVC_NOT_FOUND);
  EXPECT_EQ(host.ask().Status(kNode, {kVolume, kDax, -1}), HVC_NOT_FOUND);
}

TEST(PmemRecords, AVolumeIsOneExtent) {
  SavedHost host("two-nodes.host");
  std::vector<int64_t> extents;
  EXPECT_EQ(host.ask().List(nodes::memory_pmem_volumes_extents, {kVolume}, extents), HVC_OK);
  EXPECT_EQ(extents, std::vector<int64_t>{0});
  const ExtentRecord extent = Extent(host, kVolume);
  EXPECT_CELL(extent.startBlock, 0u);
  EXPECT_CELL(extent.endBlock, 4095u);
  EXPECT_CELL(extent.startMPN, 0x840000u);
  EXPECT_CELL(extent.endMPN, 0xa3ffffu);
  EXPECT_CELL(extent.numaNode, 2u);
  EXPECT_CELL(Extent(host, "region10").startMPN, kNoFigure) << "older kernels do not tell";
  EXPECT_CELL(Extent(host, "region10").numaNode, kNoFigure);
  EXPECT_EQ(host.ask().Status(nodes::memory_pmem_volumes_extents, {kVolume, 1}), HVC_NOT_FOUND);
}

TEST(PmemRecords, EachFileOfAVolume) {
  SavedHost host("two-nodes.host");
  const std::string region = kDevices + "region0/";
  for (const char *bad : {"", "x\n", "-1\n", "99999999999999999999\n", "max\n"}) {
    host.Write(region + "size", bad);
    EXPECT_CELL(Store(host, kVolume).totalBlocks, kNoFigure) << bad;
    EXPECT_CELL(Store(host, kVolume).allocatedBlocks, 3073u) << bad;
    EXPECT_CELL(Extent(host, kVolume).endBlock, kNoFigure) << bad;
    EXPECT_CELL(Extent(host, kVolume).startMPN, 0x840000u) << bad;
    EXPECT_CELL(Store(host, kVolume).freeRegions, 120u) << bad;
  }
  host.Write(region + "size", "8589934592\n");
  host.Write(region + "available_size", "many\n");
  EXPECT_CELL(Store(host, kVolume).availableBlocks, kNoFigure);
  EXPECT_CELL(Store(host, kVolume).allocatedBlocks, 3073u);
  host.Forbid(region + "resource");
  {
    OrdinaryUser user;
    EXPECT_CELL(Extent(host, kVolume).startMPN, kNoFigure);
    EXPECT_CELL(Extent(host, kVolume).endMPN, kNoFigure);
    EXPECT_CELL(Extent(host, kVolume).endBlock, 4095u);
  }
  host.Write(region + "mapping0", "nonsense\n");
  EXPECT_CELL(Store(host, kVolume).freeRegions, 120u);
  host.Write(region + "mappings", "99999999999\n");
  EXPECT_CELL(Store(host, kVolume).freeRegions, 120u);
  host.Write(kDevices + "nmem1/available_slots", "few\n");
  EXPECT_CELL(Store(host, kVolume).freeRegions, UINT32_MAX);
  EXPECT_CELL(Store(host, kVolume).totalRegions, UINT32_MAX);
  host.Remove(kDevices + "nmem1/nfit/flags");
  EXPECT_TRUE(IsClean(host, kVolume));
  host.Write(kDevices + "nmem1/nfit/flags", "flush_fail smart_notify\n");
  EXPECT_FALSE(IsClean(host, kVolume));
}

TEST(PmemRecords, EachFileOfARegion) {
  SavedHost host("two-nodes.host");
  const std::string space = kDevices + "namespace0.0/";
  host.Write(space + "size", "x\n");
  EXPECT_EQ(Regions(host, kVolume), (Names{kMapped, kDax})) << "it is there all the same";
  EXPECT_CELL(Region(host, kVolume, kMapped).size, kNoFigure);
  EXPECT_CELL(Region(host, kVolume, kMapped).allocatedBlocks, kNoFigure);
  host.Write(space + "numa_node", "64\n");
  EXPECT_CELL(Region(host, kVolume, kMapped).numaAffinityMask, 0u) << "the mask has no such bit";
  EXPECT_EQ(NumaNodes(host, kVolume, kMapped), std::vector<int64_t>{64});
  host.Remove(space + "numa_node");
  EXPECT_EQ(NumaNodes(host, kVolume, kMapped), std::vector<int64_t>{});
  host.Remove(space + "mode");
  EXPECT_CELL(Region(host, kVolume, kMapped).flags, HVC_REGION_ALLOCATED | HVC_REGION_PERSISTENT_RESERVATION);
  host.Write(space + "uuid", "short\n");
  EXPECT_EQ(Regions(host, kVolume), (Names{"namespace0.0", kDax}));
  host.Write(space + "uuid", kDax + "\n");
  EXPECT_EQ(Regions(host, kVolume), (Names{kDax, "namespace0.1"})) << "one of each name";
  host.Write(space + "uuid", "a,b" + std::string(33, '0') + "\n");
  const std::string printable = "a?b" + std::string(33, '0');
  EXPECT_EQ(Regions(host, kVolume), (Names{printable, kDax}));
  EXPECT_CELL(Region(host, kVolume, printable).numaAffinityMask, 0u) << "a name from the list finds its region";
}

TEST(PmemRecords, NamesOfVolumes) {
  SavedHost host("two-nodes.host");
  for (const char *bad : {"", "0x0\n", "x\n", "0xzz\n", "0x1 2\n"}) {
    host.Write(kDevices + "region0/set_cookie", bad);
    EXPECT_EQ(Volumes(host), (Names{"region0", "region10"})) << bad;
  }
  host.Write(kDevices + "region0/set_cookie", "0xab\n");
  host.Write(kDevices + "region10/set_cookie", "0xab\n");
  EXPECT_EQ(Volumes(host), (Names{"iset-ab", "region10"}));
  host.Remove(kDevices + "region10/devtype");
  host.MakeFolder(kDevices + "region");
  host.MakeFolder(kDevices + "region2x");
  host.MakeFolder(kDevices + "region\n3");
  host.MakeFolder(kDevices + "regions");
  EXPECT_EQ(Volumes(host), (Names{"iset-ab", "region10"}));
}

TEST(PmemRecords, VanishedVolumesAndRegionsAreNotFound) {
  SavedHost host("two-nodes.host");
  Volumes(host);
  Regions(host, "region10");
  host.Remove(kDevices + "namespace10.0");
  EXPECT_EQ(host.ask().Status(nodes::memory_pmem_volumes_regionStore_regions_info, {"region10", "namespace10.0"}),
            HVC_NOT_FOUND);
  host.Remove(kDevices + "region10");
  EXPECT_EQ(host.ask().Status(nodes::memory_pmem_volumes_regionStore_info, {"region10"}), HVC_NOT_FOUND);
  EXPECT_EQ(Volumes(host), Names{kVolume});
}

TEST(PmemRecords, AWalkReadsEachFileOnce) {
  SavedHost host("two-nodes.host");
  for (const std::string &volume : Volumes(host)) {
    Store(host, volume);
    IsClean(host, volume);
    for (const std::string &region : Regions(host, volume)) {
      Region(host, volume, region);
      for (const int64_t node : NumaNodes(host, volume, region)) {
        host.ask().Record(nodes::memory_pmem_volumes_regionStore_regions_numaAllocInfo, {volume, region, node});
      }
    }
    Extent(host, volume);
  }
  for (const std::string &path : host.opened())
    EXPECT_EQ(host.Opens(path), 1) << path;
  EXPECT_GT(host.opened().size(), 30u);
}

}  // namespace
}  // namespace platkit
