// buddy-stats: the kernel's MemMap buddy allocators: for each, how many buffers of each size are free and used.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

#include "platkit/nodes.h"
#include "platkit/records.h"
#include "platkit/warning.h"
#include "src/reports/host_report.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/output.h"
#include "src/table/report_row.h"

namespace kestrel {
namespace {

// A buddy's name as in "memmap-02-lo": the memory node and whether it serves low memory are told by the name alone.
struct BuddyRow {
  char name[16];  // longer names are cut, and the buddy is looked for under what is left
  uint32_t memNode;
  uint32_t numaNode;
  const char *type;
  BuddySizeRecord sizes[19];
};

using enum Conversion;
using enum FigureSum;
using Row = BuddyRow;

#define FREE(k, size, text) \
  { size "free", "free " text " buffers", 10, kU, kInTotal, PLAIN(sizes[k].free).Sum(kAdd) }
#define USED(k, size, text) \
  { size "used", "used " text " buffers", 10, kU, kInTotal, PLAIN(sizes[k].used).Sum(kAdd) }

constinit ColumnDesc columns[] = {
    {"name", "Name of the buddy", 20, kS, kInTotal, PLAIN(name)},
    {"memNode", "Memory node the buddy belongs to", 2, kU, kMandatory, PLAIN(memNode)},
    {"type", "Legacy memory type name", 4, kS, kPlain, PLAIN(type)},
    {"numaNode", "NUMA node the buddy belongs to", 2, kU, kPlain, PLAIN(numaNode)},
    FREE(0, "4KB", "4KB"),
    FREE(1, "8KB", "8KB"),
    FREE(2, "16KB", "16KB"),
    FREE(3, "32KB", "32KB"),
    FREE(4, "64KB", "64KB"),
    FREE(5, "128KB", "128 KB"),
    FREE(6, "256KB", "256 KB"),
    FREE(7, "512KB", "512 KB"),
    FREE(8, "1MB", "1MB"),
    FREE(9, "2MB", "2MB"),
    FREE(10, "4MB", "4MB"),
    FREE(11, "8MB", "8MB"),
    FREE(12, "16MB", "16MB"),
    FREE(13, "32MB", "32MB"),
    FREE(14, "64MB", "64MB"),
    FREE(15, "128MB", "128MB"),
    FREE(16, "256MB", "256MB"),
    FREE(17, "512MB", "256MB"),  // sic: people look the text up as it has always been
    FREE(18, "1GB", "1GB"),
    USED(0, "4KB", "4KB"),
    USED(1, "8KB", "8KB"),
    USED(2, "16KB", "16KB"),
    USED(3, "32KB", "32KB"),
    USED(4, "64KB", "64KB"),
    USED(5, "128KB", "128 KB"),
    USED(6, "256KB", "256 KB"),
    USED(7, "512KB", "512 KB"),
    USED(8, "1MB", "1MB"),
    USED(9, "2MB", "2MB"),
    USED(10, "4MB", "4MB"),
    USED(11, "8MB", "8MB"),
    USED(12, "16MB", "16MB"),
    USED(13, "32MB", "32MB"),
    USED(14, "64MB", "64MB"),
    USED(15, "128MB", "128MB"),
    USED(16, "256MB", "256MB"),
    USED(17, "512MB", "512MB"),
    USED(18, "1GB", "1GB"),
};

#undef FREE
#undef USED

// The list that takes the names of all buddies has room for so many, of so many bytes in all.
constexpr uint32_t kMostBuddies = 99;
constexpr uint32_t kMostNameBytes = kMostBuddies * 128;

struct BuddyRows {
  std::span<Row> All() { return {rows, count}; }

  Row rows[kMostBuddies] = {};
  size_t count = 0;
};

// What the two digits at the name's position 7 read as.
int NodeDigits(const Row &row) {
  const char digits[] = {row.name[7], row.name[8], '\0'};
  return std::atoi(digits);
}

// Rows go by their memory node, low memory first. Of a node's number only two digits count here, and two buddies of the
// same node that both serve low memory are each less than the other: the order of the rows follows from the sort below.
bool BuddyRowLess(const Row &a, const Row &b) {
  if (std::strcmp(a.name, b.name) == 0) return false;
  if (std::memcmp(a.name + 7, b.name + 7, 2) != 0) return NodeDigits(a) < NodeDigits(b);
  return std::memcmp(a.name + 10, "lo", 2) == 0;
}

// A selection sort, since what BuddyRowLess says is not a strict order, and std::sort asks for one.
void SortRows(std::span<Row> found) {
  for (size_t i = 0; i < found.size(); ++i) {
    size_t least = i;
    for (size_t k = i + 1; k < found.size(); ++k) {
      if (BuddyRowLess(found[k], found[least])) least = k;
    }
    std::swap(found[i], found[least]);
  }
}

// The NUMA node of a memory node. Some of the messages have no line end, so that the next one follows in the same line.
bool KestrelMemNode2NUMANode(uint32_t memNode, uint32_t &numaNode) {
  const ParamList arguments = MakeArgumentsFor("KestrelMemNode2NUMANode", 1);
  if (arguments == nullptr) return false;
  HVC_ReturnStatus status = NODAL_ParamListAddInt(arguments.get(), memNode);
  if (status != HVC_OK) {
    Warning("The param list for memNode %u could not be created: %#x", memNode, status);
    return false;
  }
  MemNodeRecord record = {};
  status = ReadRecord(NODAL_NODE_memory_memNodes, arguments.get(), record);
  if (status != HVC_OK) {
    Warning("Error %#x while reading /memory/memNodes/%u", status, memNode);
    return false;
  }
  numaNode = record.numaNode;
  return true;
}

// Fills a row from a buddy's name, but for its counts. A buddy of an unknown NUMA node is left out of the report.
bool Identify(std::string_view name, Row &row) {
  name.copy(row.name, sizeof row.name - 1);
  row.type = row.name[std::strlen(row.name) - 1] == 'o' ? "low" : "high";
  row.memNode = static_cast<uint32_t>(std::strtol(row.name + 7, nullptr, 10));
  return KestrelMemNode2NUMANode(row.memNode, row.numaNode);
}

// The buddies that there are, as far as they can be had: a host without them is not an error, and has an empty table.
BuddyRows FindBuddies() {
  BuddyRows found;
  const ParamList names(NODAL_ParamListCreateAndAllocateParams(NODAL_LIST_INSTANCES, kMostBuddies, kMostNameBytes));
  if (names == nullptr) return found;
  if (NODAL_GetInstanceList(NODAL_NODE_system_buddy, nullptr, names.get()) != HVC_OK) return found;

  for (uint32_t i = 0; i < NODAL_ParamListUsedCount(names.get()) && found.count < kMostBuddies; ++i) {
    const char *name = nullptr;
    if (NODAL_ParamListGetString(names.get(), i, &name) != HVC_OK) break;
    if (name == nullptr || std::strncmp(name, "memmap", 6) != 0) continue;
    Row row = {};
    if (Identify(name, row)) found.rows[found.count++] = row;
  }
  return found;
}

// A buddy's name as a message may show it.
struct ShownName {
  explicit ShownName(const Row &row) {
    std::memcpy(text, row.name, sizeof text);
    MakeFitForTerminal(STDERR_FILENO, text);
  }

  char text[sizeof Row::name];
};

HVC_ReturnStatus ReadSizes(Row &row) {
  const ParamList arguments = MakeArgumentsFor("KestrelBuddyGetStats", 1);
  if (arguments == nullptr) return HVC_FAILURE;
  HVC_ReturnStatus status = NODAL_ParamListAddString(arguments.get(), row.name);
  if (status != HVC_OK) {
    Warning("The param list for buddy %s could not be created: %#x", ShownName(row).text, status);
    return status;
  }
  BuddyComprehensiveRecord record = {};
  status = ReadRecord(NODAL_NODE_system_buddy_comprehensive, arguments.get(), record);
  if (status != HVC_OK) {
    Warning("Error %#x while reading %s/comprehensive", status, ShownName(row).text);
    return status;
  }
  std::memcpy(row.sizes, record.sizes, sizeof row.sizes);
  return HVC_OK;
}

void PrintRow(const ReportOptions &options, bool total, const Row &row) {
  PrintFigures(columns, options.csv, total, &row, ReportUnit::kKB);
}

HVC_ReturnStatus KestrelBuddyGetStats(const Report &report, int argc, char **argv) {
  HostRun run;
  HVC_ReturnStatus status = StartHostReport(report, argc, argv, run);
  if (status != HVC_OK) return status;

  const ReportOptions &options = run.options;
  if (!options.csv) Banner("MEMMAP BUDDY STATS", 44).SelectedColumns(columns);
  TablePrintHead(columns, options.csv);
  BuddyRows found = FindBuddies();
  SortRows(found.All());
  Row totals = {};
  std::strcpy(totals.name, "Total");
  for (Row &row : found.All()) {
    status = ReadSizes(row);
    if (status != HVC_OK) return status;
    PrintRow(options, false, row);
    SumFigures(columns, &row, &totals);
  }
  TablePrintSeparator(columns, options.csv);
  PrintRow(options, true, totals);
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
