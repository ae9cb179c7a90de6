#include "platkit/linux/records/buddy_records.h"

#include <algorithm>
#include <bit>
#include <cstdio>

#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/zoneinfo.h"

namespace platkit {
namespace {

constexpr size_t kMostNames = 99;

// More than any kernel has.
constexpr uint64_t kMostNumaNodes = 4096;
constexpr size_t kMostZones = 16;

// The next word of a line, which is taken off it; empty at its end.
std::string_view TakeWord(std::string_view &line) {
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  const std::string_view word = line.substr(0, line.find(' '));
  line.remove_prefix(word.size());
  return word;
}

// Readers take the node from two digits, and know low memory by the last letter.
std::string NameOf(size_t memNode, bool isLow) {
  char name[32];
  std::snprintf(name, sizeof name, "memmap-%02zu-%s", memNode, isLow ? "lo" : "hi");
  return name;
}

}  // namespace

HVC_ReturnStatus Buddies::List(ParamList &list) {
  if (const HVC_ReturnStatus status = Read(); status != HVC_OK) return status;
  for (size_t i = 0; i < std::min(buddies_.size(), kMostNames); ++i) {
    if (const HVC_ReturnStatus status = list.Add(buddies_[i].name); status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus Buddies::Comprehensive(std::string_view name, BuddyComprehensiveRecord &record) {
  const Buddy *known = Find(name);
  if (!isRead_ || (known != nullptr && known->given)) {
    if (const HVC_ReturnStatus status = Read(); status != HVC_OK) return status;
  }
  Buddy *buddy = Find(name);
  if (buddy == nullptr) return HVC_NOT_FOUND;
  buddy->given = true;
  for (size_t k = 0; k < kSizes; ++k)
    record.sizes[k].free = buddy->free[k].Cell32(0);
  return HVC_OK;
}

HVC_ReturnStatus Buddies::MemNode(int64_t memNode, MemNodeRecord &record) {
  uint64_t numaNode = 0;
  const HVC_ReturnStatus status = FindNumaNode(memNode, numaNode);
  if (status == HVC_OK) record.numaNode = static_cast<uint8_t>(std::min<uint64_t>(numaNode, UINT8_MAX));
  return status;
}

HVC_ReturnStatus Buddies::CountMemNodes(MemInfoRecord &record) {
  const HVC_ReturnStatus status = nodesCounted_ ? Read() : ReadOnce();
  if (status != HVC_OK) return status;
  nodesCounted_ = true;
  record.numNodes = static_cast<uint32_t>(numaNodes_.size());
  return HVC_OK;
}

HVC_ReturnStatus Buddies::FindNumaNode(int64_t memNode, uint64_t &numaNode) {
  if (const HVC_ReturnStatus status = ReadOnce(); status != HVC_OK) return status;
  if (memNode < 0 || static_cast<uint64_t>(memNode) >= numaNodes_.size()) return HVC_NOT_FOUND;
  numaNode = numaNodes_[static_cast<size_t>(memNode)];
  return HVC_OK;
}

HVC_ReturnStatus Buddies::Read() {
  isRead_ = nodesCounted_ = false;
  buddies_.clear();
  numaNodes_.clear();
  LineReader lines(files_, HostPath("proc/buddyinfo"));
  for (std::string_view line; lines.Next(line);)
    TakeZone(line);
  if (lines.status() != HVC_OK) return lines.status();
  std::sort(buddies_.begin(), buddies_.end(), [](const Buddy &a, const Buddy &b) {
    return a.numaNode != b.numaNode ? a.numaNode < b.numaNode : a.isLow > b.isLow;
  });
  for (Buddy &buddy : buddies_) {
    if (numaNodes_.empty() || numaNodes_.back() != buddy.numaNode) numaNodes_.push_back(buddy.numaNode);
    buddy.name = NameOf(numaNodes_.size() - 1, buddy.isLow);
  }
  isRead_ = true;
  return HVC_OK;
}

// "Node 0, zone   Normal   1   6928   4248": free buffers of one page, of two, of four. Only zones with memory are
// there.
void Buddies::TakeZone(std::string_view line) {
  uint64_t numaNode = 0;
  if (TakeWord(line) != "Node") return;
  std::string_view number = TakeWord(line);
  if (!number.ends_with(',')) return;
  number.remove_suffix(1);
  if (!ParseNumber(number, numaNode) || numaNode >= kMostNumaNodes || TakeWord(line) != "zone") return;
  const std::string_view zone = TakeWord(line);
  if (zone.empty()) return;
  Buddy &buddy = BuddyOf(numaNode, IsLowZone(zone));
  const bool isKnown = std::find(buddy.zones.begin(), buddy.zones.end(), zone) != buddy.zones.end();
  if (isKnown || buddy.zones.size() == kMostZones) return;
  buddy.zones.emplace_back(zone);
  TakeCounts(line, buddy);
}

// Buffers above the largest size count as several of that.
void Buddies::TakeCounts(std::string_view counts, Buddy &buddy) {
  size_t size = static_cast<size_t>(std::countr_zero(pageSize_.RecordPages()));
  for (std::string_view word = TakeWord(counts); !word.empty(); word = TakeWord(counts), ++size) {
    uint64_t count = 0;
    const Figure free = ParseNumber(word, count) ? Figure(count) : Figure::Unreadable();
    const size_t cell = std::min(size, kSizes - 1);
    const size_t doublings = std::min<size_t>(size - cell, 63);
    buddy.free[cell] = buddy.free[cell] + free * (uint64_t{1} << doublings);
  }
}

Buddies::Buddy &Buddies::BuddyOf(uint64_t numaNode, bool isLow) {
  for (Buddy &buddy : buddies_) {
    if (buddy.numaNode == numaNode && buddy.isLow == isLow) return buddy;
  }
  return buddies_.emplace_back(Buddy{.numaNode = numaNode, .isLow = isLow});
}

Buddies::Buddy *Buddies::Find(std::string_view name) {
  const auto found = std::find_if(buddies_.begin(), buddies_.end(), [name](const Buddy &b) { return b.name == name; });
  return found == buddies_.end() ? nullptr : &*found;
}

}  // namespace platkit
