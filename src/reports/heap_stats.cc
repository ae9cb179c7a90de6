// heap-stats: the limits, sizes and allocations of the kernel's heaps. The default unit is bytes.
#include <cstdlib>
#include <memory>
#include <span>

#include "platkit/records.h"
#include "platkit/warning.h"
#include "src/reports/host_report.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/report_row.h"

namespace kestrel {
namespace {

struct HeapRow {
  HeapStatsRecord heap;
};

using enum Conversion;
using enum FigureUnit;

// Indexes of the columns, for the total row.
enum HeapColumn {
  kName,
  kDynGrow,
  kLowerLimit,
  kUpperLimit,
  kReserved,
  kNumRanges,
  kDlMallocOvhd,
  kUsed,
  kAvail,
  kSize,
  kInitial,
  kMax,
  kPctFreeOfCur,
  kMaxAvail,
  kPctFreeOfMax,
  kLowPctFreeOfMax,
  kNumSuccAllocs,
  kNumFailAllocs,
  kNumGrowthOps,
  kNumShrinkOps,
  kNumReqsPerGrowth,
  kAvgAllocSize,
  kColumns
};

constinit auto columns = ColumnsOf<HeapRow>({
    {"name", "heap name", 35, kS, [](auto &row) { return Text(row.heap.name); }, kInTotal | kMandatory},
    {"dynGrow", "dynamically growable", 12, kD, [](auto &row) { return row.heap.dynGrow; }},
    {"lowerLimit", "lower limit", 7, kD, [](auto &row) { return row.heap.lowerLimit; }},
    {"upperLimit", "upper limit", 7, kD, [](auto &row) { return row.heap.upperLimit; }},
    {"reserved", "reserved", 7, kD, [](auto &row) { return row.heap.reserved; }},
    {"numRanges", "num ranges", 7, kD, [](auto &row) { return row.heap.numRanges; }, kInTotal},
    {"dlMallocOvdh", "DL malloc overhead", 10, kLu, kBytes, [](auto &row) { return row.heap.dlMallocOvhd; }, kInTotal},
    {"used", "current used", 10, kLu, kBytes, [](auto &row) { return row.heap.size - row.heap.avail; }, kInTotal},
    {"avail", "current available", 10, kLu, kBytes, [](auto &row) { return row.heap.avail; }, kInTotal},
    {"size", "current size", 10, kLu, kBytes, [](auto &row) { return row.heap.size; }, kInTotal},
    {"initial", "initial size", 10, kLu, kBytes, [](auto &row) { return row.heap.initial; }, kInTotal},
    {"max", "max size", 11, kLu, kBytes, [](auto &row) { return row.heap.max; }, kInTotal},
    {"pctFreeOfCur", "% free of current", 12, kD, [](auto &row) { return row.heap.pctFreeOfCur; }},
    {"maxAvail", "max available", 12, kLu, kBytes, [](auto &row) { return row.heap.maxAvail; }, kInTotal},
    {"pctFreeOfMax", "% free of max", 7, kD, [](auto &row) { return row.heap.pctFreeOfMax; }},
    {"lowPctFreeOfMax", "lowest % free of max", 12, kD, [](auto &row) { return row.heap.lowPctFreeOfMax; }},
    {"numSuccAllocs", "number of succeeded allocations", 10, kU, [](auto &row) { return row.heap.numSuccAllocs; }},
    // The description says "succeeded" instead of "failed"; it must not change.
    {"numFailAllocs", "number of succeeded allocations", 10, kU, [](auto &row) { return row.heap.numFailAllocs; }},
    {"numGrowthOps", "number of growth operations", 10, kU, [](auto &row) { return row.heap.numGrowthOps; }, kInTotal},
    {"numShrinkOps", "number of shrink operations", 10, kU, [](auto &row) { return row.heap.numShrinkOps; }, kInTotal},
    {"numReqsPerGrowth", "number of requests per growth operations", 10, kU,
     [](auto &row) { return row.heap.numReqsPerGrowth; }},
    {"avgAllocSize", "average allocation size", 10, kU, kBytes, [](auto &row) { return row.heap.avgAllocSize; }},
});
static_assert(std::size(columns) == kColumns);

// The long option --verbose acts like -u without a unit: it resets the unit to the default and prints no descriptions.
// Scripts use it, so it must stay. -v prints the descriptions.
constexpr option kLongNames[] = {
    {"unit", required_argument, nullptr, 'u'},
    {"verbose", no_argument, nullptr, 'u'},
    {"cSelect", required_argument, nullptr, 's'},
    {"csvMode", no_argument, nullptr, 'q'},
    {nullptr, 0, nullptr, 0},
};

struct HeapSums {
  uint64_t numRanges, dlMallocOvhd, size, initial, avail, max, maxAvail;
  uint32_t numGrowthOps, numShrinkOps;

  void Add(const HeapStatsRecord &heap) {
    numRanges += heap.numRanges;
    dlMallocOvhd += heap.dlMallocOvhd;
    size += heap.size;
    initial += heap.initial;
    avail += heap.avail;
    max += heap.max;
    maxAvail += heap.maxAvail;
    numGrowthOps += heap.numGrowthOps;
    numShrinkOps += heap.numShrinkOps;
  }
};

struct Free {
  void operator()(void *memory) const { std::free(memory); }
};

struct Heaps {
  std::unique_ptr<HeapStatsRecord[], Free> records;
  uint32_t count = 0;
  HeapSums sums = {};
};

HVC_ReturnStatus Failed(const char *what, HVC_ReturnStatus status) {
  Warning("KestrelHeapGetMemMapStats: %s failure\n", what);
  return status;
}

// Reads a heap into the next record. Skips a heap that has vanished since it was listed.
HVC_ReturnStatus ReadHeap(NODAL_ParamList *arguments, const char *name, Heaps &heaps) {
  HVC_ReturnStatus status = NODAL_ParamListAddString(arguments, name);
  if (status != HVC_OK) return Failed("NODAL_ParamListAddString()", status);
  HeapStatsRecord record = {};
  status = ReadRecord(nodes::kHeapStats, arguments, record);
  if (status != HVC_OK && status != HVC_NOT_FOUND) return Failed("NODAL_Get()", status);
  if (status == HVC_OK) {
    heaps.records[heaps.count++] = record;
    heaps.sums.Add(record);
  }
  NODAL_ParamListRemoveLastParam(arguments);
  return HVC_OK;
}

HVC_ReturnStatus KestrelHeapGetMemMapStats(Heaps &heaps) {
  ParamList arguments;  // destroyed after `names`
  ParamList names;
  HVC_ReturnStatus status = ListInstances(nodes::kHeaps, nullptr, names);
  if (status != HVC_OK) return Failed("NODAL_GetInstanceListAlloc() for heapList", status);
  const uint32_t count = NODAL_ParamListUsedCount(names.get());
  if (count == 0) {
    Warning("KestrelHeapGetMemMapStats: NODAL_ParamListUsedCount() returned 0\n");
    return HVC_OK;
  }
  heaps.records.reset(static_cast<HeapStatsRecord *>(std::malloc(count * sizeof(HeapStatsRecord))));
  if (heaps.records == nullptr) return Failed("malloc() for stats", HVC_NO_MEMORY);
  arguments = MakeArguments(1);
  if (arguments == nullptr) return Failed("NODAL_ParamListCreate() for heapParam", HVC_NO_RESOURCES);
  for (uint32_t i = 0; i < count; ++i) {
    const char *name = nullptr;
    status = NODAL_ParamListGetString(names.get(), i, &name);
    if (status != HVC_OK) return Failed("NODAL_ParamListGetString()", status);
    status = ReadHeap(arguments.get(), name, heaps);
    if (status != HVC_OK) return status;
  }
  return HVC_OK;
}

void PrintHeap(const HeapStatsRecord &heap, const ReportOptions &options, ReportUnit unit) {
  const HeapRow row = {heap};
  PrintFigures(columns, options.csv, false, &row, unit);
}

// From numRanges on, each total is printed one column too far to the left; scripts rely on this. A total is not printed
// if that column is blank in the total row.
void PrintTotals(const HeapSums &sums, const ReportOptions &options, ReportUnit unit) {
  Value values[kColumns] = {};
  values[kName] = Value("Total");
  values[kNumRanges - 1] = sums.numRanges;
  values[kDlMallocOvhd - 1] = BytesToUnit(sums.dlMallocOvhd, unit);
  values[kUsed - 1] = BytesToUnit(sums.size - sums.avail, unit);
  values[kAvail - 1] = BytesToUnit(sums.avail, unit);
  values[kSize - 1] = BytesToUnit(sums.size, unit);
  values[kInitial - 1] = BytesToUnit(sums.initial, unit);
  values[kMax - 1] = BytesToUnit(sums.max, unit);
  values[kMaxAvail - 1] = BytesToUnit(sums.maxAvail, unit);
  values[kNumGrowthOps - 1] = sums.numGrowthOps;
  values[kNumShrinkOps - 1] = sums.numShrinkOps;
  TablePrintRow(columns, options.csv, true, values);
}

void PrintReport(const Heaps &heaps, const ReportOptions &options, ReportUnit unit) {
  if (!options.csv) {
    const Banner banner("HEAP STATS", 36);
    banner.Setting("Unit", UnitName(unit));
    banner.SelectedColumns(columns);
  }
  TablePrintHead(columns, options.csv);
  for (const HeapStatsRecord &heap : std::span(heaps.records.get(), heaps.count))
    PrintHeap(heap, options, unit);
  TablePrintSeparator(columns, options.csv);
  PrintTotals(heaps.sums, options, unit);
  EndHostReport(columns, options);
}

HVC_ReturnStatus KestrelHeapStatsReport(const Report &report, int argc, char **argv) {
  ReportOptions options;
  HVC_ReturnStatus status = ParseReportOptions(argc, argv, report.options, options);
  if (status != HVC_OK) return status;
  ReportUnit unit = ReportUnit::kBytes;
  if (options.unit != nullptr) status = UnitParse(options.unit, report.inBytes, unit);
  if (status != HVC_OK) return status;
  ColumnsApplySelection(columns, options.selection);

  Heaps heaps;
  // A failure prints a warning and no table, but the report succeeds; scripts rely on this.
  if (KestrelHeapGetMemMapStats(heaps) == HVC_OK) PrintReport(heaps, options, unit);
  return HVC_OK;
}

}  // namespace

constinit const Report kHeapStats = {
    .name = "heap-stats",
    .summary = "the kernel's heaps",
    .options = {"s:u:vq", kLongNames},
    .columns = columns,
    .inBytes = true,
    .sums = Sums::kTotalRow,
    .run = KestrelHeapStatsReport,
};

}  // namespace kestrel
