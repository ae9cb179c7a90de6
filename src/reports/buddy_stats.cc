// buddy-stats: the free and used buffers of each size in each of the kernel's buddy allocators.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

#include "platkit/records.h"
#include "platkit/warning.h"
#include "src/reports/host_report.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/report_row.h"
#include "src/table/terminal_text.h"

namespace kestrel {
namespace {

// A buddy. Its name, such as "memmap-02-lo", gives its memory node and whether it serves low memory.
struct BuddyRow {
  char name[16];  // a longer name is truncated; the sizes are then read under the truncated name
  uint32_t memNode;
  uint32_t numaNode;
  const char *type;
  BuddySizeRecord sizes[19];
};

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

// The sizes of buffers. Three of the descriptions contain a space; they must not change.
struct BufferSize {
  std::string_view name;         // in the columns' names
  std::string_view description;  // in their descriptions
};

constexpr BufferSize kSizes[] = {
    {"4KB", "4KB"},      {"8KB", "8KB"},      {"16KB", "16KB"},    {"32KB", "32KB"}, {"64KB", "64KB"},
    {"128KB", "128 KB"}, {"256KB", "256 KB"}, {"512KB", "512 KB"}, {"1MB", "1MB"},   {"2MB", "2MB"},
    {"4MB", "4MB"},      {"8MB", "8MB"},      {"16MB", "16MB"},    {"32MB", "32MB"}, {"64MB", "64MB"},
    {"128MB", "128MB"},  {"256MB", "256MB"},  {"512MB", "512MB"},  {"1GB", "1GB"},
};
static_assert(std::size(kSizes) == std::size(BuddyRow().sizes));

// A constant text that lives as long as the program.
struct ColumnText {
  constexpr ColumnText(std::string_view a, std::string_view b, std::string_view c = {}) {
    size_t length = 0;
    for (const std::string_view piece : {a, b, c})
      length += piece.copy(text + length, sizeof text - 1 - length);
  }

  char text[32] = {};
};

template <size_t size>
constexpr ColumnText kFreeName(kSizes[size].name, "free");
template <size_t size>
constexpr ColumnText kUsedName(kSizes[size].name, "used");
// The description of 512MBfree says "256MB"; it must not change.
constexpr std::string_view FreeSize(size_t size) {
  return kSizes[size].name == "512MB" ? "256MB" : kSizes[size].description;
}

template <size_t size>
constexpr ColumnText kFreeDescription("free ", FreeSize(size), " buffers");
template <size_t size>
constexpr ColumnText kUsedDescription("used ", kSizes[size].description, " buffers");

template <size_t size>
constexpr Column<BuddyRow> FreeColumn() {
  return {
      kFreeName<size>.text, kFreeDescription<size>.text, 10, kU, [](auto &row) { return row.sizes[size].free; }, kAdd};
}

template <size_t size>
constexpr Column<BuddyRow> UsedColumn() {
  return {
      kUsedName<size>.text, kUsedDescription<size>.text, 10, kU, [](auto &row) { return row.sizes[size].used; }, kAdd};
}

template <size_t... sizes>
constexpr auto BuddyColumns(std::index_sequence<sizes...>) {
  return ColumnsOf<BuddyRow>({
      {"name", "Name of the buddy", 20, kS, [](auto &row) { return Text(row.name); }, kInTotal},
      {"memNode", "Memory node the buddy belongs to", 2, kU, [](auto &row) { return row.memNode; }, kMandatory},
      {"type", "Legacy memory type name", 4, kS, [](auto &row) { return Text(row.type); }},
      {"numaNode", "NUMA node the buddy belongs to", 2, kU, [](auto &row) { return row.numaNode; }},
      FreeColumn<sizes>()...,
      UsedColumn<sizes>()...,
  });
}

constinit auto columns = BuddyColumns(std::make_index_sequence<std::size(kSizes)>());

// Capacity of the list of names.
constexpr uint32_t kMaxBuddies = 99;
constexpr uint32_t kMaxNameBytes = kMaxBuddies * 128;

struct BuddyRows {
  std::span<BuddyRow> All() { return {rows, count}; }

  BuddyRow rows[kMaxBuddies] = {};
  size_t count = 0;
};

// The number in the two characters at position 7 of the name.
int NodeDigits(const BuddyRow &row) {
  const char digits[] = {row.name[7], row.name[8], '\0'};
  return std::atoi(digits);
}

// Orders by the two digits of the memory node, then low memory first. This is not a strict weak order: if two buddies
// of a node both serve low memory, each is less than the other.
bool BuddyRowLess(const BuddyRow &a, const BuddyRow &b) {
  if (std::strcmp(a.name, b.name) == 0) return false;
  if (std::memcmp(a.name + 7, b.name + 7, 2) != 0) return NodeDigits(a) < NodeDigits(b);
  return std::memcmp(a.name + 10, "lo", 2) == 0;
}

// A selection sort: because BuddyRowLess is not a strict weak order, the order of the rows depends on the algorithm.
void SortRows(std::span<BuddyRow> found) {
  for (size_t i = 0; i < found.size(); ++i) {
    size_t least = i;
    for (size_t k = i + 1; k < found.size(); ++k) {
      if (BuddyRowLess(found[k], found[least])) least = k;
    }
    std::swap(found[i], found[least]);
  }
}

// Finds the NUMA node of a memory node. Some warnings lack a newline; they must not change.
bool KestrelMemNode2NUMANode(uint32_t memNode, uint32_t &numaNode) {
  const ParamList arguments = MakeArgumentsFor("KestrelMemNode2NUMANode", 1);
  if (arguments == nullptr) return false;
  HVC_ReturnStatus status = NODAL_ParamListAddInt(arguments.get(), memNode);
  if (status != HVC_OK) {
    Warning("The param list for memNode %u could not be created: %#x", memNode, status);
    return false;
  }
  MemNodeRecord record = {};
  status = ReadRecord(nodes::kMemNode, arguments.get(), record);
  if (status != HVC_OK) {
    Warning("Error %#x while reading /memory/memNodes/%u", status, memNode);
    return false;
  }
  numaNode = record.numaNode;
  return true;
}

// Fills a row, except for its counts, from a buddy's name. Returns false if the NUMA node is unknown; the buddy then
// has no row.
bool Identify(std::string_view name, BuddyRow &row) {
  name.copy(row.name, sizeof row.name - 1);
  row.type = row.name[std::strlen(row.name) - 1] == 'o' ? "low" : "high";
  row.memNode = static_cast<uint32_t>(std::strtol(row.name + 7, nullptr, 10));
  return KestrelMemNode2NUMANode(row.memNode, row.numaNode);
}

// Finds the buddies whose NUMA nodes are known. If there are none or the list cannot be read, the result is empty.
BuddyRows FindBuddies() {
  BuddyRows found;
  const ParamList names(NODAL_ParamListCreateAndAllocateParams(NODAL_LIST_INSTANCES, kMaxBuddies, kMaxNameBytes));
  if (names == nullptr) return found;
  if (NODAL_GetInstanceList(nodes::kBuddies.id, nullptr, names.get()) != HVC_OK) return found;

  for (uint32_t i = 0; i < NODAL_ParamListUsedCount(names.get()) && found.count < kMaxBuddies; ++i) {
    const char *name = nullptr;
    if (NODAL_ParamListGetString(names.get(), i, &name) != HVC_OK) break;
    if (name == nullptr || std::strncmp(name, "memmap", 6) != 0) continue;
    BuddyRow row = {};
    if (Identify(name, row)) found.rows[found.count++] = row;
  }
  return found;
}

HVC_ReturnStatus ReadSizes(BuddyRow &row) {
  const ParamList arguments = MakeArgumentsFor("KestrelBuddyGetStats", 1);
  if (arguments == nullptr) return HVC_FAILURE;
  HVC_ReturnStatus status = NODAL_ParamListAddString(arguments.get(), row.name);
  if (status != HVC_OK) {
    Warning("The param list for buddy %s could not be created: %#x", WarningText(row.name).c_str(), status);
    return status;
  }
  BuddyComprehensiveRecord record = {};
  status = ReadRecord(nodes::kBuddyComprehensive, arguments.get(), record);
  if (status != HVC_OK) {
    Warning("Error %#x while reading %s/comprehensive", status, WarningText(row.name).c_str());
    return status;
  }
  std::memcpy(row.sizes, record.sizes, sizeof row.sizes);
  return HVC_OK;
}

constexpr BuddyRow TotalLabel() {
  BuddyRow row = {};
  std::string_view("Total").copy(row.name, sizeof row.name);
  return row;
}

constexpr BuddyRow kTotal = TotalLabel();

HVC_ReturnStatus KestrelBuddyGetStats(const Report &report, int argc, char **argv) {
  HostRun run;
  HVC_ReturnStatus status = StartHostReport(report, argc, argv, run);
  if (status != HVC_OK) return status;

  const ReportOptions &options = run.options;
  if (!options.csv) Banner("MEMMAP BUDDY STATS", 44).SelectedColumns(columns);
  TablePrintHead(columns, options.csv);
  BuddyRows found = FindBuddies();
  SortRows(found.All());
  ColumnSums sums;
  for (BuddyRow &row : found.All()) {
    status = ReadSizes(row);
    if (status != HVC_OK) return status;
    PrintFigures(columns, options.csv, false, &row, ReportUnit::kKB);
    sums.Add(columns, &row);
  }
  TablePrintSeparator(columns, options.csv);
  sums.Print(columns, options.csv, true, &kTotal, ReportUnit::kKB);
  EndHostReport(columns, options);
  return HVC_OK;
}

}  // namespace

constinit const Report kBuddyStats = {
    .name = "buddy-stats",
    .summary = "free and used buffers of each size, by buddy allocator",
    .options = {"s:vq"},
    .columns = columns,
    .sums = Sums::kTotalRow,
    .run = KestrelBuddyGetStats,
};

}  // namespace kestrel
