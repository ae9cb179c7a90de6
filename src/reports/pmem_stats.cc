// The four persistent-memory reports: region stores, regions, extents, and the NUMA placement of regions.
#include <cinttypes>
#include <cstdio>
#include <initializer_list>
#include <string_view>

#include "platkit/records.h"
#include "platkit/warning.h"
#include "src/reports/host_report.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/flags.h"
#include "src/table/report_row.h"

namespace kestrel {
namespace {

using enum Conversion;
using enum FigureUnit;

// The flags of a region. noFlags has no bits, so it is never shown.
constexpr FlagName PMemRegionFlagNames[] = {
    {0, "noFlags"},
    {HVC_REGION_ALLOCATED, "allocated"},
    {HVC_REGION_DANGLING, "dangling"},
    {HVC_REGION_LOCKED, "locked"},
    {HVC_REGION_READ_ONLY, "readOnly"},
    {HVC_REGION_BLOCK_DEVICE, "blockDev"},
    {HVC_REGION_PERSISTENT_RESERVATION, "persistResv"},
    {HVC_REGION_SYSTEM, "system"},
    {HVC_REGION_ZOMBIE, "zombie"},
};

struct RegionStoreRow {
  const char *uuid;
  RegionStoreRecord store;
  RegionStoreCleanRecord clean;
};

struct RegionRow {
  const char *uuid;
  const char *regionUuid;
  RegionRecord region;
  char flags[80];  // long enough for all names
  char numaAffinityMask[19];
};

struct ExtentRow {
  const char *uuid;
  int64_t extentID;
  ExtentRecord extent;
};

struct RegionNumaRow {
  const char *uuid;
  const char *regionUuid;
  RegionNumaRecord numa;
};

namespace region_store {
constinit auto columns = ColumnsOf<RegionStoreRow>({
    {"uuid", "Volume UUID", 40, kS, [](auto &row) { return Text(row.uuid); }},
    {"alloc2MBlocks", "Allocated 2M Blocks", 10, kLu, [](auto &row) { return row.store.allocatedBlocks; }},
    {"resvd2MBlocks", "Reserved 2M Blocks", 10, kLu, [](auto &row) { return row.store.reservedBlocks; }},
    {"avail2MBlocks", "Available Reservable 2M Blocks", 10, kLu, [](auto &row) { return row.store.availableBlocks; }},
    {"totalRegions", "Total regions in the region store", 10, kLu, [](auto &row) { return row.store.totalRegions; }},
    {"freeRegions", "Free regions in the region store", 10, kLu, [](auto &row) { return row.store.freeRegions; }},
    {"total2MBlocks", "Total 2M Blocks", 10, kLu, [](auto &row) { return row.store.totalBlocks; }},
    {"isClean", "Is region store clean ?", 4, kC, kYesNo, [](auto &row) { return row.clean.isClean; }},
});
}  // namespace region_store

namespace regions {
constinit auto columns = ColumnsOf<RegionRow>({
    {"uuid", "Volume UUID", 40, kS, [](auto &row) { return Text(row.uuid); }},
    {"regionUuid", "Region UUID", 40, kS, [](auto &row) { return Text(row.regionUuid); }},
    {"size", "Region memory size", 14, kLu, kBytes, [](auto &row) { return row.region.size; }},
    {"reserved2MBlks", "Reserved 2M blocks", 10, kLu, [](auto &row) { return row.region.reservedBlocks; }},
    {"flags", "Flags", 40, kS, [](auto &row) { return Text(row.flags); }},
    {"numOpened", "Open count", 10, kLu, [](auto &row) { return row.region.openCount; }},
    {"allocated2MBlks", "Allocated 2m blocks", 10, kLu, [](auto &row) { return row.region.allocatedBlocks; }},
    {"managementTag", "Management Tag", 10, kLd, [](auto &row) { return row.region.managementTag; }},
    {"numaAffinityMask", "NUMA affinity mask", 20, kS, [](auto &row) { return Text(row.numaAffinityMask); }},
});
}  // namespace regions

namespace extents {
constinit auto columns = ColumnsOf<ExtentRow>({
    {"uuid", "Volume UUID", 40, kS, [](auto &row) { return Text(row.uuid); }},
    {"extentID", "Extent Number", 10, kLu, [](auto &row) { return row.extentID; }},
    {"numaNode", "NUMA Node of this extent", 10, kLu, [](auto &row) { return row.extent.numaNode; }},
    {"startBlk", "Starting blocknum of extent", 10, kLu, [](auto &row) { return row.extent.startBlock; }},
    {"endBlk", "Ending blocknum of extent", 10, kLu, [](auto &row) { return row.extent.endBlock; }},
    {"startMPN", "Starting MPN of extent", 10, kLu, [](auto &row) { return row.extent.startMPN; }},
    {"endMPN", "Ending MPN of extent", 10, kLu, [](auto &row) { return row.extent.endMPN; }},
});
}  // namespace extents

namespace region_numa {
constinit auto columns = ColumnsOf<RegionNumaRow>({
    {"uuid", "Volume UUID", 40, kS, [](auto &row) { return Text(row.uuid); }},
    {"regionUuid", "Region UUID", 40, kS, [](auto &row) { return Text(row.regionUuid); }},
    {"numaNode", "NUMA node", 10, kD, [](auto &row) { return row.numa.numaNode; }},
    {"num2MAllocated", "Number of 2M blocks allocated", 10, kLu, [](auto &row) { return row.numa.allocatedBlocks; }},
});
}  // namespace region_numa

// Warns if an operation of the function `step` failed, and returns its status.
HVC_ReturnStatus Checked(const char *step, const char *operation, HVC_ReturnStatus status) {
  if (status != HVC_OK) Warning("%s: %s failure\n", step, operation);
  return status;
}

// Creates text arguments for the function `step`.
HVC_ReturnStatus MakeTexts(const char *step, std::initializer_list<const char *> texts, uint32_t capacity,
                           ParamList &arguments) {
  arguments = MakeArguments(capacity);
  HVC_ReturnStatus status = Checked(step, "NODAL_ParamListCreate", arguments != nullptr ? HVC_OK : HVC_FAILURE);
  for (const char *text : texts) {
    if (status != HVC_OK) return status;
    status = Checked(step, "NODAL_ParamListAddString", NODAL_ParamListAddString(arguments.get(), text));
  }
  return status;
}

// Creates text arguments, followed by a number, for the function `step`.
HVC_ReturnStatus MakeTextsAndNumber(const char *step, std::initializer_list<const char *> texts, int32_t number,
                                    ParamList &arguments) {
  const HVC_ReturnStatus status = MakeTexts(step, texts, static_cast<uint32_t>(texts.size()) + 1, arguments);
  if (status != HVC_OK) return status;
  return Checked(step, "NODAL_ParamListAddInt", NODAL_ParamListAddInt(arguments.get(), number));
}

// Lists the instances below these text arguments. A failure to list them causes no warning, because the host may have
// no persistent memory.
template <typename Record>
HVC_ReturnStatus ListBelow(const char *step, NodeRef<Record> node, std::initializer_list<const char *> texts,
                           ParamList &instances) {
  ParamList arguments;
  const HVC_ReturnStatus status = MakeTexts(step, texts, static_cast<uint32_t>(texts.size()), arguments);
  return status == HVC_OK ? ListInstances(node, arguments.get(), instances) : status;
}

// The name at an index of a list; null if it cannot be read. The library rejects null as an argument.
const char *NameAt(const NODAL_ParamList *list, uint32_t index) {
  const char *name = nullptr;
  static_cast<void>(NODAL_ParamListGetString(list, index, &name));
  return name;
}

// A running report.
class PMemReport {
 public:
  PMemReport(ColumnTable columns, const HostRun &run) : columns_(columns), run_(run) {}

  template <typename Row>
  void PrintRow(const Row &row) const {
    PrintFigures(columns_, run_.options.csv, false, &row, run_.unit);
  }

 private:
  ColumnTable columns_;
  const HostRun &run_;
};

// Calls `visit` for each volume until `visit` fails.
template <typename Visit>
HVC_ReturnStatus ForEachVolume(Visit visit) {
  ParamList volumes;
  HVC_ReturnStatus status = ListInstances(nodes::kPMemVolumes, nullptr, volumes);
  if (status != HVC_OK) return status;
  for (uint32_t i = 0; status == HVC_OK && i < NODAL_ParamListUsedCount(volumes.get()); ++i)
    status = visit(volumes.get(), i);
  return status;
}

// Checks that the volume's record can be read.
HVC_ReturnStatus PMemGetVolumeInfo(const char *volume) {
  ParamList arguments;
  const HVC_ReturnStatus status = MakeTexts("PMemGetVolumeInfo", {volume}, 1, arguments);
  PMemVolumeRecord record = {};
  return status == HVC_OK ? ReadRecord(nodes::kPMemVolume, arguments.get(), record) : status;
}

HVC_ReturnStatus PMemGetRegionStoreInfo(RegionStoreRow &row) {
  constexpr char kStep[] = "PMemGetRegionStoreInfo";
  ParamList arguments;
  HVC_ReturnStatus status = MakeTexts(kStep, {row.uuid}, 1, arguments);
  if (status != HVC_OK) return status;
  status = Checked(kStep, "NODAL_Get", ReadRecord(nodes::kRegionStore, arguments.get(), row.store));
  if (status != HVC_OK) return status;
  return ReadRecord(nodes::kRegionStoreClean, arguments.get(), row.clean);
}

HVC_ReturnStatus PMemRegionStoreReport(const PMemReport &report) {
  constexpr char kStep[] = "PMemRegionStoreReport";
  return ForEachVolume([&](const NODAL_ParamList *volumes, uint32_t i) {
    RegionStoreRow row = {};
    HVC_ReturnStatus status = NODAL_ParamListGetString(volumes, i, &row.uuid);
    if (status != HVC_OK) {
      Warning("%s: NODAL_ParamListGetString Failure\n", kStep);  // the capital F must not change
      return status;
    }
    status = Checked(kStep, "PMemGetVolumeInfo", PMemGetVolumeInfo(row.uuid));
    if (status == HVC_OK) status = Checked(kStep, "PMemGetRegionStoreInfo", PMemGetRegionStoreInfo(row));
    if (status == HVC_OK) report.PrintRow(row);
    return status;
  });
}

HVC_ReturnStatus GetRegionsInfo(RegionRow &row) {
  constexpr char kStep[] = "GetRegionsInfo";
  ParamList arguments;
  const HVC_ReturnStatus status = MakeTexts(kStep, {row.uuid, row.regionUuid}, 2, arguments);
  if (status != HVC_OK) return status;
  return Checked(kStep, "NODAL_Get", ReadRecord(nodes::kRegion, arguments.get(), row.region));
}

void FillTexts(RegionRow &row) {
  std::string_view(FlagsDescribe(row.region.flags, PMemRegionFlagNames).Text()).copy(row.flags, sizeof row.flags - 1);
  std::snprintf(row.numaAffinityMask, sizeof row.numaAffinityMask, "0x%" PRIx64, row.region.numaAffinityMask);
}

HVC_ReturnStatus PMemRegionsReport(const PMemReport &report) {
  constexpr char kStep[] = "PMemRegionsReport";
  return ForEachVolume([&](const NODAL_ParamList *volumes, uint32_t i) {
    const char *uuid = nullptr;
    HVC_ReturnStatus status = Checked(kStep, "NODAL_ParamListGetString", NODAL_ParamListGetString(volumes, i, &uuid));
    ParamList regions;
    if (status == HVC_OK) {
      status = ListBelow(kStep, nodes::kRegions, {uuid}, regions);
    }
    if (status != HVC_OK) return status;
    for (uint32_t k = 0; status == HVC_OK && k < NODAL_ParamListUsedCount(regions.get()); ++k) {
      RegionRow row = {};
      row.uuid = uuid;
      status = Checked(kStep, "NODAL_ParamListGetString", NODAL_ParamListGetString(regions.get(), k, &row.regionUuid));
      if (status == HVC_OK) status = Checked(kStep, "GetRegionsInfo", GetRegionsInfo(row));
      if (status != HVC_OK) return status;
      FillTexts(row);
      report.PrintRow(row);
    }
    return status;
  });
}

HVC_ReturnStatus GetExtentsInfo(int32_t extent, ExtentRow &row) {
  constexpr char kStep[] = "GetExtentsInfo";
  ParamList arguments;
  const HVC_ReturnStatus status = MakeTextsAndNumber(kStep, {row.uuid}, extent, arguments);
  if (status != HVC_OK) return status;
  return Checked(kStep, "NODAL_Get", ReadRecord(nodes::kExtents, arguments.get(), row.extent));
}

HVC_ReturnStatus PMemExtentsReport(const PMemReport &report) {
  constexpr char kStep[] = "PMemExtentsReport";
  return ForEachVolume([&](const NODAL_ParamList *volumes, uint32_t i) {
    const char *uuid = NameAt(volumes, i);
    ParamList extents;
    HVC_ReturnStatus status = ListBelow(kStep, nodes::kExtents, {uuid}, extents);
    if (status != HVC_OK) return status;
    for (uint32_t k = 0; k < NODAL_ParamListUsedCount(extents.get()); ++k) {
      int32_t extent = 0;
      status = Checked(kStep, "NODAL_ParamListGetInt32", NODAL_ParamListGetInt32(extents.get(), k, &extent));
      ExtentRow row = {.uuid = uuid, .extentID = extent, .extent = {}};
      if (status == HVC_OK) status = Checked(kStep, "GetExtentsInfo", GetExtentsInfo(extent, row));
      if (status != HVC_OK) return status;
      report.PrintRow(row);
    }
    return status;
  });
}

HVC_ReturnStatus GetRegionsNumaInfo(int32_t node, RegionNumaRow &row) {
  constexpr char kStep[] = "GetRegionsNumaInfo";
  ParamList arguments;
  const HVC_ReturnStatus status = MakeTextsAndNumber(kStep, {row.uuid, row.regionUuid}, node, arguments);
  if (status != HVC_OK) return status;
  return Checked(kStep, "NODAL_Get", ReadRecord(nodes::kRegionNuma, arguments.get(), row.numa));
}

// Warnings spell the function's name in two ways: the first if a list fails, the second if a node fails.
constexpr char kNumaListStep[] = "PMemRegionNumaReport";
constexpr char kNumaNodeStep[] = "PMemRegionsNumaReport";

HVC_ReturnStatus PrintNodes(const PMemReport &report, const char *uuid, const char *regionUuid) {
  ParamList nodes;
  HVC_ReturnStatus status = ListBelow(kNumaListStep, nodes::kRegionNuma, {uuid, regionUuid}, nodes);
  if (status != HVC_OK) return status;
  for (uint32_t i = 0; i < NODAL_ParamListUsedCount(nodes.get()); ++i) {
    int32_t node = 0;
    status = Checked(kNumaNodeStep, "NODAL_ParamListGetInt32", NODAL_ParamListGetInt32(nodes.get(), i, &node));
    RegionNumaRow row = {.uuid = uuid, .regionUuid = regionUuid, .numa = {}};
    if (status == HVC_OK) status = Checked(kNumaNodeStep, "GetRegionsNumaInfo", GetRegionsNumaInfo(node, row));
    if (status != HVC_OK) return status;
    report.PrintRow(row);
  }
  return HVC_OK;
}

HVC_ReturnStatus PMemRegionNumaReport(const PMemReport &report) {
  return ForEachVolume([&](const NODAL_ParamList *volumes, uint32_t i) {
    const char *uuid = NameAt(volumes, i);
    ParamList regions;
    HVC_ReturnStatus status = ListBelow(kNumaListStep, nodes::kRegions, {uuid}, regions);
    if (status != HVC_OK) return status;
    for (uint32_t k = 0; status == HVC_OK && k < NODAL_ParamListUsedCount(regions.get()); ++k)
      status = PrintNodes(report, uuid, NameAt(regions.get(), k));
    return status;
  });
}

// Prints the rows of one of the persistent-memory reports.
using PrintRows = HVC_ReturnStatus (*)(const PMemReport &report);

HVC_ReturnStatus KestrelPMemReport(const Report &report, const char *title, PrintRows printRows, int argc,
                                   char **argv) {
  HostRun run;
  const HVC_ReturnStatus status = StartHostReport(report, argc, argv, run);
  if (status != HVC_OK) return status;

  const ReportOptions &options = run.options;
  if (!options.csv) {
    const Banner banner(title, 49);
    banner.Setting("Unit", UnitName(run.unit));
    banner.SelectedColumns(report.columns);
  }
  TablePrintHead(report.columns, options.csv);
  TablePrintSeparator(report.columns, options.csv);  // these reports print two lines of dashes above the rows
  // The report succeeds even if its walk stopped at a failure.
  static_cast<void>(printRows({report.columns, run}));
  EndHostReport(report.columns, options);
  return HVC_OK;
}

HVC_ReturnStatus RunRegionStores(const Report &report, int argc, char **argv) {
  return KestrelPMemReport(report, "PERSISTENT MEMORY REGIONSTORE STATS", PMemRegionStoreReport, argc, argv);
}

HVC_ReturnStatus RunRegions(const Report &report, int argc, char **argv) {
  return KestrelPMemReport(report, "PERSISTENT MEMORY REGION STATS", PMemRegionsReport, argc, argv);
}

HVC_ReturnStatus RunExtents(const Report &report, int argc, char **argv) {
  return KestrelPMemReport(report, "PERSISTENT MEMORY EXTENT STATS", PMemExtentsReport, argc, argv);
}

HVC_ReturnStatus RunRegionNuma(const Report &report, int argc, char **argv) {
  return KestrelPMemReport(report, "PERSISTENT MEMORY REGION NUMA STATS", PMemRegionNumaReport, argc, argv);
}

constexpr OptionSyntax kOptions = {"s:u:vq"};

}  // namespace

constinit const Report kPMemRegionStoreStats = {
    .name = "pmem-regionstore-stats",
    .summary = "the region store of each volume of persistent memory",
    .options = kOptions,
    .columns = region_store::columns,
    .run = RunRegionStores,
};

constinit const Report kPMemRegionStats = {
    .name = "pmem-region-stats",
    .summary = "the regions of persistent memory",
    .options = kOptions,
    .columns = regions::columns,
    .run = RunRegions,
};

constinit const Report kPMemExtentStats = {
    .name = "pmem-extent-stats",
    .summary = "the extents of persistent memory, and their places",
    .options = kOptions,
    .columns = extents::columns,
    .run = RunExtents,
};

constinit const Report kPMemRegionNumaStats = {
    .name = "pmem-region-numa-stats",
    .summary = "the NUMA placement of each region of persistent memory",
    .options = kOptions,
    .columns = region_numa::columns,
    .run = RunRegionNuma,
};

}  // namespace kestrel
