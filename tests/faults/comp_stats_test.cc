// comp-stats: the row of the host. Banner and header are printed before the reads.
#include "tests/faults/machine_hosts.h"
#include "tests/faults/report_case.h"

namespace faults::comp_stats {
namespace {

constexpr char kTransitions[] = "sched_globalStats_memory_stateTransitions";

constexpr char kHeader[] =
    "total,discarded,managedByMemMap,reliableMem,kernelCode,dataAndHeap,buddyOvhd,rsvdLow,managedByMemSched,minFree,"
    "hvcClientConsumed,otherConsumed,free,numHigh,numClear,numSoft,numHard,numLow,memState\n";

constexpr char kDescriptions[] =
    "Description of report header labels:\n"
    "               total: Total physical memory on host\n"
    "           discarded: Discarded by hvcore  \n"
    "     managedByMemMap: Memory managed by MemMap\n"
    "         reliableMem: Reliable memory\n"
    "          kernelCode: Hvcore code region\n"
    "         dataAndHeap: Hvcore data and heap\n"
    "           buddyOvhd: Memmap buddy overhead \n"
    "             rsvdLow: Reserved low memory\n"
    "   managedByMemSched: Memory managed by MemSched\n"
    "             minFree: Min Free\n"
    "   hvcClientConsumed: Consumed by hvcore clients\n"
    "       otherConsumed: Consumed by non-hvcore clients\n"
    "                free: Available (Free) physical memory\n"
    "             numHigh: Num times host in high state\n"
    "            numClear: Num times host in clear state\n"
    "             numSoft: Num times host in soft state\n"
    "             numHard: Num of times host in hard state\n"
    "              numLow: Num of times host in low state\n"
    "            memState: Current memory state\n";

constexpr char kTableInKb[] =
    R"(
 COMPREHENSIVE STATS: <time>
 ---------------------------------------------
   Unit             : KB
   Selected columns : (all)

)"
    "------------------------------------------------------------------------------------------------------------------"
    "------------------------------------------------------------------------------------------------------------------"
    "--\n"
    "     total  discarded managedByMemMap reliableMem kernelCode dataAndHeap  buddyOvhd    rsvdLow managedByMemSched"
    "    minFree hvcClientConsumed otherConsumed       free    numHigh   numClear    numSoft    numHard     numLow"
    " memState\n"
    "------------------------------------------------------------------------------------------------------------------"
    "------------------------------------------------------------------------------------------------------------------"
    "--\n"
    "  16777217          1        16000001       20480       2050       30004       1025          4          15000008"
    "      70009             40005         50006    6000007         21       4010     600300   80050000    7000000"
    "     Soft\n"
    "------------------------------------------------------------------------------------------------------------------"
    "------------------------------------------------------------------------------------------------------------------"
    "--\n";

constexpr char kTableInPages[] = R"(
 COMPREHENSIVE STATS: <time>
 ---------------------------------------------
   Unit             : Page (4K)
   Selected columns : total:minFree:memState

------------------------------
     total    minFree memState
------------------------------
   4194305      17503     Soft
------------------------------
Description of report header labels:
               total: Total physical memory on host
             minFree: Min Free
            memState: Current memory state
)";

constexpr char kNoColumns[] = R"(
 COMPREHENSIVE STATS: <time>
 ---------------------------------------------
   Unit             : MB
   Selected columns : (none)






)";

// The output of a report that stops early: no row, closing line or descriptions.
constexpr char kStopped[] = R"(
 COMPREHENSIVE STATS: <time>
 ---------------------------------------------
   Unit             : MB
   Selected columns : total:memState

-------------------
     total memState
-------------------
)";

class CompStats : public testing::TestWithParam<ReportCase> {};

TEST_P(CompStats, AnswersAs) { Check(GetParam()); }

constexpr char kCounts[] = ",21,4010,600300,80050000,7000000,Soft\n";

constexpr ReportCase kFormsCases[] = {
    {"TableInKb", ComprehensiveHost, "-r comp-stats", kTableInKb},
    {"TableInPages", ComprehensiveHost, "-r comp-stats -vu PG -s MEMSTATE:total:minfree", kTableInPages},
    {"NoColumns", ComprehensiveHost, "-r comp-stats -s none --unit mb", kNoColumns},
    {"Csv",
     ComprehensiveHost,
     "-r comp-stats -q",
     {kHeader, "16777217,1,16000001,20480,2050,30004,1025,4,15000008,70009,40005,50006,6000007", kCounts}},
    {"CsvInMb",
     ComprehensiveHost,
     "-r comp-stats -qu mb",
     {kHeader, "16385,1,15626,20,3,30,2,1,14649,69,40,49,5860", kCounts}},
    {"CsvInPagesWithDescriptions",
     ComprehensiveHost,
     "-r comp-stats -q -u pg -v",
     {kHeader, "4194305,1,4000001,5120,513,7501,257,1,3750002,17503,10002,12502,1500002", kCounts, kDescriptions}},
    {"BytesAreNotOffered", ComprehensiveHost, "-r comp-stats -u b", "",
     "Invalid unit specified. Choose from {mb, kb, pg}\n", 1},
    {"NoSuchUnit", ComprehensiveHost, "-r comp-stats -qu Page", "",
     "Invalid unit specified. Choose from {mb, kb, pg}\n", 1},
};

INSTANTIATE_TEST_SUITE_P(Forms, CompStats, testing::ValuesIn(kFormsCases), NameOf<ReportCase>);

// Unavailable figures, and figures at the limits of their ranges.

constexpr uint64_t kMissing = UINT64_MAX;

StandinHost HostWith(uint64_t discarded, uint64_t managedByMemSched, uint64_t minFree, uint64_t free) {
  ComprehensiveRecord memory = ComprehensiveFigures();
  memory.discarded = discarded;
  memory.free = free;
  GlobalMemoryRecord global = GlobalMemoryFigures();
  global.managedByMemSched = managedByMemSched;
  global.minFree = minFree;
  return ComprehensiveHost()
      .AddRecord("memory_comprehensive", {}, memory)
      .AddRecord("sched_globalStats_memory_kestrel", {}, global);
}

constexpr ReportCase Amounts(const char *name, StandinHost (*host)(), const char *unit, const char *row) {
  return {name,
          host,
          {"-r comp-stats -q -s discarded:managedByMemSched:minFree:free -u", unit},
          {"discarded,managedByMemSched,minFree,free\n", row}};
}

constexpr ReportCase kAmountsCases[] = {
    Amounts(
        "MissingInMb", [] { return HostWith(kMissing, 5, kMissing, 1025); }, "mb",
        "18446744073709551615,1,18446744073709551615,2\n"),
    Amounts(
        "MissingInPages", [] { return HostWith(5, kMissing, 4, kMissing); }, "pg",
        "2,18446744073709551615,1,18446744073709551615\n"),
    Amounts(
        "MissingInKb", [] { return HostWith(0, kMissing, 4, kMissing); }, "kb",
        "0,18446744073709551615,4,18446744073709551615\n"),
    // UINT64_MAX - 1 is an amount, which wraps when it is rounded up.
    Amounts(
        "LargestInKb", [] { return HostWith(kMissing - 1, 0, 0, 1); }, "kb", "18446744073709551614,0,0,1\n"),
    Amounts(
        "LargestInMb", [] { return HostWith(kMissing - 1, kMissing - 1023, kMissing - 1022, 1); }, "mb",
        "0,18014398509481983,0,1\n"),
    Amounts(
        "LargestInPages", [] { return HostWith(kMissing - 1, kMissing - 3, kMissing - 2, 1); }, "pg",
        "0,4611686018427387903,0,1\n"),
};

INSTANTIATE_TEST_SUITE_P(Amounts, CompStats, testing::ValuesIn(kAmountsCases), NameOf<ReportCase>);

StandinHost InState(uint32_t state) {
  GlobalMemoryRecord global = GlobalMemoryFigures();
  global.memState = state;
  return ComprehensiveHost().AddRecord("sched_globalStats_memory_kestrel", {}, global);
}

constexpr ReportCase State(const char *name, StandinHost (*host)(), const char *text) {
  return {name, host, "-r comp-stats -q -s memState", {"memState\n", text, "\n"}};
}

constexpr ReportCase kStatesCases[] = {
    State(
        "High", [] { return InState(0); }, "High"),
    State(
        "Clear", [] { return InState(1); }, "Clear"),
    State(
        "Soft", [] { return InState(2); }, "Soft"),
    State(
        "Hard", [] { return InState(3); }, "Hard"),
    State(
        "Low", [] { return InState(4); }, "Low"),
    State(
        "Five", [] { return InState(5); }, "Unknown"),
    State(
        "AllOnes", [] { return InState(UINT32_MAX); }, "Unknown"),
};

INSTANTIATE_TEST_SUITE_P(States, CompStats, testing::ValuesIn(kStatesCases), NameOf<ReportCase>);

// A host with these numbers of transitions out of each state: to the higher state, and to the lower one.
StandinHost Counted(const std::vector<std::pair<uint32_t, uint32_t>> &counts) {
  StandinHost host = ComprehensiveHost();
  const char *states[] = {"high", "clear", "soft", "hard", "low"};
  for (size_t i = 0; i < counts.size(); ++i) {
    StateTransitionsRecord record = {};
    record.toHigherCount = counts[i].first;
    record.toLowerCount = counts[i].second;
    host.AddRecord(kTransitions, {states[i]}, record);
  }
  return host;
}

constexpr ReportCase Counts(const char *name, StandinHost (*host)(), const char *row) {
  return {name,
          host,
          "-r comp-stats -q -s numHigh:numClear:numSoft:numHard:numLow",
          {"numHigh,numClear,numSoft,numHard,numLow\n", row}};
}

constexpr ReportCase kCountsCases[] = {
    Counts(
        "NeverChanged",
        [] {
          return Counted({{0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}});
        },
        "1,0,0,0,0\n"),
    Counts(
        "OutOfTheRange",
        [] {
          return Counted({{9, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 9}});
        },
        "1,0,0,0,0\n"),
    Counts(
        "Wrapped",
        [] {
          return Counted(
              {{0, 0xffffffff}, {0xffffffff, 0x80000000}, {2, 0xfffffff0}, {0x80000001, 0xffffffff}, {0x0f, 0}});
        },
        "0,1,1,4294967295,4294967295\n"),
};

INSTANTIATE_TEST_SUITE_P(Counts, CompStats, testing::ValuesIn(kCountsCases), NameOf<ReportCase>);

TEST(CompStatsFailure, LeavesTheHeader) {
  Check(ComprehensiveHost().Fail({.operation = "NODAL_Get", .node = kTransitions, .call = 5}),
        "-r comp-stats -v -u mb -s total:memState", kStopped, "", 1);
}

TEST(CompStatsCalls, SevenRecordsAreReadInTheirOrder) {
  const StandinRun run = RunKestrel(ComprehensiveHost(), {"-r", "comp-stats", "-s", "total"});
  EXPECT_EQ(CallsThatCount(run), Lines("NODAL_CheckSig(21) = 0\n"
                                       "NODAL_ParamListCreate(1, 1) = list1\n"
                                       "NODAL_Get(memory_comprehensive, [], 88) = 0\n"
                                       "NODAL_ParamListDestroy(list1)\n"
                                       "NODAL_ParamListCreate(1, 1) = list2\n"
                                       "NODAL_Get(sched_globalStats_memory_kestrel, [], 352) = 0\n"
                                       "NODAL_ParamListDestroy(list2)\n"
                                       "NODAL_ParamListCreate(1, 1) = list3\n"
                                       "NODAL_ParamListAddString(list3, \"high\") = 0\n"
                                       "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"high\"], 32) = 0\n"
                                       "NODAL_ParamListDestroy(list3)\n"
                                       "NODAL_ParamListCreate(1, 1) = list4\n"
                                       "NODAL_ParamListAddString(list4, \"clear\") = 0\n"
                                       "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"clear\"], 32) = 0\n"
                                       "NODAL_ParamListDestroy(list4)\n"
                                       "NODAL_ParamListCreate(1, 1) = list5\n"
                                       "NODAL_ParamListAddString(list5, \"soft\") = 0\n"
                                       "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"soft\"], 32) = 0\n"
                                       "NODAL_ParamListDestroy(list5)\n"
                                       "NODAL_ParamListCreate(1, 1) = list6\n"
                                       "NODAL_ParamListAddString(list6, \"hard\") = 0\n"
                                       "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"hard\"], 32) = 0\n"
                                       "NODAL_ParamListDestroy(list6)\n"
                                       "NODAL_ParamListCreate(1, 1) = list7\n"
                                       "NODAL_ParamListAddString(list7, \"low\") = 0\n"
                                       "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"low\"], 32) = 0\n"
                                       "NODAL_ParamListDestroy(list7)\n"));
}

TEST(CompStatsCalls, ABadUnitReadsNothing) {
  EXPECT_EQ(RunKestrel(ComprehensiveHost(), {"-r", "comp-stats", "-u", "b"}).calls,
            std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
}

}  // namespace
}  // namespace faults::comp_stats
