// The one row of the whole machine. Its banner and header are printed before anything is read.
#include "tests/faults/machine_hosts.h"
#include "tests/faults/report_case.h"

namespace faults {
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

const std::string kRule = std::string(230, '-') + "\n";

const std::string kTableInKb =
    R"(
 COMPREHENSIVE STATS: <time>
 ---------------------------------------------
   Unit             : KB
   Selected columns : (all)

)" + kRule +
    "     total  discarded managedByMemMap reliableMem kernelCode dataAndHeap  buddyOvhd    rsvdLow managedByMemSched"
    "    minFree hvcClientConsumed otherConsumed       free    numHigh   numClear    numSoft    numHard     numLow"
    " memState\n" +
    kRule +
    "  16777217          1        16000001       20480       2050       30004       1025          4          15000008"
    "      70009             40005         50006    6000007         21       4010     600300   80050000    7000000"
    "     Soft\n" +
    kRule;

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

// Without row, closing line and descriptions.
constexpr char kStopped[] = R"(
 COMPREHENSIVE STATS: <time>
 ---------------------------------------------
   Unit             : MB
   Selected columns : total:memState

-------------------
     total memState
-------------------
)";

std::vector<std::string> WithOptions(const std::vector<std::string> &options) {
  std::vector<std::string> arguments = {"-r", "comp-stats"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

class CompStats : public testing::TestWithParam<ReportCase> {};

TEST_P(CompStats, AnswersAs) { Check(GetParam()); }

constexpr char kCounts[] = ",21,4010,600300,80050000,7000000,Soft\n";

INSTANTIATE_TEST_SUITE_P(
    Forms, CompStats,
    testing::Values(
        ReportCase{"TableInKb", ComprehensiveHost(), WithOptions({}), kTableInKb, "", 0},
        ReportCase{"TableInPages", ComprehensiveHost(), WithOptions({"-vu", "PG", "-s", "MEMSTATE:total:minfree"}),
                   kTableInPages, "", 0},
        ReportCase{"NoColumns", ComprehensiveHost(), WithOptions({"-s", "none", "--unit", "mb"}), kNoColumns, "", 0},
        ReportCase{"Csv", ComprehensiveHost(), WithOptions({"-q"}),
                   std::string(kHeader) +
                       "16777217,1,16000001,20480,2050,30004,1025,4,15000008,70009,40005,50006,6000007" + kCounts,
                   "", 0},
        ReportCase{"CsvInMb", ComprehensiveHost(), WithOptions({"-qu", "mb"}),
                   std::string(kHeader) + "16385,1,15626,20,3,30,2,1,14649,69,40,49,5860" + kCounts, "", 0},
        ReportCase{"CsvInPagesWithDescriptions", ComprehensiveHost(), WithOptions({"-q", "-u", "pg", "-v"}),
                   std::string(kHeader) + "4194305,1,4000001,5120,513,7501,257,1,3750002,17503,10002,12502,1500002" +
                       kCounts + kDescriptions,
                   "", 0},
        ReportCase{"BytesAreNotOffered", ComprehensiveHost(), WithOptions({"-u", "b"}), "",
                   "Invalid unit specified. Choose from {mb, kb, pg}\n", 1},
        ReportCase{"NoSuchUnit", ComprehensiveHost(), WithOptions({"-qu", "Page"}), "",
                   "Invalid unit specified. Choose from {mb, kb, pg}\n", 1}),
    NameOf<ReportCase>);

// Figures that are missing, and others at the ends of their ranges.

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

ReportCase Amounts(const char *name, const StandinHost &host, const char *unit, const std::string &row) {
  return {name,
          host,
          WithOptions({"-q", "-u", unit, "-s", "discarded:managedByMemSched:minFree:free"}),
          "discarded,managedByMemSched,minFree,free\n" + row,
          "",
          0};
}

constexpr char kAllOnes[] = "18446744073709551615";

INSTANTIATE_TEST_SUITE_P(
    Amounts, CompStats,
    testing::Values(Amounts("MissingInMb", HostWith(kMissing, 5, kMissing, 1025), "mb",
                            std::string(kAllOnes) + ",1," + kAllOnes + ",2\n"),
                    Amounts("MissingInPages", HostWith(5, kMissing, 4, kMissing), "pg",
                            std::string("2,") + kAllOnes + ",1," + kAllOnes + "\n"),
                    Amounts("MissingInKb", HostWith(0, kMissing, 4, kMissing), "kb",
                            std::string("0,") + kAllOnes + ",4," + kAllOnes + "\n"),
                    // One less is an amount, and wraps when it is rounded up.
                    Amounts("LargestInKb", HostWith(kMissing - 1, 0, 0, 1), "kb", "18446744073709551614,0,0,1\n"),
                    Amounts("LargestInMb", HostWith(kMissing - 1, kMissing - 1023, kMissing - 1022, 1), "mb",
                            "0,18014398509481983,0,1\n"),
                    Amounts("LargestInPages", HostWith(kMissing - 1, kMissing - 3, kMissing - 2, 1), "pg",
                            "0,4611686018427387903,0,1\n")),
    NameOf<ReportCase>);

ReportCase State(const char *name, uint32_t state, const std::string &text) {
  GlobalMemoryRecord global = GlobalMemoryFigures();
  global.memState = state;
  return {name,
          ComprehensiveHost().AddRecord("sched_globalStats_memory_kestrel", {}, global),
          WithOptions({"-q", "-s", "memState"}),
          "memState\n" + text + "\n",
          "",
          0};
}

INSTANTIATE_TEST_SUITE_P(States, CompStats,
                         testing::Values(State("High", 0, "High"), State("Clear", 1, "Clear"), State("Soft", 2, "Soft"),
                                         State("Hard", 3, "Hard"), State("Low", 4, "Low"), State("Five", 5, "Unknown"),
                                         State("AllOnes", UINT32_MAX, "Unknown")),
                         NameOf<ReportCase>);

// A host with so many transitions out of each state, to the higher and to the lower.
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

ReportCase Counts(const char *name, const std::vector<std::pair<uint32_t, uint32_t>> &counts, const std::string &row) {
  return {name,
          Counted(counts),
          WithOptions({"-q", "-s", "numHigh:numClear:numSoft:numHard:numLow"}),
          "numHigh,numClear,numSoft,numHard,numLow\n" + row,
          "",
          0};
}

INSTANTIATE_TEST_SUITE_P(
    Counts, CompStats,
    testing::Values(
        Counts("NeverChanged", {{0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}}, "1,0,0,0,0\n"),
        Counts("OutOfTheRange", {{9, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 9}}, "1,0,0,0,0\n"),
        Counts("Wrapped",
               {{0, 0xffffffff}, {0xffffffff, 0x80000000}, {2, 0xfffffff0}, {0x80000001, 0xffffffff}, {0x0f, 0}},
               "0,1,1,4294967295,4294967295\n")),
    NameOf<ReportCase>);

TEST(CompStatsFailure, LeavesTheHeader) {
  Check({"", ComprehensiveHost().Fail({.operation = "NODAL_Get", .node = kTransitions, .call = 5}),
         WithOptions({"-v", "-u", "mb", "-s", "total:memState"}), kStopped, "", 1});
}

TEST(CompStatsCalls, SevenRecordsAreReadInTheirOrder) {
  const StandinRun run = RunKestrel(ComprehensiveHost(), WithOptions({"-s", "total"}));
  EXPECT_EQ(CallsThatCount(run), (std::vector<std::string>{
                                     "NODAL_CheckSig(21) = 0",
                                     "NODAL_ParamListCreate(1, 1) = list1",
                                     "NODAL_Get(memory_comprehensive, [], 88) = 0",
                                     "NODAL_ParamListDestroy(list1)",
                                     "NODAL_ParamListCreate(1, 1) = list2",
                                     "NODAL_Get(sched_globalStats_memory_kestrel, [], 352) = 0",
                                     "NODAL_ParamListDestroy(list2)",
                                     "NODAL_ParamListCreate(1, 1) = list3",
                                     "NODAL_ParamListAddString(list3, \"high\") = 0",
                                     "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"high\"], 32) = 0",
                                     "NODAL_ParamListDestroy(list3)",
                                     "NODAL_ParamListCreate(1, 1) = list4",
                                     "NODAL_ParamListAddString(list4, \"clear\") = 0",
                                     "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"clear\"], 32) = 0",
                                     "NODAL_ParamListDestroy(list4)",
                                     "NODAL_ParamListCreate(1, 1) = list5",
                                     "NODAL_ParamListAddString(list5, \"soft\") = 0",
                                     "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"soft\"], 32) = 0",
                                     "NODAL_ParamListDestroy(list5)",
                                     "NODAL_ParamListCreate(1, 1) = list6",
                                     "NODAL_ParamListAddString(list6, \"hard\") = 0",
                                     "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"hard\"], 32) = 0",
                                     "NODAL_ParamListDestroy(list6)",
                                     "NODAL_ParamListCreate(1, 1) = list7",
                                     "NODAL_ParamListAddString(list7, \"low\") = 0",
                                     "NODAL_Get(sched_globalStats_memory_stateTransitions, [\"low\"], 32) = 0",
                                     "NODAL_ParamListDestroy(list7)",
                                 }));
}

TEST(CompStatsCalls, ABadUnitReadsNothing) {
  EXPECT_EQ(RunKestrel(ComprehensiveHost(), WithOptions({"-u", "b"})).calls,
            std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
}

}  // namespace
}  // namespace faults
