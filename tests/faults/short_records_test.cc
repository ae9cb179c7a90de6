// Records that are shorter than the reports expect. A report clears its record before each read, so no row shows bytes
// of the previous row.
#include <string>

#include "tests/faults/report_case.h"

namespace faults {
namespace {

// All bytes are 1, so that a left-over byte of a record is visible.
std::string Bytes(size_t size) { return std::string(size, '\1'); }

constexpr char kEightOnes[] = "72340172838076673";

StandinHost Volume() { return StandinHost().AllowShortRecords().AddList("memory_pmem_volumes", {}, {"vol"}); }

TEST(ShortRecords, OfExtents) {
  StandinHost host = Volume();
  host.AddList("memory_pmem_volumes_extents", {"vol"}, {int64_t{0}, int64_t{1}});
  host.AddBytes("memory_pmem_volumes_extents", {"vol", int64_t{0}}, Bytes(40));
  host.AddBytes("memory_pmem_volumes_extents", {"vol", int64_t{1}}, Bytes(8));
  const std::string eight = kEightOnes;
  Check(host, "-r pmem-extent-stats -q -s extentID:startBlk:endBlk:startMPN:endMPN",
        "extentID,startBlk,endBlk,startMPN,endMPN\n0," + eight + "," + eight + "," + eight + "," + eight + "\n1," +
            eight + ",0,0,0\n");
}

TEST(ShortRecords, OfTheNodesOfRegions) {
  StandinHost host = Volume();
  host.AddList("memory_pmem_volumes_regionStore_regions", {"vol"}, {"reg"});
  constexpr char kNuma[] = "memory_pmem_volumes_regionStore_regions_numaAllocInfo";
  host.AddList(kNuma, {"vol", "reg"}, {int64_t{0}, int64_t{1}});
  host.AddBytes(kNuma, {"vol", "reg", int64_t{0}}, Bytes(12));
  host.AddBytes(kNuma, {"vol", "reg", int64_t{1}}, Bytes(4));
  Check(host, "-r pmem-region-numa-stats -q -s numaNode:num2MAllocated",
        std::string("numaNode,num2MAllocated\n16843009,") + kEightOnes + "\n16843009,0\n");
}

TEST(ShortRecords, OfRemapTypes) {
  StandinHost host;
  host.AllowShortRecords();
  host.Add({.id = 0, .name = "shell", .flags = HVC_GROUP_USER_WORLD});
  host.AddList("sched_groups_members_memClients", {int64_t{0}}, {int64_t{7}});
  host.AddList("sched_memClients_remapTypes", {int64_t{7}}, {"copy", "move"});
  host.AddBytes("sched_memClients_remapTypes", {int64_t{7}, "copy"}, Bytes(80));
  host.AddBytes("sched_memClients_remapTypes", {int64_t{7}, "move"}, Bytes(8));
  const std::string kb = "289360691352306692";  // kEightOnes pages
  Check(host, "-r asyncremap-stats -q -s added:filtered",
        "type,added,filtered\ncopy," + kb + "," + kb + "\nmove," + kb + ",0\n,578721382704613384," + kb + "\n");
}

}  // namespace
}  // namespace faults
