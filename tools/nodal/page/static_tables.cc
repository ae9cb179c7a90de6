#include "tools/nodal/page/static_tables.h"

#include <algorithm>
#include <numeric>

#include "platkit/memory_states.h"
#include "tools/nodal/page/html.h"

namespace nodal {
namespace {

constexpr size_t kMaxRows = 50;  // the maximum for a table of groups or heaps
constexpr size_t kOrder2MB = 9;  // 4 KB times 2 to the 9
constexpr size_t kOrder1GB = 18;
constexpr uint64_t kBlockKB = 4;  // the size of a block of order 0

using Cells = std::vector<std::string>;

std::string Amount(uint64_t kb) { return AmountText(Available(kb)); }
std::string Limit(uint64_t kb) { return kb == HVC_KB_NONE ? "unlimited" : AmountText(kb); }

// Returns at most kMaxRows rows: those with the largest values, largest first.
template <typename Value>
std::vector<size_t> Largest(const PageFamily &family, Value value) {
  std::vector<size_t> rows(family.rows.size());
  std::iota(rows.begin(), rows.end(), size_t{0});
  std::ranges::stable_sort(rows, std::greater(), value);
  rows.resize(std::min(rows.size(), kMaxRows));
  return rows;
}

std::string Nothing(const char *what) { return Element("p", what, " class=\"empty\""); }

std::string Shown(size_t count, size_t all) {
  return count == all ? "" : " (the largest " + std::to_string(count) + " of " + std::to_string(all) + ")";
}

// Returns the free memory in blocks of at least this order, in KB.
uint64_t FreeKB(const BuddyComprehensiveRecord &buddy, size_t order) {
  uint64_t kb = 0;
  for (size_t i = order; i < std::size(buddy.sizes); ++i)
    kb += uint64_t{buddy.sizes[i].free} * (kBlockKB << i);
  return kb;
}

}  // namespace

std::string StaticState(const PageData &data) {
  const auto memory = data.hostFigures.Get(nodes::sched_globalStats_memory_kestrel, 0);
  const auto whole = data.hostFigures.Get(nodes::memory_comprehensive, 0);
  const bool isKnown = memory && memory->memState < platkit::kMemoryStates.size();
  const std::string state(isKnown ? platkit::kMemoryStates[memory->memState] : "unknown");
  std::string text = "Memory state: " + state + ".";
  if (whole) text += " " + Amount(whole->free) + " of " + Amount(whole->total) + " are free.";
  return Element("p", text, " class=\"verdict\"");
}

std::string StaticMemory(const PageData &data) {
  const auto whole = data.hostFigures.Get(nodes::memory_comprehensive, 0);
  if (!whole) return Nothing("The host's memory could not be read.");
  const std::vector<Cells> rows = {
      {"Groups, processes and file cache", Amount(whole->otherConsumed)},
      {"Kernel's clients", Amount(whole->hvcClientConsumed)},
      {"Kernel data and heap", Amount(whole->dataAndHeap)},
      {"Kernel code", Amount(whole->kernelCode)},
      {"Page-allocator metadata", Amount(whole->buddyOvhd)},
      {"Discarded", Amount(whole->discarded)},
      {"Free", Amount(whole->free)},
      {"Total", Amount(whole->total)},
  };
  return HtmlTable("Where the memory is", {"part", "amount"}, rows);
}

std::string StaticGroups(const PageData &data) {
  const PageFamily &groups = data.groups;
  const auto consumed = [&](size_t row) {
    const auto stats = groups.Get(nodes::sched_groups_stats_memoryStats, row);
    return stats && stats->consumed != HVC_KB_NONE ? stats->consumed : 0;
  };
  std::vector<Cells> rows;
  for (const size_t row : Largest(groups, consumed)) {
    const auto stats = groups.Get(nodes::sched_groups_stats_memoryStats, row);
    const auto allocation = groups.Get(nodes::sched_groups_memAllocationInKB, row);
    rows.push_back({HtmlText(groups.rows[row].name), std::to_string(groups.rows[row].id),
                    stats ? Amount(stats->consumed) : "n/a", allocation ? Amount(allocation->min) : "n/a",
                    allocation ? Limit(allocation->max) : "n/a", stats ? Amount(stats->eMin) : "n/a"});
  }
  return HtmlTable("Groups by memory consumed" + Shown(rows.size(), groups.rows.size()),
                   {"group", "ID", "consumed", "reservation", "limit", "effective reservation"}, rows);
}

std::string StaticMachines(const PageData &data) {
  std::vector<Cells> rows;
  for (size_t row = 0; row < data.groups.rows.size(); ++row) {
    const auto vmm = data.groups.Get(nodes::sched_memClients_kestrel_vmm, row);
    if (!vmm) continue;
    const auto swap = data.groups.Get(nodes::sched_memClients_swapInfo, row);
    const auto guest = data.groups.Get(nodes::sched_memClients_kestrel_guest, row);
    rows.push_back({HtmlText(data.groups.rows[row].name), Amount(vmm->memSize), Amount(vmm->mapped),
                    Amount(vmm->shared), Amount(vmm->ballooned), Amount(vmm->zipped),
                    swap ? Amount(swap->swapped) : "n/a", guest ? Amount(guest->memNeeded) : "n/a"});
  }
  if (rows.empty()) return Nothing("No virtual machine runs on this host.");
  return HtmlTable("Virtual machines",
                   {"machine", "memory", "mapped", "shared", "ballooned", "compressed", "swapped", "guest needs"},
                   rows);
}

std::string StaticNodes(const PageData &data) {
  std::vector<Cells> rows;
  for (size_t row = 0; row < data.buddies.rows.size(); ++row) {
    const auto buddy = data.buddies.Get(nodes::system_buddy_comprehensive, row);
    if (!buddy) continue;
    const auto node = data.buddies.Get(nodes::memory_memNodes, row);
    rows.push_back({HtmlText(data.buddies.rows[row].name), node ? std::to_string(node->numaNode) : "none",
                    AmountText(FreeKB(*buddy, 0)), AmountText(FreeKB(*buddy, kOrder2MB)),
                    AmountText(FreeKB(*buddy, kOrder1GB))});
  }
  if (rows.empty()) return Nothing("The page allocator's free blocks could not be read.");
  return HtmlTable("Free memory by node",
                   {"allocator", "NUMA node", "free", "usable for 2 MB pages", "usable for 1 GB pages"}, rows);
}

std::string StaticHeaps(const PageData &data) {
  const auto size = [&](size_t row) {
    const auto heap = data.heaps.Get(nodes::system_heaps_stats, row);
    return heap ? heap->size : 0;
  };
  std::vector<Cells> rows;
  for (const size_t row : Largest(data.heaps, size)) {
    const auto heap = data.heaps.Get(nodes::system_heaps_stats, row);
    if (!heap) continue;
    rows.push_back({HtmlText(data.heaps.rows[row].name), AmountText(heap->size / 1024),
                    AmountText(uint64_t{heap->size - heap->avail} / 1024), std::to_string(heap->pctFreeOfCur) + " %"});
  }
  if (rows.empty()) return Nothing("The kernel's heaps could not be read. On a running host, only root may read them.");
  return HtmlTable("Kernel heaps by size" + Shown(rows.size(), data.heaps.rows.size()),
                   {"heap", "size", "used", "free"}, rows);
}

}  // namespace nodal
