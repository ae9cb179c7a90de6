#include "platkit/linux/records/buddy_records.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <map>
#include <utility>

#include "platkit/linux/kernel/zoneinfo.h"

namespace platkit {
namespace {

constexpr size_t kMaxNames = 99;

// Reports parse the memory node from the two digits, and recognize low zones by the last letter.
std::string NameOf(size_t memNode, bool isLow) {
  char name[32];
  std::snprintf(name, sizeof name, "memmap-%02zu-%s", memNode, isLow ? "lo" : "hi");
  return name;
}

}  // namespace

HVC_ReturnStatus BuddyRecords::List(ParamList &list) {
  const Buddies &all = Read();
  if (all.status != HVC_OK) return all.status;
  for (size_t i = 0; i < std::min(all.buddies.size(), kMaxNames); ++i) {
    if (const HVC_ReturnStatus status = list.Add(all.buddies[i].name); status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus BuddyRecords::Comprehensive(std::string_view name, BuddyComprehensiveRecord &record) {
  const Buddies &all = Read();
  if (all.status != HVC_OK) return all.status;
  const auto buddy = std::ranges::find(all.buddies, name, &Buddy::name);
  if (buddy == all.buddies.end()) return HVC_NOT_FOUND;
  for (size_t k = 0; k < kSizes; ++k)
    record.sizes[k].free = buddy->free[k].Cell32(0);
  return HVC_OK;
}

HVC_ReturnStatus BuddyRecords::MemNode(int64_t memNode, MemNodeRecord &record) {
  uint64_t numaNode = 0;
  const HVC_ReturnStatus status = FindNumaNode(memNode, numaNode);
  if (status == HVC_OK) record.numaNode = static_cast<uint8_t>(std::min<uint64_t>(numaNode, UINT8_MAX));
  return status;
}

HVC_ReturnStatus BuddyRecords::CountMemNodes(MemInfoRecord &record) {
  const Buddies &all = Read();
  record.numNodes = static_cast<uint32_t>(all.numaNodes.size());
  return all.status;
}

HVC_ReturnStatus BuddyRecords::FindNumaNode(int64_t memNode, uint64_t &numaNode) {
  const Buddies &all = Read();
  if (all.status != HVC_OK) return all.status;
  if (memNode < 0 || static_cast<uint64_t>(memNode) >= all.numaNodes.size()) return HVC_NOT_FOUND;
  numaNode = all.numaNodes[static_cast<size_t>(memNode)];
  return HVC_OK;
}

const BuddyRecords::Buddies &BuddyRecords::Read() {
  return buddies_.Get(files_.clock(), [this] { return Arrange(ReadBuddyinfo(files_)); });
}

// Adds up the zones of each node, separately for low and other zones. Sorts by node, low zones first.
BuddyRecords::Buddies BuddyRecords::Arrange(const Buddyinfo &info) {
  std::map<std::pair<uint64_t, bool>, Buddy> byNode;
  for (const BuddyZone &zone : info.zones) {
    const bool isLow = IsLowZone(zone.zone);
    const auto [found, isNew] = byNode.try_emplace({zone.numaNode, !isLow}, Buddy{zone.numaNode, isLow});
    AddZone(zone, found->second);
  }
  Buddies all = {.status = info.status, .buddies = {}, .numaNodes = {}};
  for (auto &[key, buddy] : byNode) {
    if (all.numaNodes.empty() || all.numaNodes.back() != buddy.numaNode) all.numaNodes.push_back(buddy.numaNode);
    buddy.name = NameOf(all.numaNodes.size() - 1, buddy.isLow);
    all.buddies.push_back(std::move(buddy));
  }
  return all;
}

// Records count pages of 4 KB. A chunk that is larger than the largest size of a record counts as several chunks of
// that size.
void BuddyRecords::AddZone(const BuddyZone &zone, Buddy &buddy) {
  size_t size = static_cast<size_t>(std::countr_zero(pageSize_.RecordPages()));
  for (const Figure free : zone.free) {
    const size_t cell = std::min(size, kSizes - 1);
    const size_t doublings = std::min<size_t>(size - cell, 63);
    buddy.free[cell] = buddy.free[cell] + free * (uint64_t{1} << doublings);
    ++size;
  }
}

}  // namespace platkit
