// The four persistent-memory reports. A failure stops the walk over the volumes, but the exit status is still 0.
#include <algorithm>

#include "tests/faults/machine_hosts.h"
#include "tests/faults/report_case.h"

namespace faults::pmem_stats {
namespace {

constexpr char kVolumes[] = "memory_pmem_volumes";
constexpr char kStore[] = "memory_pmem_volumes_regionStore_info";
constexpr char kClean[] = "memory_pmem_volumes_regionStore_isClean";
constexpr char kRegions[] = "memory_pmem_volumes_regionStore_regions";
constexpr char kRegion[] = "memory_pmem_volumes_regionStore_regions_info";
constexpr char kNuma[] = "memory_pmem_volumes_regionStore_regions_numaAllocInfo";
constexpr char kExtents[] = "memory_pmem_volumes_extents";

constexpr char kGet[] = "NODAL_Get";
constexpr char kList[] = "NODAL_GetInstanceListAlloc";

constexpr char kStores[] = "pmem-regionstore-stats";
constexpr char kRegionsReport[] = "pmem-region-stats";
constexpr char kExtentsReport[] = "pmem-extent-stats";
constexpr char kNumaReport[] = "pmem-region-numa-stats";

std::string Banner(const std::string &word, const std::string &unit, const std::string &columns) {
  return "\n PERSISTENT MEMORY " + word +
         " STATS: <time>\n -------------------------------------------------\n   Unit             : " + unit +
         "\n   Selected columns : " + columns + "\n\n";
}

std::string Rule(size_t length) { return std::string(length, '-') + '\n'; }

// A table that is `length` characters wide. These reports print two rules below the header.
std::string Table(size_t length, const std::string &header, const std::string &rows) {
  return Rule(length) + header + Rule(length) + Rule(length) + rows + Rule(length);
}

class PMemStats : public testing::TestWithParam<ReportCase> {};

TEST_P(PMemStats, AnswersAs) { Check(GetParam()); }

// Region stores.

constexpr char kStoreCsv[] =
    "uuid,alloc2MBlocks,resvd2MBlocks,avail2MBlocks,totalRegions,freeRegions,total2MBlocks,isClean\n"
    "vol-1,1001,1002,1003,1004,1005,1006,y\n"
    "vol-2,2001,2002,2003,2004,2005,2006,n\n"
    "vol-3,3001,3002,3003,3004,3005,3006,y\n";

constexpr char kStoreDescriptions[] = R"(Description of report header labels:
                uuid: Volume UUID
       alloc2MBlocks: Allocated 2M Blocks
       resvd2MBlocks: Reserved 2M Blocks
       avail2MBlocks: Available Reservable 2M Blocks
        totalRegions: Total regions in the region store
         freeRegions: Free regions in the region store
       total2MBlocks: Total 2M Blocks
             isClean: Is region store clean ?
)";

const std::string kStoreTable =
    Banner("REGIONSTORE", "KB", "(all)") +
    Table(129,
          "                                    uuid alloc2MBlocks resvd2MBlocks avail2MBlocks totalRegions freeRegions "
          "total2MBlocks isClean\n",
          "                                   vol-1          1001          1002          1003         1004        1005 "
          "         1006       y\n"
          "                                   vol-2          2001          2002          2003         2004        2005 "
          "         2006       n\n"
          "                                   vol-3          3001          3002          3003         3004        3005 "
          "         3006       y\n");

// A record with figures at the ends of their ranges.
StandinHost FullStore() {
  const RegionStoreRecord record = {.allocatedBlocks = UINT64_MAX,
                                    .reservedBlocks = UINT64_MAX,
                                    .availableBlocks = 0,
                                    .totalRegions = UINT32_MAX,
                                    .freeRegions = 0x80000000,
                                    .totalBlocks = 0x8000000000000000,
                                    .unread_40 = {}};
  return PMemHost().AddList(kVolumes, {}, {"vol-1"}).AddRecord(kStore, {"vol-1"}, record);
}

const std::string kNoStoreColumns = Banner("REGIONSTORE", "Page (4K)", "(none)") + "\n\n\n\n\n\n\n\n";

const ReportCase kStoresCases[] = {
    {"Table", PMemHost, "-r pmem-regionstore-stats", kStoreTable.c_str()},
    {"Csv", PMemHost, "-r pmem-regionstore-stats -q", kStoreCsv},
    // The report checks and shows the unit, but converts no figures.
    {"CsvInMbWithDescriptions",
     PMemHost,
     "-r pmem-regionstore-stats --csvMode --verbose --unit=MB",
     {kStoreCsv, kStoreDescriptions}},
    {"NoColumns", PMemHost, "-r pmem-regionstore-stats -s name -u pg", kNoStoreColumns.c_str()},
    {"NoColumnsInCsv", PMemHost, "-r pmem-regionstore-stats -q -s ''", "\n\n\n\n"},
    {"LargeFigures", FullStore,
     "-r pmem-regionstore-stats -q -s alloc2mblocks:totalRegions:freeRegions:total2MBlocks:resvd2MBlocks",
     "alloc2MBlocks,resvd2MBlocks,totalRegions,freeRegions,total2MBlocks\n"
     "18446744073709551615,18446744073709551615,4294967295,2147483648,9223372036854775808\n"},
};

INSTANTIATE_TEST_SUITE_P(Stores, PMemStats, testing::ValuesIn(kStoresCases), NameOf<ReportCase>);

// Regions.

constexpr char kRegionCsv[] =
    "uuid,regionUuid,size,reserved2MBlks,flags,numOpened,allocated2MBlks,managementTag,numaAffinityMask\n"
    "vol-1,reg-a,1100,1101,allocated,1102,1103,1104,0x44c\n"
    "vol-1,reg-b,1200,1201,allocated:readOnly,1202,1203,1204,0x4b0\n"
    "vol-2,reg-c,2100,2101,(none),2102,2103,2104,0x834\n"
    "vol-3,reg-d,3100,3101,zombie,3102,3103,3104,0xc1c\n"
    "vol-3,reg-e,3200,3201,dangling:locked:system,3202,3203,3204,0xc80\n";

constexpr char kRegionDescriptions[] = R"(Description of report header labels:
                uuid: Volume UUID
          regionUuid: Region UUID
                size: Region memory size
      reserved2MBlks: Reserved 2M blocks
               flags: Flags
           numOpened: Open count
     allocated2MBlks: Allocated 2m blocks
       managementTag: Management Tag
    numaAffinityMask: NUMA affinity mask
)";

const std::string kRegionTable =
    Banner("REGION", "MB", "uuid:size:flags:numaAffinityMask") +
    Table(117,
          "                                    uuid           size                                    flags     "
          "numaAffinityMask\n",
          "                                   vol-1              2                                allocated          "
          "      0x44c\n"
          "                                   vol-1              2                       allocated:readOnly          "
          "      0x4b0\n"
          "                                   vol-2              3                                   (none)          "
          "      0x834\n"
          "                                   vol-3              4                                   zombie          "
          "      0xc1c\n"
          "                                   vol-3              4                   dangling:locked:system          "
          "      0xc80\n");

struct RegionFigures {
  uint64_t size = 0;
  uint32_t flags = 0;
  uint16_t tag = 0;
  uint64_t mask = 0;
};

StandinHost OneRegion(const RegionFigures &figures) {
  RegionRecord record = {};
  record.size = figures.size;
  record.reservedBlocks = 1;
  record.flags = figures.flags;
  record.openCount = 3;
  record.allocatedBlocks = 4;
  record.managementTag = figures.tag;
  record.numaAffinityMask = figures.mask;
  return StandinHost()
      .AddList(kVolumes, {}, {"v"})
      .AddList(kRegions, {"v"}, {"r"})
      .AddRecord(kRegion, {"v", "r"}, record);
}

constexpr ReportCase Sized(const char *name, StandinHost (*host)(), const char *unit, const char *size) {
  return {name, host, {"-r pmem-region-stats -q -s size -u", unit}, {"size\n", size, "\n"}};
}

constexpr ReportCase Flagged(const char *name, StandinHost (*host)(), const char *flags) {
  return {name, host, "-r pmem-region-stats -q -s flags", {"flags\n", flags, "\n"}};
}

constexpr char kAllFlags[] = "allocated:dangling:locked:readOnly:blockDev:persistResv:system:zombie";

const std::string kWideTable =
    Banner("REGION", "KB", "flags:numOpened:allocated2MBlks:managementTag:numaAffinityMask") +
    Table(102,
          "                                   flags  numOpened allocated2MBlks managementTag     "
          "numaAffinityMask\n",
          std::string(kAllFlags) + " 3                   4                       65535" + std::string(29, ' ') +
              "0xffffffffffffffff" + std::string(28, ' ') + "\n");

const ReportCase kRegionsCases[] = {
    {"Table", PMemHost, "-r pmem-region-stats -umb -s NUMAAFFINITYMASK:flags:size:uuid", kRegionTable.c_str()},
    {"Csv", PMemHost, "-r pmem-region-stats -q", kRegionCsv},
    {"CsvWithDescriptions", PMemHost, "-r pmem-region-stats -q -v", {kRegionCsv, kRegionDescriptions}},
    {"CsvInPages", PMemHost, "-r pmem-region-stats -q -u pg -s size", "size\n275\n300\n525\n775\n800\n"},
    // Texts wider than their columns shift the next fields until there is room again.
    {"TableWithWideTexts", [] { return OneRegion({.flags = 0xff, .tag = 0xffff, .mask = UINT64_MAX}); },
     "-r pmem-region-stats -s flags:numOpened:allocated2MBlks:managementTag:numaAffinityMask", kWideTable.c_str()},
};

INSTANTIATE_TEST_SUITE_P(Regions, PMemStats, testing::ValuesIn(kRegionsCases), NameOf<ReportCase>);

constexpr ReportCase kRegionSizeCases[] = {
    Sized(
        "NothingInKb", [] { return OneRegion({.size = 0}); }, "kb", "0"),
    Sized(
        "OneByteInKb", [] { return OneRegion({.size = 1}); }, "kb", "1"),
    Sized(
        "OneByteInMb", [] { return OneRegion({.size = 1}); }, "mb", "1"),
    Sized(
        "OneByteInPages", [] { return OneRegion({.size = 1}); }, "pg", "1"),
    Sized(
        "FiveKbInPages", [] { return OneRegion({.size = 5120}); }, "pg", "2"),
    Sized(
        "OneByteMoreThanAPage", [] { return OneRegion({.size = 4097}); }, "pg", "2"),
    Sized(
        "OneByteMoreThanOneMb", [] { return OneRegion({.size = 0x100001}); }, "mb", "2"),
    // UINT64_MAX is an ordinary size, which wraps.
    Sized(
        "AllOnesInKb", [] { return OneRegion({.size = UINT64_MAX}); }, "kb", "0"),
    Sized(
        "AllOnesInMb", [] { return OneRegion({.size = UINT64_MAX}); }, "mb", "0"),
    Sized(
        "LargestInKb", [] { return OneRegion({.size = UINT64_MAX - 1023}); }, "kb", "18014398509481983"),
    Sized(
        "LargestInMb", [] { return OneRegion({.size = UINT64_MAX - 1023}); }, "mb", "17592186044416"),
    Sized(
        "LargestInPages", [] { return OneRegion({.size = UINT64_MAX - 1023}); }, "pg", "4503599627370496"),
};

INSTANTIATE_TEST_SUITE_P(RegionSize, PMemStats, testing::ValuesIn(kRegionSizeCases), NameOf<ReportCase>);

constexpr ReportCase kRegionFlagsCases[] = {
    Flagged(
        "None", [] { return OneRegion({.flags = 0}); }, "(none)"),
    Flagged(
        "Two", [] { return OneRegion({.flags = 0x9}); }, "allocated:readOnly"),
    Flagged(
        "One", [] { return OneRegion({.flags = 0x10}); }, "blockDev"),
    Flagged(
        "AllThatHaveNames", [] { return OneRegion({.flags = 0xff}); }, kAllFlags),
    Flagged(
        "AllOnes", [] { return OneRegion({.flags = 0xffffffff}); }, kAllFlags),
    Flagged(
        "NoneThatHasAName", [] { return OneRegion({.flags = 0xffffff00}); }, "(none)"),
    Flagged(
        "OneWithAName", [] { return OneRegion({.flags = 0x80000020}); }, "persistResv"),
};

INSTANTIATE_TEST_SUITE_P(RegionFlags, PMemStats, testing::ValuesIn(kRegionFlagsCases), NameOf<ReportCase>);

constexpr ReportCase kRegionMarksCases[] = {
    {"Nothing", [] { return OneRegion({}); }, "-r pmem-region-stats -q -s managementTag:numaAffinityMask",
     "managementTag,numaAffinityMask\n0,0x0\n"},
    {"AllOnes", [] { return OneRegion({.tag = 0xffff, .mask = UINT64_MAX}); },
     "-r pmem-region-stats -q -s managementTag:numaAffinityMask",
     "managementTag,numaAffinityMask\n65535,0xffffffffffffffff\n"},
};

INSTANTIATE_TEST_SUITE_P(RegionMarks, PMemStats, testing::ValuesIn(kRegionMarksCases), NameOf<ReportCase>);

// Extents.

constexpr char kExtentCsv[] =
    "uuid,extentID,numaNode,startBlk,endBlk,startMPN,endMPN\n"
    "vol-1,0,1005,1001,1002,1003,1004\n"
    "vol-1,1,1105,1101,1102,1103,1104\n"
    "vol-2,18446744073709551615,2005,2001,2002,2003,2004\n"
    "vol-3,5,3005,3001,3002,3003,3004\n"
    "vol-3,6,3105,3101,3102,3103,3104\n";

constexpr char kExtentDescriptions[] = R"(Description of report header labels:
                uuid: Volume UUID
            extentID: Extent Number
            numaNode: NUMA Node of this extent
            startBlk: Starting blocknum of extent
              endBlk: Ending blocknum of extent
            startMPN: Starting MPN of extent
              endMPN: Ending MPN of extent
)";

const std::string kExtentTable =
    Banner("EXTENT", "Page (4K)", "(all)") +
    Table(
        106,
        "                                    uuid   extentID   numaNode   startBlk     endBlk   startMPN     endMPN\n",
        "                                   vol-1          0       1005       1001       1002       1003       1004\n"
        "                                   vol-1          1       1105       1101       1102       1103       1104\n"
        "                                   vol-2 18446744073709551615 2005   2001       2002       2003       2004\n"
        "                                   vol-3          5       3005       3001       3002       3003       3004\n"
        "                                   vol-3          6       3105       3101       3102       3103       3104\n");

const ReportCase kExtentsCases[] = {
    {"Table", PMemHost, "-r pmem-extent-stats -u pg", kExtentTable.c_str()},
    {"TableWithDescriptions", PMemHost, "-r pmem-extent-stats -vu pg", {kExtentTable.c_str(), kExtentDescriptions}},
    {"Csv", PMemHost, "-r pmem-extent-stats -q", kExtentCsv},
    {"LargestAndSmallestNumber",
     [] {
       return PMemHost()
           .AddList(kVolumes, {}, {"vol-1"})
           .AddList(kExtents, {"vol-1"}, {INT32_MAX, INT32_MIN})
           .AddRecord(kExtents, {"vol-1", INT32_MAX}, ExtentRecord{})
           .AddRecord(kExtents, {"vol-1", INT32_MIN}, ExtentRecord{});
     },
     "-r pmem-extent-stats -q -s extentID:numaNode", "extentID,numaNode\n2147483647,0\n18446744071562067968,0\n"},
};

INSTANTIATE_TEST_SUITE_P(Extents, PMemStats, testing::ValuesIn(kExtentsCases), NameOf<ReportCase>);

// Nodes of regions.

constexpr char kNumaCsv[] =
    "uuid,regionUuid,numaNode,num2MAllocated\n"
    "vol-1,reg-a,10,1001\nvol-1,reg-a,11,1002\nvol-1,reg-b,12,1003\n"
    "vol-2,reg-c,20,2001\n"
    "vol-3,reg-d,30,3001\nvol-3,reg-e,31,3002\nvol-3,reg-e,32,3003\n";

constexpr char kNumaDescriptions[] = R"(Description of report header labels:
                uuid: Volume UUID
          regionUuid: Region UUID
            numaNode: NUMA node
      num2MAllocated: Number of 2M blocks allocated
)";

const std::string kNumaTable =
    Banner("REGION NUMA", "KB", "(all)") +
    Table(
        107,
        "                                    uuid                               regionUuid   numaNode num2MAllocated\n",
        "                                   vol-1                                    reg-a         10           1001\n"
        "                                   vol-1                                    reg-a         11           1002\n"
        "                                   vol-1                                    reg-b         12           1003\n"
        "                                   vol-2                                    reg-c         20           2001\n"
        "                                   vol-3                                    reg-d         30           3001\n"
        "                                   vol-3                                    reg-e         31           3002\n"
        "                                   vol-3                                    reg-e         32           "
        "3003\n");

const ReportCase kNodesCases[] = {
    {"Table", PMemHost, "-r pmem-region-numa-stats", kNumaTable.c_str()},
    {"Csv", PMemHost, "-r pmem-region-numa-stats -q", kNumaCsv},
    {"CsvWithDescriptions", PMemHost, "-r pmem-region-numa-stats -qv", {kNumaCsv, kNumaDescriptions}},
    {"LargeFigures",
     [] {
       return PMemHost()
           .AddList(kVolumes, {}, {"vol-2"})
           .AddRecord(kNuma, {"vol-2", "reg-c", 0},
                      RegionNumaRecord{.numaNode = UINT32_MAX, .allocatedBlocks = UINT64_MAX});
     },
     "-r pmem-region-numa-stats -q -s numaNode:num2MAllocated", "numaNode,num2MAllocated\n-1,18446744073709551615\n"},
};

INSTANTIATE_TEST_SUITE_P(Nodes, PMemStats, testing::ValuesIn(kNodesCases), NameOf<ReportCase>);

// All four reports.

struct Kind {
  const char *name;  // of the test
  const char *report;
  const char *word;  // the report's word in the banner
};

void PrintTo(const Kind &kind, std::ostream *stream) { *stream << kind.name; }

class PMemKind : public testing::TestWithParam<Kind> {
 protected:
  std::string Arguments(const std::string &options) const {
    return std::string("-r ") + GetParam().report + " " + options;
  }
};

TEST_P(PMemKind, OffersNoBytes) {
  for (const char *unit : {"b", "tb", "''"}) {
    const StandinRun run = Check(PMemHost(), Arguments(std::string("-v -u ") + unit), "",
                                 "Invalid unit specified. Choose from {mb, kb, pg}\n", 1);
    EXPECT_EQ(run.calls, std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
  }
}

TEST_P(PMemKind, NamesItselfAndTheUnit) {
  const std::string table = Table(40, "                                    uuid\n", "");
  const StandinHost host = StandinHost().AddList(kVolumes, {}, {});
  const std::vector<std::pair<const char *, const char *>> units = {{"mb", "MB"}, {"KB", "KB"}, {"pg", "Page (4K)"}};
  for (const auto &[unit, name] : units) {
    Check(host, Arguments(std::string("-s uuid -u ") + unit), Banner(GetParam().word, name, "uuid") + table);
  }
}

TEST_P(PMemKind, MayHaveNoVolumes) {
  const std::string output = Banner(GetParam().word, "KB", "uuid") +
                             Table(40, "                                    uuid\n", "") +
                             "Description of report header labels:\n                uuid: Volume UUID\n";
  Check(StandinHost().AddList(kVolumes, {}, {}), Arguments("-v -s uuid"), output);
  Check(PMemHost().Fail({.operation = kList, .node = kVolumes}), Arguments("-v -s uuid"), output);
}

TEST_P(PMemKind, MayHaveNoVolumesInCsv) { Check(StandinHost(), Arguments("-q -s uuid"), "uuid\n"); }

INSTANTIATE_TEST_SUITE_P(Kinds, PMemKind,
                         testing::Values(Kind{"Stores", kStores, "REGIONSTORE"},
                                         Kind{"Regions", kRegionsReport, "REGION"},
                                         Kind{"Extents", kExtentsReport, "EXTENT"},
                                         Kind{"Nodes", kNumaReport, "REGION NUMA"}),
                         NameOf<Kind>);

// After a failure, here in the third volume, the closing line and descriptions are still printed.
TEST(PMemFailure, LeavesTheTableClosed) {
  StandinHost host = PMemHost();
  host.Fail({.operation = kGet, .node = kClean, .call = 3, .status = 0x0bad0003});
  Check(host, "-r pmem-regionstore-stats -v -s isClean",
        Banner("REGIONSTORE", "KB", "isClean") + Table(7, "isClean\n", "      y\n      n\n") +
            "Description of report header labels:\n             isClean: Is region store clean ?\n",
        "PMemRegionStoreReport: PMemGetRegionStoreInfo failure\n");
}

TEST(PMemFailure, StandsBetweenTheRowsAndTheEnd) {
  StandinHost host = PMemHost();
  host.Fail({.operation = kGet, .node = kNuma, .call = 5});
  const StandinRun run = RunKestrel(host, {"-r", "pmem-region-numa-stats", "-s", "numaNode"}, {.errorsToOutput = true});
  EXPECT_EQ(run.outcome.output,
            Banner("REGION NUMA", "KB", "numaNode") + Rule(10) + "  numaNode\n" + Rule(10) + Rule(10) +
                "        10\n        11\n        12\n        20\n"
                "GetRegionsNumaInfo: NODAL_Get failure\nPMemRegionsNumaReport: GetRegionsNumaInfo failure\n" +
                Rule(10));
  EXPECT_EQ(run.outcome.exitStatus, 0);
}

// Empty volumes and regions have no rows.
TEST(PMemVolumes, MayBeEmpty) {
  Check(PMemHost().AddList(kRegions, {"vol-1"}, {}), "-r pmem-region-stats -qs regionUuid",
        "regionUuid\nreg-c\nreg-d\nreg-e\n");
  Check(PMemHost().AddList(kExtents, {"vol-2"}, {}), "-r pmem-extent-stats -qs extentID", "extentID\n0\n1\n5\n6\n");
  Check(PMemHost().AddList(kRegions, {"vol-3"}, {}), "-r pmem-region-numa-stats -qs regionUuid",
        "regionUuid\nreg-a\nreg-a\nreg-b\nreg-c\n");
  Check(PMemHost().AddList(kNuma, {"vol-1", "reg-a"}, {}), "-r pmem-region-numa-stats -qs regionUuid",
        "regionUuid\nreg-b\nreg-c\nreg-d\nreg-e\nreg-e\n");
}

// A host with the first volume only.

StandinHost FirstVolume() { return PMemHost().AddList(kVolumes, {}, {"vol-1"}); }

TEST(PMemCalls, OfAVolumeAndItsStore) {
  EXPECT_EQ(CallsThatCount(RunKestrel(FirstVolume(), {"-r", "pmem-regionstore-stats"})),
            Lines("NODAL_CheckSig(21) = 0\n"
                  "NODAL_GetInstanceListAlloc(memory_pmem_volumes, []) = 0 list1\n"
                  "NODAL_ParamListGetString(list1, 0) = 0\n"
                  "NODAL_ParamListCreate(1, 1) = list2\n"
                  "NODAL_ParamListAddString(list2, \"vol-1\") = 0\n"
                  "NODAL_Get(memory_pmem_volumes_info, [\"vol-1\"], 40) = 0\n"
                  "NODAL_ParamListDestroy(list2)\n"
                  "NODAL_ParamListCreate(1, 1) = list3\n"
                  "NODAL_ParamListAddString(list3, \"vol-1\") = 0\n"
                  "NODAL_Get(memory_pmem_volumes_regionStore_info, [\"vol-1\"], 48) = 0\n"
                  "NODAL_Get(memory_pmem_volumes_regionStore_isClean, [\"vol-1\"], 1) = 0\n"
                  "NODAL_ParamListDestroy(list3)\n"
                  "NODAL_ParamListDestroy(list1)\n"));
}

TEST(PMemCalls, OfItsRegions) {
  EXPECT_EQ(CallsThatCount(RunKestrel(FirstVolume(), {"-r", "pmem-region-stats"})),
            Lines("NODAL_CheckSig(21) = 0\n"
                  "NODAL_GetInstanceListAlloc(memory_pmem_volumes, []) = 0 list1\n"
                  "NODAL_ParamListGetString(list1, 0) = 0\n"
                  "NODAL_ParamListCreate(1, 1) = list2\n"
                  "NODAL_ParamListAddString(list2, \"vol-1\") = 0\n"
                  "NODAL_GetInstanceListAlloc(memory_pmem_volumes_regionStore_regions, [\"vol-1\"]) = 0 list3\n"
                  "NODAL_ParamListDestroy(list2)\n"
                  "NODAL_ParamListGetString(list3, 0) = 0\n"
                  "NODAL_ParamListCreate(1, 2) = list4\n"
                  "NODAL_ParamListAddString(list4, \"vol-1\") = 0\n"
                  "NODAL_ParamListAddString(list4, \"reg-a\") = 0\n"
                  "NODAL_Get(memory_pmem_volumes_regionStore_regions_info, [\"vol-1\",\"reg-a\"], 80) = 0\n"
                  "NODAL_ParamListDestroy(list4)\n"
                  "NODAL_ParamListGetString(list3, 1) = 0\n"
                  "NODAL_ParamListCreate(1, 2) = list5\n"
                  "NODAL_ParamListAddString(list5, \"vol-1\") = 0\n"
                  "NODAL_ParamListAddString(list5, \"reg-b\") = 0\n"
                  "NODAL_Get(memory_pmem_volumes_regionStore_regions_info, [\"vol-1\",\"reg-b\"], 80) = 0\n"
                  "NODAL_ParamListDestroy(list5)\n"
                  "NODAL_ParamListDestroy(list3)\n"
                  "NODAL_ParamListDestroy(list1)\n"));
}

TEST(PMemCalls, TheRegionsAreCountedAgainAfterEveryRow) {
  const StandinRun run = RunKestrel(FirstVolume(), {"-r", "pmem-region-stats"});
  EXPECT_EQ(std::count(run.calls.begin(), run.calls.end(), "NODAL_ParamListUsedCount(list3) = 2"), 3) << run;
}

TEST(PMemCalls, OfItsExtents) {
  EXPECT_EQ(CallsThatCount(RunKestrel(FirstVolume(), {"-r", "pmem-extent-stats"})),
            Lines("NODAL_CheckSig(21) = 0\n"
                  "NODAL_GetInstanceListAlloc(memory_pmem_volumes, []) = 0 list1\n"
                  "NODAL_ParamListGetString(list1, 0) = 0\n"
                  "NODAL_ParamListCreate(1, 1) = list2\n"
                  "NODAL_ParamListAddString(list2, \"vol-1\") = 0\n"
                  "NODAL_GetInstanceListAlloc(memory_pmem_volumes_extents, [\"vol-1\"]) = 0 list3\n"
                  "NODAL_ParamListDestroy(list2)\n"
                  "NODAL_ParamListGetInt32(list3, 0) = 0\n"
                  "NODAL_ParamListCreate(1, 2) = list4\n"
                  "NODAL_ParamListAddString(list4, \"vol-1\") = 0\n"
                  "NODAL_ParamListAddInt(list4, 0) = 0\n"
                  "NODAL_Get(memory_pmem_volumes_extents, [\"vol-1\",0], 40) = 0\n"
                  "NODAL_ParamListDestroy(list4)\n"
                  "NODAL_ParamListGetInt32(list3, 1) = 0\n"
                  "NODAL_ParamListCreate(1, 2) = list5\n"
                  "NODAL_ParamListAddString(list5, \"vol-1\") = 0\n"
                  "NODAL_ParamListAddInt(list5, 1) = 0\n"
                  "NODAL_Get(memory_pmem_volumes_extents, [\"vol-1\",1], 40) = 0\n"
                  "NODAL_ParamListDestroy(list5)\n"
                  "NODAL_ParamListDestroy(list3)\n"
                  "NODAL_ParamListDestroy(list1)\n"));
}

std::string NodesListed(const std::string &region, const std::string &list) {
  return "NODAL_GetInstanceListAlloc(memory_pmem_volumes_regionStore_regions_numaAllocInfo, [\"vol-1\",\"" + region +
         "\"]) = 0 " + list;
}

TEST(PMemCalls, OfTheNodesOfItsRegions) {
  const StandinHost host = FirstVolume().AddList(kNuma, {"vol-1", "reg-a"}, {1});
  EXPECT_EQ(CallsThatCount(RunKestrel(host, {"-r", "pmem-region-numa-stats"})),
            (std::vector<std::string>{
                "NODAL_CheckSig(21) = 0",
                "NODAL_GetInstanceListAlloc(memory_pmem_volumes, []) = 0 list1",
                "NODAL_ParamListGetString(list1, 0) = 0",
                "NODAL_ParamListCreate(1, 1) = list2",
                "NODAL_ParamListAddString(list2, \"vol-1\") = 0",
                "NODAL_GetInstanceListAlloc(memory_pmem_volumes_regionStore_regions, [\"vol-1\"]) = 0 list3",
                "NODAL_ParamListDestroy(list2)",
                "NODAL_ParamListGetString(list3, 0) = 0",
                "NODAL_ParamListCreate(1, 2) = list4",
                "NODAL_ParamListAddString(list4, \"vol-1\") = 0",
                "NODAL_ParamListAddString(list4, \"reg-a\") = 0",
                NodesListed("reg-a", "list5"),
                "NODAL_ParamListDestroy(list4)",
                "NODAL_ParamListGetInt32(list5, 0) = 0",
                "NODAL_ParamListCreate(1, 3) = list6",
                "NODAL_ParamListAddString(list6, \"vol-1\") = 0",
                "NODAL_ParamListAddString(list6, \"reg-a\") = 0",
                "NODAL_ParamListAddInt(list6, 1) = 0",
                "NODAL_Get(memory_pmem_volumes_regionStore_regions_numaAllocInfo, [\"vol-1\",\"reg-a\",1], 12) = 0",
                "NODAL_ParamListDestroy(list6)",
                "NODAL_ParamListDestroy(list5)",
                "NODAL_ParamListGetString(list3, 1) = 0",
                "NODAL_ParamListCreate(1, 2) = list7",
                "NODAL_ParamListAddString(list7, \"vol-1\") = 0",
                "NODAL_ParamListAddString(list7, \"reg-b\") = 0",
                NodesListed("reg-b", "list8"),
                "NODAL_ParamListDestroy(list7)",
                "NODAL_ParamListGetInt32(list8, 0) = 0",
                "NODAL_ParamListCreate(1, 3) = list9",
                "NODAL_ParamListAddString(list9, \"vol-1\") = 0",
                "NODAL_ParamListAddString(list9, \"reg-b\") = 0",
                "NODAL_ParamListAddInt(list9, 1) = 0",
                "NODAL_Get(memory_pmem_volumes_regionStore_regions_numaAllocInfo, [\"vol-1\",\"reg-b\",1], 12) = 0",
                "NODAL_ParamListDestroy(list9)",
                "NODAL_ParamListDestroy(list8)",
                "NODAL_ParamListDestroy(list3)",
                "NODAL_ParamListDestroy(list1)",
            }));
}

}  // namespace
}  // namespace faults::pmem_stats
