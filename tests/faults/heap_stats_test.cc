// heap-stats. Once its options are parsed, the report succeeds, whatever fails. Its Total row is shifted one column to
// the left.
#include "tests/faults/machine_hosts.h"
#include "tests/faults/report_case.h"

namespace faults::heap_stats {
namespace {

using testing_support::SetText;

constexpr char kHeaps[] = "system_heaps";
constexpr char kStats[] = "system_heaps_stats";

constexpr char kBadUnit[] = "Invalid unit specified. Choose from {mb, kb, pg, b}\n";

constexpr char kHeader[] =
    "name,dynGrow,lowerLimit,upperLimit,reserved,numRanges,dlMallocOvdh,used,avail,size,initial,max,pctFreeOfCur,"
    "maxAvail,pctFreeOfMax,lowPctFreeOfMax,numSuccAllocs,numFailAllocs,numGrowthOps,numShrinkOps,numReqsPerGrowth,"
    "avgAllocSize\n";

// Each sum is one column to the left of its own column: numRanges has the sum of dlMallocOvdh, and so on.
constexpr char kRowsInBytes[] =
    "main,1,1001,1002,201,1003,1004,6998,3007,10005,1006,20009,1008,1010,1011,1012,1013,1014,1017,1018,1016,1015\n"
    "slab,2,2001,2002,202,2003,2004,13998,6007,20005,2006,40009,2008,2010,2011,2012,2013,2014,2017,2018,2016,2015\n"
    "net,3,3001,3002,203,3003,3004,20998,9007,30005,3006,60009,3008,3010,3011,3012,3013,3014,3017,3018,3016,3015\n"
    "Total,,,,,6012,41994,18021,60015,6018,120027,0,,0,,,,,6054,0,,\n";

constexpr char kRowsInKb[] =
    "main,1,1001,1002,201,1003,1,7,3,10,1,20,1008,1,1011,1012,1013,1014,1017,1018,1016,1\n"
    "slab,2,2001,2002,202,2003,2,14,6,20,2,40,2008,2,2011,2012,2013,2014,2017,2018,2016,2\n"
    "net,3,3001,3002,203,3003,3,21,9,30,3,59,3008,3,3011,3012,3013,3014,3017,3018,3016,3\n"
    "Total,,,,,6,42,18,59,6,118,0,,0,,,,,6054,0,,\n";

constexpr char kRowsInPages[] =
    "main,1,1001,1002,201,1003,1,2,1,3,1,5,1008,1,1011,1012,1013,1014,1017,1018,1016,1\n"
    "slab,2,2001,2002,202,2003,1,4,2,5,1,10,2008,1,2011,2012,2013,2014,2017,2018,2016,1\n"
    "net,3,3001,3002,203,3003,1,6,3,8,1,15,3008,1,3011,3012,3013,3014,3017,3018,3016,1\n"
    "Total,,,,,2,11,5,15,2,30,0,,0,,,,,6054,0,,\n";

constexpr char kRowsInMb[] =
    "main,1,1001,1002,201,1003,1,1,1,1,1,1,1008,1,1011,1012,1013,1014,1017,1018,1016,1\n"
    "slab,2,2001,2002,202,2003,1,1,1,1,1,1,2008,1,2011,2012,2013,2014,2017,2018,2016,1\n"
    "net,3,3001,3002,203,3003,1,1,1,1,1,1,3008,1,3011,3012,3013,3014,3017,3018,3016,1\n"
    "Total,,,,,1,1,1,1,1,1,0,,0,,,,,6054,0,,\n";

constexpr char kNoRows[] = "Total,,,,,0,0,0,0,0,0,0,,0,,,,,0,0,,\n";

constexpr char kDescriptions[] = R"(Description of report header labels:
                name: heap name
             dynGrow: dynamically growable
          lowerLimit: lower limit
          upperLimit: upper limit
            reserved: reserved
           numRanges: num ranges
        dlMallocOvdh: DL malloc overhead
                used: current used
               avail: current available
                size: current size
             initial: initial size
                 max: max size
        pctFreeOfCur: % free of current
            maxAvail: max available
        pctFreeOfMax: % free of max
     lowPctFreeOfMax: lowest % free of max
       numSuccAllocs: number of succeeded allocations
       numFailAllocs: number of succeeded allocations
        numGrowthOps: number of growth operations
        numShrinkOps: number of shrink operations
    numReqsPerGrowth: number of requests per growth operations
        avgAllocSize: average allocation size
)";

constexpr char kTable[] = R"(
 HEAP STATS: <time>
 ------------------------------------
   Unit             : Page (4K)
   Selected columns : name:reserved:numRanges:size:max:avgAllocSize

------------------------------------------------------------------------------------------
                               name reserved numRanges       size         max avgAllocSize
------------------------------------------------------------------------------------------
                               main      201      1003          3           5            1
                               slab      202      2003          5          10            1
                                net      203      3003          8          15            1
------------------------------------------------------------------------------------------
                              Total                  2          2           0)"
                          "             "
                          R"(
------------------------------------------------------------------------------------------
Description of report header labels:
                name: heap name
            reserved: reserved
           numRanges: num ranges
                size: current size
                 max: max size
        avgAllocSize: average allocation size
)";

constexpr char kEmptyTable[] = R"(
 HEAP STATS: <time>
 ------------------------------------
   Unit             : Bytes
   Selected columns : name:size

----------------------------------------------
                               name       size
----------------------------------------------
----------------------------------------------
                              Total          0
----------------------------------------------
Description of report header labels:
                name: heap name
                size: current size
)";

constexpr Text Table(const char *unit) {
  return {"\n HEAP STATS: <time>\n ------------------------------------\n   Unit             : ", unit, R"(
   Selected columns : name

-----------------------------------
                               name
-----------------------------------
                               main
                               slab
                                net
-----------------------------------
                              Total
-----------------------------------
)"};
}

class HeapStats : public testing::TestWithParam<ReportCase> {};

TEST_P(HeapStats, AnswersAs) { Check(GetParam()); }

constexpr ReportCase Csv(const char *name, const char *options, const Text &rows) {
  return {name, HeapsHost, {"-r heap-stats -q", options}, {kHeader, rows}};
}

constexpr ReportCase kUnitsCases[] = {
    Csv("None", "", kRowsInBytes),
    Csv("Bytes", "-u B", kRowsInBytes),
    Csv("Kb", "-u kb", kRowsInKb),
    Csv("Pages", "-upg", kRowsInPages),
    Csv("Mb", "--unit=mb", kRowsInMb),
    Csv("TheLastCounts", "-u mb -u kb", kRowsInKb),
    {"NoneInTheBanner", HeapsHost, "-r heap-stats -s ''", Table("Bytes")},
    {"KbInTheBanner", HeapsHost, "-r heap-stats -s '' -uKB", Table("KB")},
    {"MbInTheBanner", HeapsHost, "-r heap-stats -s '' -uMB", Table("MB")},
    {"BytesInTheBanner", HeapsHost, "-r heap-stats -s '' -ub", Table("Bytes")},
    {"NoSuchUnit", HeapsHost, "-r heap-stats -u gb -q", "", kBadUnit, 1},
    {"EmptyUnit", HeapsHost, "-r heap-stats -u ''", "", kBadUnit, 1},
};

INSTANTIATE_TEST_SUITE_P(Units, HeapStats, testing::ValuesIn(kUnitsCases), NameOf<ReportCase>);

// The long option "verbose" resets the unit and prints no descriptions.
constexpr ReportCase kVerboseCases[] = {
    Csv("Short", "-v", {kRowsInBytes, kDescriptions}),
    Csv("ShortWithUnit", "-vu kb", {kRowsInKb, kDescriptions}),
    Csv("Long", "--verbose", kRowsInBytes),
    Csv("LongAfterTheUnit", "--unit mb --verbose", kRowsInBytes),
    Csv("LongAfterTheShortUnit", "-u kb --verb", kRowsInBytes),
    Csv("LongBeforeTheUnit", "--verbose --unit mb", kRowsInMb),
    Csv("LongAfterABadUnit", "-u gb --verbose", kRowsInBytes),
    Csv("LongAndShort", "-u mb --verbose -v", {kRowsInBytes, kDescriptions}),
    Csv("LongWithAnArgument", "-u mb --verbose=kb", kRowsInMb),
};

INSTANTIATE_TEST_SUITE_P(Verbose, HeapStats, testing::ValuesIn(kVerboseCases), NameOf<ReportCase>);

constexpr ReportCase kFormsCases[] = {
    {"Table", HeapsHost, "-r heap-stats -v -upg -s RESERVED:numranges:size:max:avgAllocSize", kTable},
    {"TheNameIsMandatory", HeapsHost, "-r heap-stats -q -s gid", "name\nmain\nslab\nnet\nTotal\n"},
    // Hidden columns do not change the sums of the others.
    {"SumsOfChosenColumns", HeapsHost, "-r heap-stats -q -s dlMallocOvdh:max:maxAvail:numShrinkOps:avgAllocSize",
     "name,dlMallocOvdh,max,maxAvail,numShrinkOps,avgAllocSize\n"
     "main,1004,20009,1010,1018,1015\nslab,2004,40009,2010,2018,2015\n"
     "net,3004,60009,3010,3018,3015\nTotal,41994,0,0,0,\n"},
};

INSTANTIATE_TEST_SUITE_P(Forms, HeapStats, testing::ValuesIn(kFormsCases), NameOf<ReportCase>);

// Figures at the limits of their ranges.

StandinHost OneHeap(const HeapStatsRecord &record) {
  return StandinHost().AddList(kHeaps, {}, {"h"}).AddRecord(kStats, {"h"}, record);
}

StandinHost TwoHeaps(const HeapStatsRecord &one, const HeapStatsRecord &two) {
  return StandinHost().AddList(kHeaps, {}, {"h1", "h2"}).AddRecord(kStats, {"h1"}, one).AddRecord(kStats, {"h2"}, two);
}

HeapStatsRecord Sized(const std::string &name, uint32_t size, uint32_t avail) {
  HeapStatsRecord record = {};
  SetText(record.name, name);
  record.size = size;
  record.avail = avail;
  return record;
}

HeapStatsRecord Numbered(const std::string &name, uint32_t number) {
  HeapStatsRecord record = {};
  SetText(record.name, name);
  record.dynGrow = 255;
  record.reserved = 255;
  record.lowerLimit = record.upperLimit = record.numRanges = number;
  record.pctFreeOfCur = record.pctFreeOfMax = record.lowPctFreeOfMax = number;
  record.numSuccAllocs = record.numFailAllocs = record.numReqsPerGrowth = number;
  record.dlMallocOvhd = record.avgAllocSize = number;
  record.numGrowthOps = record.numShrinkOps = number;
  return record;
}

constexpr ReportCase Used(const char *name, StandinHost (*host)(), const char *unit, const char *rows) {
  return {name,
          host,
          {"-r heap-stats -q -s dlMallocOvdh:used:avail:size -u", unit},
          {"name,dlMallocOvdh,used,avail,size\n", rows}};
}

constexpr ReportCase kFiguresCases[] = {
    Used(
        "OneByteInKb", [] { return OneHeap(Sized("h", 1, 0)); }, "kb", "h,0,1,0,1\nTotal,1,0,1,0\n"),
    Used(
        "OneByteInPages", [] { return OneHeap(Sized("h", 1, 0)); }, "pg", "h,0,1,0,1\nTotal,1,0,1,0\n"),
    Used(
        "OneByteInMb", [] { return OneHeap(Sized("h", 1, 0)); }, "mb", "h,0,1,0,1\nTotal,1,0,1,0\n"),
    Used(
        "OneByteMoreThanAPage", [] { return OneHeap(Sized("h", 4097, 4096)); }, "pg", "h,0,1,1,2\nTotal,1,1,2,0\n"),
    Used(
        "OneByteMoreThanOneMb", [] { return OneHeap(Sized("h", 0x100001, 0x100000)); }, "mb",
        "h,0,1,1,2\nTotal,1,1,2,0\n"),
    // The used size wraps at 32 bits in a row and at 64 bits in the sum.
    Used(
        "MoreAvailableThanThereIs", [] { return OneHeap(Sized("h", 100, 200)); }, "b",
        "h,0,4294967196,200,100\nTotal,18446744073709551516,200,100,0\n"),
    Used(
        "MoreAvailableThanThereIsInKb", [] { return OneHeap(Sized("h", 100, 200)); }, "kb",
        "h,0,4194304,1,1\nTotal,0,1,1,0\n"),
    Used(
        "MoreAvailableInOneOfTwo", [] { return TwoHeaps(Sized("h", 100, 200), Sized("i", 900, 300)); }, "b",
        "h,0,4294967196,200,100\ni,0,600,300,900\nTotal,500,500,1000,0\n"),
    Used(
        "SumsBeyond32Bits", [] { return TwoHeaps(Sized("h", 0xffffffff, 0), Sized("i", 0xffffffff, 1)); }, "b",
        "h,0,4294967295,0,4294967295\ni,0,4294967294,1,4294967295\nTotal,8589934589,1,8589934590,0\n"),
    Used(
        "LargestInMb", [] { return OneHeap(Sized("h", 0xffffffff, 0)); }, "mb",
        "h,0,4096,0,4096\nTotal,4096,0,4096,0\n"),
};

INSTANTIATE_TEST_SUITE_P(Figures, HeapStats, testing::ValuesIn(kFiguresCases), NameOf<ReportCase>);

constexpr char kLongName[] = "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn";

constexpr ReportCase kNumbersCases[] = {
    // Some columns are signed. The value under numRanges is the low half of a sum.
    {"Signs",
     [] { return TwoHeaps(Numbered("h", 0xffffffff), Numbered("i", 2)); },
     "-r heap-stats -q",
     {kHeader,
      "h,255,-1,-1,255,-1,4294967295,0,0,0,0,0,-1,0,-1,-1,4294967295,4294967295,4294967295,"
      "4294967295,4294967295,4294967295\n"
      "i,255,2,2,255,2,2,0,0,0,0,0,2,0,2,2,2,2,2,2,2,2\n"
      "Total,,,,,1,0,0,0,0,0,0,,0,,,,,1,0,,\n"}},
    {"ASignInTheTotal", [] { return OneHeap(Numbered("h", 0x80000000)); }, "-r heap-stats -q -s numRanges:numGrowthOps",
     "name,numRanges,numGrowthOps\nh,-2147483648,2147483648\nTotal,-2147483648,2147483648\n"},
    {"NameThatFillsItsField",
     [] { return OneHeap(Sized(kLongName, 7, 0)); },
     "-r heap-stats -q -s size",
     {"name,size\n", kLongName, ",7\nTotal,0\n"}},
    {"NoName", [] { return OneHeap(Sized("", 7, 0)); }, "-r heap-stats -q -s size", "name,size\n,7\nTotal,0\n"},
};

INSTANTIATE_TEST_SUITE_P(Numbers, HeapStats, testing::ValuesIn(kNumbersCases), NameOf<ReportCase>);

// An empty list of heaps, and heaps that vanish after they were listed.

TEST(HeapStatsList, MayBeEmpty) {
  Check(StandinHost().AddList(kHeaps, {}, {}), "-r heap-stats -v -s size", kEmptyTable,
        "KestrelHeapGetMemMapStats: NODAL_ParamListUsedCount() returned 0\n");
}

TEST(HeapStatsList, MayBeEmptyInCsv) {
  Check(StandinHost().AddList(kHeaps, {}, {}), "-r heap-stats -q", std::string(kHeader) + kNoRows,
        "KestrelHeapGetMemMapStats: NODAL_ParamListUsedCount() returned 0\n");
}

TEST(HeapStatsList, MayVanishWhole) {
  Check(StandinHost().AddList(kHeaps, {}, {"h1", "h2"}), "-r heap-stats -v -s size", kEmptyTable);
}

TEST(HeapStatsFailure, LeavesNoTableToo) {
  Check(HeapsHost().Fail({.operation = "NODAL_Get", .node = kStats, .call = 3}), "-r heap-stats -v", "",
        "KestrelHeapGetMemMapStats: NODAL_Get() failure\n");
}

TEST(HeapStatsCalls, OneListServesAllNames) {
  const StandinRun run =
      RunKestrel(HeapsHost().Fail({.operation = "NODAL_Get", .call = 2, .status = 0x0bad0003}), {"-r", "heap-stats"});
  EXPECT_EQ(CallsThatCount(run), Lines("NODAL_CheckSig(21) = 0\n"
                                       "NODAL_GetInstanceListAlloc(system_heaps, []) = 0 list1\n"
                                       "NODAL_ParamListCreate(1, 1) = list2\n"
                                       "NODAL_ParamListGetString(list1, 0) = 0\n"
                                       "NODAL_ParamListAddString(list2, \"heap-1\") = 0\n"
                                       "NODAL_Get(system_heaps_stats, [\"heap-1\"], 148) = 0\n"
                                       "NODAL_ParamListRemoveLastParam(list2) = 0\n"
                                       "NODAL_ParamListGetString(list1, 1) = 0\n"
                                       "NODAL_ParamListAddString(list2, \"heap-2\") = 0\n"
                                       "NODAL_Get(system_heaps_stats, [\"heap-2\"], 148) = 0x0bad0003\n"
                                       "NODAL_ParamListRemoveLastParam(list2) = 0\n"
                                       "NODAL_ParamListGetString(list1, 2) = 0\n"
                                       "NODAL_ParamListAddString(list2, \"heap-3\") = 0\n"
                                       "NODAL_Get(system_heaps_stats, [\"heap-3\"], 148) = 0\n"
                                       "NODAL_ParamListRemoveLastParam(list2) = 0\n"
                                       "NODAL_ParamListDestroy(list1)\n"
                                       "NODAL_ParamListDestroy(list2)\n"));
  EXPECT_EQ(ListErrors(run), "");
}

TEST(HeapStatsCalls, AnEmptyListIsTheLastCall) {
  EXPECT_EQ(CallsThatCount(RunKestrel(StandinHost().AddList(kHeaps, {}, {}), {"-r", "heap-stats"})),
            (std::vector<std::string>{
                "NODAL_CheckSig(21) = 0",
                "NODAL_GetInstanceListAlloc(system_heaps, []) = 0 list1",
                "NODAL_ParamListDestroy(list1)",
            }));
}

TEST(HeapStatsCalls, ABadUnitReadsNothing) {
  EXPECT_EQ(RunKestrel(HeapsHost(), {"-r", "heap-stats", "-u", "gb"}).calls,
            std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
}

}  // namespace
}  // namespace faults::heap_stats
