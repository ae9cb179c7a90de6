// lpool-stats: the pools of each node. Some messages spell the name of the walk TraverseLPools, others TraversLPools.
#include "tests/faults/machine_hosts.h"
#include "tests/faults/report_case.h"

namespace faults::lpool_stats {
namespace {

constexpr char kMemInfo[] = "memory_memInfo";
constexpr char kNumVMs[] = "sched_globalStats_numVMs";
constexpr char kShared[] = "memory_lpage_nodeList_psharePool";
constexpr char kPools[] = "memory_lpage_nodeList_vmPools";

constexpr char kHeader[] =
    "name,nodeID,nrLPages,nrFreeSPages,nrSPageAllocs,nrSPageFrees,nrReapAttempts,nrSPagesReaped,nrDefragAttempts,"
    "nrDefragCancelled,nrDefragReaped,nrLPagesDefragged,peakDefragAttempts,nrCachehit\n";

constexpr char kAllRows[] =
    "pshare-0,0,1001,1002,1003,1004,1005,1006,1007,1008,1009,1010,1011,1012\n"
    "web,0,2001,2002,2003,2004,2005,2006,2007,2008,2009,2010,2011,2012\n"
    "a-pool-with-a-long-name,0,3001,3002,3003,3004,3005,3006,3007,3008,3009,3010,3011,3012\n"
    "db,0,4001,4002,4003,4004,4005,4006,4007,4008,4009,4010,4011,4012\n"
    "pshare-1,1,5001,5002,5003,5004,5005,5006,5007,5008,5009,5010,5011,5012\n"
    "web,1,6001,6002,6003,6004,6005,6006,6007,6008,6009,6010,6011,6012\n"
    "mail,1,7001,7002,7003,7004,7005,7006,7007,7008,7009,7010,7011,7012\n"
    "Total,,28007,28014,28021,28028,28035,28042,28049,28056,28063,28070,28077,28084\n";

constexpr char kDescriptions[] = R"(Description of report header labels:
                name: Large page pool name
              nodeID: Home memory node the pool
            nrLPages: # of large pages in the pool
        nrFreeSPages: # of small pages free
       nrSPageAllocs: Total small page alloc count
        nrSPageFrees: Total small page free count
      nrReapAttempts: Total reap attemts
      nrSPagesReaped: Total number of small pages reaped
    nrDefragAttempts: Total large page defrag attempts
   nrDefragCancelled: Total defrag attempts cancelled
      nrDefragReaped: Total defrag attempts reaped
   nrLPagesDefragged: Total number of large pages defragged
  peakDefragAttempts: Peak defrag attempts for any large page
          nrCachehit: Hit count in lpage victim cache
Displayed stats are either in small 4K page (SPage) or large 2M page (LPage) units
)";

constexpr char kTable[] = R"(
 LPAGE POOL STATS: <time>
 -------------------------------------------
   Selected columns : name:nodeID:nrLPages:peakDefragAttempts

-----------------------------------------------------------
           name  nodeID         nrLPages peakDefragAttempts
-----------------------------------------------------------
       pshare-0       0             1001               1011
            web       0             2001               2011
a-pool-with-a-long-name 0           3001               3011
             db       0             4001               4011
       pshare-1       1             5001               5011
            web       1             6001               6011
           mail       1             7001               7011
-----------------------------------------------------------
          Total                    28007              28077
-----------------------------------------------------------
Description of report header labels:
                name: Large page pool name
              nodeID: Home memory node the pool
            nrLPages: # of large pages in the pool
  peakDefragAttempts: Peak defrag attempts for any large page
Displayed stats are either in small 4K page (SPage) or large 2M page (LPage) units
)";

constexpr char kNoPools[] = R"(
 LPAGE POOL STATS: <time>
 -------------------------------------------
   Selected columns : name:nrLPages

--------------------------------
           name         nrLPages
--------------------------------
--------------------------------
          Total                0
--------------------------------
)";

// The output of a report that stops early: no closing line, Total row, descriptions or note.
constexpr char kStopped[] = R"(
 LPAGE POOL STATS: <time>
 -------------------------------------------
   Selected columns : name:nrLPages

--------------------------------
           name         nrLPages
--------------------------------
)";

class LPoolStats : public testing::TestWithParam<ReportCase> {};

TEST_P(LPoolStats, AnswersAs) { Check(GetParam()); }

StandinHost WithNodes(uint32_t nodes, uint32_t machines) {
  MemInfoRecord memInfo = {};
  memInfo.numNodes = nodes;
  return LargePagesHost().AddRecord(kMemInfo, {}, memInfo).AddRecord(kNumVMs, {}, NumVMsRecord{machines});
}

constexpr ReportCase kFormsCases[] = {
    {"AllColumns", LargePagesHost, "-r lpool-stats -q", {kHeader, kAllRows}},
    {"AllColumnsWithDescriptions",
     LargePagesHost,
     "-r lpool-stats --verbose --csvMode",
     {kHeader, kAllRows, kDescriptions}},
    {"Table", LargePagesHost, "-r lpool-stats -v --cSelect nodeid:NRLPAGES:peakDefragAttempts", kTable},
    {"TheNameIsMandatory", LargePagesHost, "-r lpool-stats -q -s free",
     "name\npshare-0\nweb\na-pool-with-a-long-name\ndb\npshare-1\nweb\nmail\nTotal\n"},
    {"ThereAreNoUnits", [] { return WithNodes(1, 3); }, "-r lpool-stats -u b -qs nrCachehit",
     "name,nrCachehit\npshare-0,1012\nweb,2012\na-pool-with-a-long-name,3012\ndb,4012\nTotal,10048\n"},
    {"NoNodes", [] { return WithNodes(0, 3); }, "-r lpool-stats -s nrLPages", kNoPools},
    {"NoNodesInCsv",
     [] { return WithNodes(0, 3); },
     "-r lpool-stats -q",
     {kHeader, "Total,,0,0,0,0,0,0,0,0,0,0,0,0\n"}},
    // The number of VMs is only a hint: pools are listed even if it is 0.
    {"NoMachines", [] { return WithNodes(2, 0); }, "-r lpool-stats -q", {kHeader, kAllRows}},
    {"NoMachinePools", [] { return LargePagesHost().AddList(kPools, {0}, {}); }, "-r lpool-stats -qs nodeID",
     "name,nodeID\npshare-0,0\npshare-1,1\nweb,1\nmail,1\nTotal,\n"},
};

INSTANTIATE_TEST_SUITE_P(Forms, LPoolStats, testing::ValuesIn(kFormsCases), NameOf<ReportCase>);

TEST(LPoolStatsTotals, WrapInTheirOwnWidth) {
  LPoolStatsRecord large = {};
  large.nrLPages = 0x80000000;
  large.nrFreeSPages = 0xffffffff;
  large.nrSPageAllocs = 0xffffffff;
  large.nrCachehit = UINT64_MAX;
  LPoolStatsRecord other = large;
  other.nrLPages = 0x80000001;
  other.nrFreeSPages = 3;
  other.nrCachehit = 5;
  const StandinHost host =
      WithNodes(1, 1).AddRecord(kShared, {0}, large).AddList(kPools, {0}, {"web"}).AddRecord(kPools, {0, "web"}, other);
  Check(host, "-r lpool-stats -q -s nrLPages:nrFreeSPages:nrSPageAllocs:nrCachehit",
        "name,nrLPages,nrFreeSPages,nrSPageAllocs,nrCachehit\n"
        "pshare-0,2147483648,4294967295,4294967295,18446744073709551615\n"
        "web,2147483649,3,4294967295,5\n"
        "Total,1,2,8589934590,4\n");
}

StandinHost Failing(const Fault &fault) { return LargePagesHost().Fail(fault); }

TEST(LPoolStatsFailure, LeavesTheTableOpen) {
  Check(Failing({.operation = "NODAL_GetInstanceListAllocHint", .node = kPools, .call = 2}),
        "-r lpool-stats -v -s nrLPages",
        std::string(kStopped) +
            "       pshare-0             1001\n            web             2001\n"
            "a-pool-with-a-long-name     3001\n             db             4001\n"
            "       pshare-1             5001\n",
        "KestrelTraverseLPools: NODAL_GetInstanceListAllocHint() failure\n", 1);
}

// More than one call fails.

constexpr char kUnread[] = "KestrelGetVmPoolStats() failure, error code: 195887105\n";

TEST(LPoolStatsFailure, OfEachSharedPoolLeavesThoseOfMachines) {
  Check(Failing({.operation = "NODAL_Get", .node = kShared}), "-r lpool-stats -q -s nodeID:nrLPages",
        "name,nodeID,nrLPages\nweb,0,2001\na-pool-with-a-long-name,0,3001\ndb,0,4001\nweb,1,6001\nmail,1,7001\n"
        "Total,,22005\n",
        std::string(kUnread) + kUnread);
}

TEST(LPoolStatsFailure, OfEachMachinesPoolLeavesTheSharedOnes) {
  Check(Failing({.operation = "NODAL_Get", .node = kPools}), "-r lpool-stats -q -s nodeID:nrLPages",
        "name,nodeID,nrLPages\npshare-0,0,1001\npshare-1,1,5001\nTotal,,6002\n",
        std::string(kUnread) + kUnread + kUnread + kUnread + kUnread);
}

TEST(LPoolStatsFailure, OfEachListEndsTheReport) {
  Check(Failing({.operation = "NODAL_ParamListCreate"}), "-r lpool-stats -q -s nrLPages", "name,nrLPages\n",
        "KestrelGetPSharePoolStats: NODAL_ParamListCreate() failure\n"
        "KestrelTraverseLPools: NODAL_ParamListCreate() failure\n",
        1);
}

TEST(LPoolStatsMessages, StandBetweenTheRows) {
  StandinHost host = LargePagesHost();
  host.Fail({.operation = "NODAL_Get", .node = kShared, .call = 2, .status = 0x0bad0003});
  host.Fail({.operation = "NODAL_ParamListGetString", .node = kPools, .call = 5});
  const StandinRun run = RunKestrel(host, {"-r", "lpool-stats", "-q", "-s", "nodeID"}, {.errorsToOutput = true});
  EXPECT_EQ(run.outcome.output,
            "name,nodeID\npshare-0,0\nweb,0\na-pool-with-a-long-name,0\ndb,0\n"
            "KestrelGetVmPoolStats() failure, error code: 195887107\n"
            "web,1\nKestrelTraverseLPools: NODAL_ParamListGetString() failure\n");
  EXPECT_EQ(run.outcome.exitStatus, 1);
}

TEST(LPoolStatsCalls, ThePoolsComeNodeByNode) {
  const StandinRun run = RunKestrel(LargePagesHost(), {"-r", "lpool-stats"});
  EXPECT_EQ(CallsThatCount(run),
            Lines("NODAL_CheckSig(21) = 0\n"
                  "NODAL_Get(memory_memInfo, [], 24) = 0\n"
                  "NODAL_Get(sched_globalStats_numVMs, [], 4) = 0\n"
                  "NODAL_ParamListCreate(1, 1) = list1\n"
                  "NODAL_ParamListAddInt(list1, 0) = 0\n"
                  "NODAL_Get(memory_lpage_nodeList_psharePool, [0], 96) = 0\n"
                  "NODAL_ParamListDestroy(list1)\n"
                  "NODAL_ParamListCreate(1, 2) = list2\n"
                  "NODAL_ParamListAddInt(list2, 0) = 0\n"
                  "NODAL_GetInstanceListAllocHint(memory_lpage_nodeList_vmPools, [0], 3) = 0 list3\n"
                  "NODAL_ParamListDestroy(list2)\n"
                  "NODAL_ParamListGetString(list3, 0) = 0\n"
                  "NODAL_ParamListCreate(1, 2) = list4\n"
                  "NODAL_ParamListAddInt(list4, 0) = 0\n"
                  "NODAL_ParamListAddString(list4, \"web\") = 0\n"
                  "NODAL_Get(memory_lpage_nodeList_vmPools, [0,\"web\"], 96) = 0\n"
                  "NODAL_ParamListDestroy(list4)\n"
                  "NODAL_ParamListGetString(list3, 1) = 0\n"
                  "NODAL_ParamListCreate(1, 2) = list5\n"
                  "NODAL_ParamListAddInt(list5, 0) = 0\n"
                  "NODAL_ParamListAddString(list5, \"a-pool-with-a-long-name\") = 0\n"
                  "NODAL_Get(memory_lpage_nodeList_vmPools, [0,\"a-pool-with-a-long-name\"], 96) = 0\n"
                  "NODAL_ParamListDestroy(list5)\n"
                  "NODAL_ParamListGetString(list3, 2) = 0\n"
                  "NODAL_ParamListCreate(1, 2) = list6\n"
                  "NODAL_ParamListAddInt(list6, 0) = 0\n"
                  "NODAL_ParamListAddString(list6, \"db\") = 0\n"
                  "NODAL_Get(memory_lpage_nodeList_vmPools, [0,\"db\"], 96) = 0\n"
                  "NODAL_ParamListDestroy(list6)\n"
                  "NODAL_ParamListDestroy(list3)\n"
                  "NODAL_ParamListCreate(1, 1) = list7\n"
                  "NODAL_ParamListAddInt(list7, 1) = 0\n"
                  "NODAL_Get(memory_lpage_nodeList_psharePool, [1], 96) = 0\n"
                  "NODAL_ParamListDestroy(list7)\n"
                  "NODAL_ParamListCreate(1, 2) = list8\n"
                  "NODAL_ParamListAddInt(list8, 1) = 0\n"
                  "NODAL_GetInstanceListAllocHint(memory_lpage_nodeList_vmPools, [1], 3) = 0 list9\n"
                  "NODAL_ParamListDestroy(list8)\n"
                  "NODAL_ParamListGetString(list9, 0) = 0\n"
                  "NODAL_ParamListCreate(1, 2) = list10\n"
                  "NODAL_ParamListAddInt(list10, 1) = 0\n"
                  "NODAL_ParamListAddString(list10, \"web\") = 0\n"
                  "NODAL_Get(memory_lpage_nodeList_vmPools, [1,\"web\"], 96) = 0\n"
                  "NODAL_ParamListDestroy(list10)\n"
                  "NODAL_ParamListGetString(list9, 1) = 0\n"
                  "NODAL_ParamListCreate(1, 2) = list11\n"
                  "NODAL_ParamListAddInt(list11, 1) = 0\n"
                  "NODAL_ParamListAddString(list11, \"mail\") = 0\n"
                  "NODAL_Get(memory_lpage_nodeList_vmPools, [1,\"mail\"], 96) = 0\n"
                  "NODAL_ParamListDestroy(list11)\n"
                  "NODAL_ParamListDestroy(list9)\n"));
}

}  // namespace
}  // namespace faults::lpool_stats
