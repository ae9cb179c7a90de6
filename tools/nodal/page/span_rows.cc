#include "tools/nodal/page/span_rows.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "tools/nodal/page/span_bands.h"

namespace nodal {
namespace {

// The figures that the views show. A node that is not listed here, such as the nodes of the host, shows all its
// figures.
struct ShownFields {
  uint32_t node;
  std::vector<std::string_view> names;
};

const std::vector<ShownFields> &AllShownFields() {
  static const std::vector<ShownFields> all = {
      {nodes::sched_groups_groupFlags.id(), {"flags"}},
      {nodes::sched_groups_memAllocationInKB.id(), {"min", "max"}},
      {nodes::sched_groups_stats_capacity.id(), {}},
      {nodes::sched_groups_stats_memoryStats.id(), {"consumed", "touched", "eMin", "consumedPeak", "ovhd"}},
      {nodes::sched_memClients_kestrel_vmm.id(),
       {"memSize", "mapped", "shared", "sharedSaved", "zipped", "zipSaved", "ballooned"}},
      {nodes::sched_memClients_swapInfo.id(), {"swapped", "gblSwapIn", "gblSwapOut"}},
      {nodes::sched_memClients_kestrel_guest.id(), {"memTotal", "memNeeded"}},
      {nodes::sched_memClients_memzipInfo.id(), {}},
      {nodes::memory_lpage_vmLPage.id(), {}},
      {nodes::sched_memClients_kestrel_uw.id(), {"swapped"}},
      {nodes::memory_lpage_nodeList_vmPools.id(), {"nrLPages", "nrFreeSPages"}},
      {nodes::system_heaps_stats.id(), {"size", "avail", "pctFreeOfCur", "avgAllocSize", "numFailAllocs"}},
  };
  return all;
}

bool IsShown(const Node &node, const Column &column) {
  if (node.id == nodes::system_buddy_comprehensive.id()) return column.name.ends_with(".free");
  for (const ShownFields &fields : AllShownFields()) {
    if (fields.node == node.id) return std::ranges::find(fields.names, column.name) != fields.names.end();
  }
  return true;
}

}  // namespace

const std::vector<size_t> &SpanRows::Update(uint32_t instant, const PageFamily &now) {
  if (family_.records.empty()) AddColumns(now);
  const std::vector<size_t> before = std::exchange(rows_, {});
  for (const PageRow &row : now.rows)
    rows_.push_back(RowOf(row, row.parent < 0 ? -1 : static_cast<int>(rows_[static_cast<size_t>(row.parent)])));
  const std::unordered_set<size_t> there(rows_.begin(), rows_.end());
  for (const size_t row : before) {
    if (!there.contains(row)) AddLife(row, instant, 0);
  }
  for (const size_t row : there)
    AddLife(row, instant, 1);
  return rows_;
}

void SpanRows::AddLife(size_t row, uint32_t instant, int64_t isThere) {
  if (AddValue(family_.lives[row], instant, NumberValue(isThere))) budget_.Take();
}

void SpanRows::AddColumns(const PageFamily &now) {
  for (const PageRecords &records : now.records) {
    SpanRecords all = {.node = records.node};
    for (Column &column : ColumnsOf(*records.node->record)) {
      if (!IsShown(*records.node, column)) continue;
      const bool hasBand = column.name == FieldWithBand(*records.node);
      const bool isOfMachines = column.name == "ovhd";
      all.columns.push_back({.column = std::move(column), .hasBand = hasBand, .isOfMachines = isOfMachines});
    }
    if (!all.columns.empty()) family_.records.push_back(std::move(all));
  }
}

// The top group always has the same row, even if its name changes. The row has the first name that could be read.
size_t SpanRows::RowOf(const PageRow &row, int parent) {
  const bool isTop = row.instances.contains("group") && parent < 0;
  const auto [found, isNew] =
      known_.emplace(isTop ? Key() : Key{parent, row.id, row.name, row.tag, row.instances}, family_.rows.size());
  if (isNew) AddRow(row, parent);
  if (PageRow &known = family_.rows[found->second]; isTop && known.name == "?") {
    budget_.TakeRow(row.name.size() + row.tag.size());
    known.name = row.name;
    known.tag = row.tag;
  }
  return found->second;
}

void SpanRows::AddRow(const PageRow &row, int parent) {
  budget_.TakeRow(row.name.size() + row.tag.size());
  family_.rows.push_back(row);
  family_.rows.back().parent = parent;
  family_.lives.emplace_back();
  for (SpanRecords &records : family_.records) {
    for (SpanColumn &column : records.columns) {
      column.values.emplace_back();
      if (column.hasBand) column.below.emplace_back();
      if (column.hasBand) column.above.emplace_back();
    }
  }
}

}  // namespace nodal
