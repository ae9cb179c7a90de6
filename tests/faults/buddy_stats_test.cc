// buddy-stats: the selection and order of buddies, and failed reads.
#include "tests/faults/machine_hosts.h"
#include "tests/faults/report_case.h"

namespace faults::buddy_stats {
namespace {

using testing_support::Instance;
using testing_support::OutputTo;

constexpr char kBuddies[] = "system_buddy";
constexpr char kMemNodes[] = "memory_memNodes";
constexpr char kFigures[] = "system_buddy_comprehensive";

constexpr char kHeader[] =
    "name,memNode,type,numaNode,4KBfree,8KBfree,16KBfree,32KBfree,64KBfree,128KBfree,256KBfree,512KBfree,1MBfree,"
    "2MBfree,4MBfree,8MBfree,16MBfree,32MBfree,64MBfree,128MBfree,256MBfree,512MBfree,1GBfree,4KBused,8KBused,"
    "16KBused,32KBused,64KBused,128KBused,256KBused,512KBused,1MBused,2MBused,4MBused,8MBused,16MBused,32MBused,"
    "64MBused,128MBused,256MBused,512MBused,1GBused\n";

constexpr char kDescriptions[] = R"(Description of report header labels:
                name: Name of the buddy
             memNode: Memory node the buddy belongs to
                type: Legacy memory type name
            numaNode: NUMA node the buddy belongs to
             4KBfree: free 4KB buffers
             8KBfree: free 8KB buffers
            16KBfree: free 16KB buffers
            32KBfree: free 32KB buffers
            64KBfree: free 64KB buffers
           128KBfree: free 128 KB buffers
           256KBfree: free 256 KB buffers
           512KBfree: free 512 KB buffers
             1MBfree: free 1MB buffers
             2MBfree: free 2MB buffers
             4MBfree: free 4MB buffers
             8MBfree: free 8MB buffers
            16MBfree: free 16MB buffers
            32MBfree: free 32MB buffers
            64MBfree: free 64MB buffers
           128MBfree: free 128MB buffers
           256MBfree: free 256MB buffers
           512MBfree: free 256MB buffers
             1GBfree: free 1GB buffers
             4KBused: used 4KB buffers
             8KBused: used 8KB buffers
            16KBused: used 16KB buffers
            32KBused: used 32KB buffers
            64KBused: used 64KB buffers
           128KBused: used 128 KB buffers
           256KBused: used 256 KB buffers
           512KBused: used 512 KB buffers
             1MBused: used 1MB buffers
             2MBused: used 2MB buffers
             4MBused: used 4MB buffers
             8MBused: used 8MB buffers
            16MBused: used 16MB buffers
            32MBused: used 32MB buffers
            64MBused: used 64MB buffers
           128MBused: used 128MB buffers
           256MBused: used 256MB buffers
           512MBused: used 512MB buffers
             1GBused: used 1GB buffers
)";

// The 38 counts of a row: 19 starting at `free` and 19 starting at `used`, each `step` more than the previous one.
std::string Counts(uint32_t free, uint32_t used, uint32_t step) {
  std::string counts;
  for (uint32_t k = 0; k < 19; ++k)
    counts += ',' + std::to_string(free + k * step);
  for (uint32_t k = 0; k < 19; ++k)
    counts += ',' + std::to_string(used + k * step);
  return counts + '\n';
}

const std::string kAllRows = "memmap-00-lo,0,low,7" + Counts(1000, 1500, 1) + "memmap-00-hi,0,high,7" +
                             Counts(2000, 2500, 1) + "memmap-01-lo,1,low,200" + Counts(3000, 3500, 1) +
                             "memmap-01-hi,1,high,200" + Counts(4000, 4500, 1) + "Total,,," + Counts(10000, 12000, 4);

constexpr char kTable[] = R"(
 MEMMAP BUDDY STATS: <time>
 --------------------------------------------
   Selected columns : name:memNode:type:numaNode:4KBfree:1GBused

----------------------------------------------------------------
                name memNode type numaNode    4KBfree    1GBused
----------------------------------------------------------------
        memmap-00-lo       0  low        7       1000       1518
        memmap-00-hi       0 high        7       2000       2518
        memmap-01-lo       1  low      200       3000       3518
        memmap-01-hi       1 high      200       4000       4518
----------------------------------------------------------------
               Total                            10000      12072
----------------------------------------------------------------
Description of report header labels:
                name: Name of the buddy
             memNode: Memory node the buddy belongs to
                type: Legacy memory type name
            numaNode: NUMA node the buddy belongs to
             4KBfree: free 4KB buffers
             1GBused: used 1GB buffers
)";

// A table with only the mandatory column, which is blank in the Total row.
constexpr char kMandatoryAlone[] = R"(
 MEMMAP BUDDY STATS: <time>
 --------------------------------------------
   Selected columns : memNode

-------
memNode
-------
      0
      0
      1
      1
-------
)"
                                   "       \n-------\n";

constexpr char kNoRows[] = R"(
 MEMMAP BUDDY STATS: <time>
 --------------------------------------------
   Selected columns : name:memNode:2MBfree

---------------------------------------
                name memNode    2MBfree
---------------------------------------
---------------------------------------
               Total                  0
---------------------------------------
Description of report header labels:
                name: Name of the buddy
             memNode: Memory node the buddy belongs to
             2MBfree: free 2MB buffers
)";

// The output of a report that stops early: no closing line, Total row or descriptions.
constexpr char kStopped[] = R"(
 MEMMAP BUDDY STATS: <time>
 --------------------------------------------
   Selected columns : name:memNode:2MBfree

---------------------------------------
                name memNode    2MBfree
---------------------------------------
        memmap-00-lo       0       1009
        memmap-00-hi       0       2009
)";

class BuddyStats : public testing::TestWithParam<ReportCase> {};

TEST_P(BuddyStats, AnswersAs) { Check(GetParam()); }

const ReportCase kFormsCases[] = {
    {"AllColumns", BuddyHost, "-r buddy-stats -q", {kHeader, kAllRows.c_str()}},
    {"AllColumnsWithDescriptions",
     BuddyHost,
     "-r buddy-stats --csvMode --verbose",
     {kHeader, kAllRows.c_str(), kDescriptions}},
    {"Table", BuddyHost, "-r buddy-stats -v --cSelect=1gbused:NAME:type:4KBFREE:numanode:1GB", kTable},
    {"MandatoryAlone", BuddyHost, "-r buddy-stats -s nothing", kMandatoryAlone},
    {"MandatoryAloneInCsv", BuddyHost, "-r buddy-stats -qs ''", "memNode\n0\n0\n1\n1\n\n"},
    {"ThereAreNoUnits", BuddyHost, "-r buddy-stats -u b --unit=tb -qs 2MBused",
     "memNode,2MBused\n0,1509\n0,2509\n1,3509\n1,4509\n,12036\n"},
};

INSTANTIATE_TEST_SUITE_P(Forms, BuddyStats, testing::ValuesIn(kFormsCases), NameOf<ReportCase>);

// The selection and order of buddies.

// The name truncated to 15 characters. The report also reads the buddy by this name.
std::string Kept(const std::string &name) { return name.substr(0, 15); }

// A host with buddies of these names, in this order. Memory node n is on NUMA node n.
StandinHost Named(const std::vector<const char *> &names) {
  StandinHost host;
  host.AddList("system_buddy", {}, {names.begin(), names.end()});
  for (int64_t node = 0; node < 128; ++node)
    host.AddRecord("memory_memNodes", {node}, MemNodeRecord{.numaNode = static_cast<uint8_t>(node), .unread_1 = {}});
  for (const char *name : names)
    host.AddRecord("system_buddy_comprehensive", {Kept(name).c_str()}, BuddyComprehensiveRecord{});
  return host;
}

constexpr ReportCase Names(const char *name, StandinHost (*host)(), const char *rows) {
  return {name, host, "-r buddy-stats -q -s name:type:numaNode", {"name,memNode,type,numaNode\n", rows, "Total,,,\n"}};
}

constexpr ReportCase kNamesCases[] = {
    Names(
        "None", [] { return Named({}); }, ""),
    Names(
        "NoneOfMemMap",
        [] {
          return Named({"memma", "MEMMAP-00-lo", "xmemmap-00-lo", "heap", ""});
        },
        ""),
    Names(
        "NothingAfterTheWord",
        [] {
          return Named({"memmap", "memmap-"});
        },
        "memmap,0,high,0\nmemmap-,0,high,0\n"),
    Names(
        "AnyCharacterAfterTheWord",
        [] {
          return Named({"memmapN02o", "memmap_01x"});
        },
        "memmap_01x,1,high,1\nmemmapN02o,2,low,2\n"),
    Names(
        "NoNumber", [] { return Named({"memmap-ab-lo"}); }, "memmap-ab-lo,0,low,0\n"),
    // A name is truncated to 15 characters. If its last character is then an "o", the buddy is low.
    Names(
        "FifteenCharacters", [] { return Named({"memmap-03-23456"}); }, "memmap-03-23456,3,high,3\n"),
    Names(
        "SixteenCharacters", [] { return Named({"memmap-03-23456o"}); }, "memmap-03-23456,3,high,3\n"),
    Names(
        "LowInTheFifteenth", [] { return Named({"memmap-03-2345ohigh"}); }, "memmap-03-2345o,3,low,3\n"),
    Names(
        "NumberCutShort", [] { return Named({"memmap-000000000012345"}); }, "memmap-00000000,0,high,0\n"),
    // The node is the whole number, but the order depends on its first two digits.
    Names(
        "ThreeDigits",
        [] {
          return Named({"memmap-13-hi", "memmap-123-lo", "memmap-11-hi", "memmap-100-lo"});
        },
        "memmap-100-lo,100,low,100\nmemmap-11-hi,11,high,11\nmemmap-123-lo,123,low,123\n"
        "memmap-13-hi,13,high,13\n"),
    Names(
        "OneDigit",
        [] {
          return Named({"memmap-10-hi", "memmap-2-hi", "memmap-1-hi"});
        },
        "memmap-1-hi,1,high,1\nmemmap-2-hi,2,high,2\nmemmap-10-hi,10,high,10\n"),
    // With a single digit, "lo" is one character before the expected position.
    Names(
        "OneDigitLow",
        [] {
          return Named({"memmap-4-hi", "memmap-4-lo"});
        },
        "memmap-4-hi,4,high,4\nmemmap-4-lo,4,low,4\n"),
    // Names that write the same number differently keep their order.
    Names(
        "TheSameNumberWrittenTwice",
        [] {
          return Named({"memmap-5-hi", "memmap-05-lo"});
        },
        "memmap-5-hi,5,high,5\nmemmap-05-lo,5,low,5\n"),
};

INSTANTIATE_TEST_SUITE_P(Names, BuddyStats, testing::ValuesIn(kNamesCases), NameOf<ReportCase>);

constexpr ReportCase kOrderCases[] = {
    Names(
        "LowBeforeOthersOfItsNode",
        [] {
          return Named({"memmap-02-hi", "memmap-01-dma", "memmap-02-lo", "memmap-01-lo"});
        },
        "memmap-01-lo,1,low,1\nmemmap-01-dma,1,high,1\nmemmap-02-lo,2,low,2\nmemmap-02-hi,2,high,2\n"),
    // The report swaps the first buddy of a node with the low buddy that it found last.
    Names(
        "TheSwapTurnsOthersRound",
        [] {
          return Named({"memmap-01-h1", "memmap-01-h2", "memmap-01-lo"});
        },
        "memmap-01-lo,1,low,1\nmemmap-01-h2,1,high,1\nmemmap-01-h1,1,high,1\n"),
    // Each of two low buddies compares as less than the other, so the last comparison decides their order.
    Names(
        "TheLastOfTwoLowOnes",
        [] {
          return Named({"memmap-01-lo1", "memmap-01-lo2", "memmap-01-hi"});
        },
        "memmap-01-lo2,1,high,1\nmemmap-01-lo1,1,high,1\nmemmap-01-hi,1,high,1\n"),
    Names(
        "TheLastOfThreeLowOnes",
        [] {
          return Named({"memmap-01-lo1", "memmap-01-lo2", "memmap-01-lo3"});
        },
        "memmap-01-lo3,1,high,1\nmemmap-01-lo1,1,high,1\nmemmap-01-lo2,1,high,1\n"),
    Names(
        "NamesThatAreEqual",
        [] {
          return Named({"memmap-01-lo", "memmap-00-hi", "memmap-01-lo"});
        },
        "memmap-00-hi,0,high,0\nmemmap-01-lo,1,low,1\nmemmap-01-lo,1,low,1\n"),
};

INSTANTIATE_TEST_SUITE_P(Order, BuddyStats, testing::ValuesIn(kOrderCases), NameOf<ReportCase>);

TEST(BuddyStatsTotals, WrapInTheir32Bits) {
  StandinHost host = BuddyHost();
  BuddyComprehensiveRecord half = {};
  half.sizes[0].free = 0x80000000;
  half.sizes[18].used = 0x80000001;
  host.AddRecord(kFigures, {"memmap-00-lo"}, half).AddRecord(kFigures, {"memmap-01-hi"}, half);
  Check(host, "-r buddy-stats -q -s 4KBfree:1GBused",
        "memNode,4KBfree,1GBused\n0,2147483648,2147483649\n0,2000,2518\n1,3000,3518\n1,2147483648,2147483649\n"
        ",5000,6038\n");
}

TEST(BuddyStatsNames, ThatAreMissingArePassedOver) {
  StandinHost host = BuddyHost();
  host.AddList(kBuddies, {}, {nullptr, "memmap-00-lo", nullptr});
  Check(host, "-r buddy-stats -qs name:4KBfree", "name,memNode,4KBfree\nmemmap-00-lo,0,1000\nTotal,,1000\n");
}

TEST(BuddyStatsNames, AreFitForATerminal) {
  if (!testing_support::HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals here";
  StandinHost host = BuddyHost();
  host.AddList(kBuddies, {}, {"memmap-00-\x1b[2J"});
  const StandinRun run =
      RunKestrel(host, {"-r", "buddy-stats", "-qs", ""}, {.output = OutputTo::kTerminal, .errorsToOutput = true});
  EXPECT_EQ(run.outcome.output, "memNode\nError 0xbad0003 while reading memmap-00-?[2J/comprehensive") << run;
  EXPECT_EQ(RunKestrel(host, {"-r", "buddy-stats", "-qs", ""}).outcome.errors,
            "Error 0xbad0003 while reading memmap-00-\x1b[2J/comprehensive");
}

// `count` buddies, every tenth of which is a MemMap buddy.
StandinHost Many(size_t count) {
  std::vector<Instance> names;
  StandinHost host = BuddyHost();
  for (size_t i = 0; i < count; ++i) {
    const std::string name = (i % 10 == 0 ? "memmap-00-" : "buddy-") + std::to_string(i);
    names.emplace_back(name.c_str());
    host.AddRecord(kFigures, {name.c_str()}, BuddyFigures(0));
  }
  return host.AddList(kBuddies, {}, names);
}

TEST(BuddyStatsNumber, IsNinetyNineAtMost) {
  Check(Many(99), "-r buddy-stats -q -s name",
        "name,memNode\nmemmap-00-0,0\nmemmap-00-10,0\nmemmap-00-20,0\nmemmap-00-30,0\nmemmap-00-40,0\n"
        "memmap-00-50,0\nmemmap-00-60,0\nmemmap-00-70,0\nmemmap-00-80,0\nmemmap-00-90,0\nTotal,\n");
}

TEST(BuddyStatsNumber, BeyondNinetyNineNoneAreReported) {
  Check(Many(100), "-r buddy-stats -v -s name:2MBfree", kNoRows);
}

TEST(BuddyStatsNumber, MayBeAllOfMemMaps) {
  std::vector<Instance> names;
  StandinHost host = BuddyHost();
  std::string rows;
  for (int i = 1; i <= 99; ++i) {
    const std::string name = "memmap-00-h" + std::to_string(i);
    names.emplace_back(name.c_str());
    host.AddRecord(kFigures, {name.c_str()}, BuddyFigures(1));
    rows += name + ",0,1\n";
  }
  host.AddList(kBuddies, {}, names);
  Check(host, "-r buddy-stats -q -s name:4KBfree", "name,memNode,4KBfree\n" + rows + "Total,,99\n");
}

TEST(BuddyStatsFailure, OfTheNamesLeavesATableOfNone) {
  Check(BuddyHost().Fail({.operation = "NODAL_GetInstanceList", .node = kBuddies}), "-r buddy-stats -v -s name:2MBfree",
        kNoRows);
}

TEST(BuddyStatsFailure, OfEachMemoryNodeLeavesATableOfNone) {
  const std::string one = "Error 0xbad0001 while reading /memory/memNodes/1";
  const std::string zero = "Error 0xbad0001 while reading /memory/memNodes/0";
  Check(BuddyHost().Fail({.operation = "NODAL_Get", .node = kMemNodes}), "-r buddy-stats -v -s name:2MBfree", kNoRows,
        one + zero + one + zero);
}

TEST(BuddyStatsFailure, OfFiguresLeavesTheTableOpen) {
  Check(BuddyHost().Fail({.operation = "NODAL_Get", .node = kFigures, .call = 3}), "-r buddy-stats -v -s name:2MBfree",
        kStopped, "Error 0xbad0001 while reading memmap-01-lo/comprehensive", 1);
}

TEST(BuddyStatsMessages, NameTheWholeNumberOfANode) {
  StandinHost host;
  host.AddList(kBuddies, {}, {"memmap-4000000", "memmap-07-lo"});
  host.AddRecord(kMemNodes, {7}, MemNodeRecord{.numaNode = 3, .unread_1 = {}});
  host.AddRecord(kFigures, {"memmap-07-lo"}, BuddyFigures(1));
  Check(host, "-r buddy-stats -q -s name:numaNode", "name,memNode,numaNode\nmemmap-07-lo,7,3\nTotal,,\n",
        "Error 0xbad0003 while reading /memory/memNodes/4000000");
}

TEST(BuddyStatsMessages, StandBetweenTheRows) {
  StandinHost host = BuddyHost();
  host.Fail({.operation = "NODAL_Get", .node = kMemNodes, .call = 2});
  host.Fail({.operation = "NODAL_Get", .node = kFigures, .call = 3});
  const StandinRun run = RunKestrel(host, {"-r", "buddy-stats", "-q", "-s", "name"}, {.errorsToOutput = true});
  EXPECT_EQ(run.outcome.output,
            "name,memNode\nError 0xbad0001 while reading /memory/memNodes/0memmap-00-lo,0\nmemmap-01-lo,1\n"
            "Error 0xbad0001 while reading memmap-01-hi/comprehensive");
  EXPECT_EQ(run.outcome.exitStatus, 1);
}

TEST(BuddyStatsCalls, NodesAreLookedUpBeforeTheFirstRow) {
  const StandinRun run = RunKestrel(BuddyHost(), {"-r", "buddy-stats"});
  EXPECT_EQ(CallsThatCount(run), Lines("NODAL_CheckSig(21) = 0\n"
                                       "NODAL_ParamListCreateAndAllocateParams(1, 99, 12672) = list1\n"
                                       "NODAL_GetInstanceList(system_buddy, []) = 0 list1\n"
                                       "NODAL_ParamListGetString(list1, 0) = 0\n"
                                       "NODAL_ParamListCreate(1, 1) = list2\n"
                                       "NODAL_ParamListAddInt(list2, 1) = 0\n"
                                       "NODAL_Get(memory_memNodes, [1], 28) = 0\n"
                                       "NODAL_ParamListDestroy(list2)\n"
                                       "NODAL_ParamListGetString(list1, 1) = 0\n"
                                       "NODAL_ParamListGetString(list1, 2) = 0\n"
                                       "NODAL_ParamListCreate(1, 1) = list3\n"
                                       "NODAL_ParamListAddInt(list3, 0) = 0\n"
                                       "NODAL_Get(memory_memNodes, [0], 28) = 0\n"
                                       "NODAL_ParamListDestroy(list3)\n"
                                       "NODAL_ParamListGetString(list1, 3) = 0\n"
                                       "NODAL_ParamListCreate(1, 1) = list4\n"
                                       "NODAL_ParamListAddInt(list4, 1) = 0\n"
                                       "NODAL_Get(memory_memNodes, [1], 28) = 0\n"
                                       "NODAL_ParamListDestroy(list4)\n"
                                       "NODAL_ParamListGetString(list1, 4) = 0\n"
                                       "NODAL_ParamListGetString(list1, 5) = 0\n"
                                       "NODAL_ParamListCreate(1, 1) = list5\n"
                                       "NODAL_ParamListAddInt(list5, 0) = 0\n"
                                       "NODAL_Get(memory_memNodes, [0], 28) = 0\n"
                                       "NODAL_ParamListDestroy(list5)\n"
                                       "NODAL_ParamListDestroy(list1)\n"
                                       "NODAL_ParamListCreate(1, 1) = list6\n"
                                       "NODAL_ParamListAddString(list6, \"memmap-00-lo\") = 0\n"
                                       "NODAL_Get(system_buddy_comprehensive, [\"memmap-00-lo\"], 236) = 0\n"
                                       "NODAL_ParamListDestroy(list6)\n"
                                       "NODAL_ParamListCreate(1, 1) = list7\n"
                                       "NODAL_ParamListAddString(list7, \"memmap-00-hi\") = 0\n"
                                       "NODAL_Get(system_buddy_comprehensive, [\"memmap-00-hi\"], 236) = 0\n"
                                       "NODAL_ParamListDestroy(list7)\n"
                                       "NODAL_ParamListCreate(1, 1) = list8\n"
                                       "NODAL_ParamListAddString(list8, \"memmap-01-lo\") = 0\n"
                                       "NODAL_Get(system_buddy_comprehensive, [\"memmap-01-lo\"], 236) = 0\n"
                                       "NODAL_ParamListDestroy(list8)\n"
                                       "NODAL_ParamListCreate(1, 1) = list9\n"
                                       "NODAL_ParamListAddString(list9, \"memmap-01-hi\") = 0\n"
                                       "NODAL_Get(system_buddy_comprehensive, [\"memmap-01-hi\"], 236) = 0\n"
                                       "NODAL_ParamListDestroy(list9)\n"));
}

}  // namespace
}  // namespace faults::buddy_stats
