// The large-page pools node by node. Two names of the walk stand in its messages, one of them short of a letter.
#include "tests/faults/failing_call.h"
#include "tests/faults/machine_hosts.h"

namespace faults {
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

// Without closing line, Total row, descriptions and note.
constexpr char kStopped[] = R"(
 LPAGE POOL STATS: <time>
 -------------------------------------------
   Selected columns : name:nrLPages

--------------------------------
           name         nrLPages
--------------------------------
)";

std::vector<std::string> WithOptions(const std::vector<std::string> &options) {
  std::vector<std::string> arguments = {"-r", "lpool-stats"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

class LPoolStats : public testing::TestWithParam<ReportCase> {};

TEST_P(LPoolStats, AnswersAs) { Check(GetParam()); }

StandinHost WithNodes(uint32_t nodes, uint32_t machines) {
  MemInfoRecord memInfo = {};
  memInfo.numNodes = nodes;
  return LargePagesHost().AddRecord(kMemInfo, {}, memInfo).AddRecord(kNumVMs, {}, NumVMsRecord{machines});
}

INSTANTIATE_TEST_SUITE_P(
    Forms, LPoolStats,
    testing::Values(
        ReportCase{"AllColumns", LargePagesHost(), WithOptions({"-q"}), std::string(kHeader) + kAllRows, "", 0},
        ReportCase{"AllColumnsWithDescriptions", LargePagesHost(), WithOptions({"--verbose", "--csvMode"}),
                   std::string(kHeader) + kAllRows + kDescriptions, "", 0},
        ReportCase{"Table", LargePagesHost(), WithOptions({"-v", "--cSelect", "nodeid:NRLPAGES:peakDefragAttempts"}),
                   kTable, "", 0},
        ReportCase{"TheNameIsMandatory", LargePagesHost(), WithOptions({"-q", "-s", "free"}),
                   "name\npshare-0\nweb\na-pool-with-a-long-name\ndb\npshare-1\nweb\nmail\nTotal\n", "", 0},
        ReportCase{"ThereAreNoUnits", WithNodes(1, 3), WithOptions({"-u", "b", "-qs", "nrCachehit"}),
                   "name,nrCachehit\npshare-0,1012\nweb,2012\na-pool-with-a-long-name,3012\ndb,4012\nTotal,10048\n", "",
                   0},
        ReportCase{"NoNodes", WithNodes(0, 3), WithOptions({"-s", "nrLPages"}), kNoPools, "", 0},
        ReportCase{"NoNodesInCsv", WithNodes(0, 3), WithOptions({"-q"}),
                   std::string(kHeader) + "Total,,0,0,0,0,0,0,0,0,0,0,0,0\n", "", 0},
        // The number of machines is only a hint.
        ReportCase{"NoMachines", WithNodes(2, 0), WithOptions({"-q"}), std::string(kHeader) + kAllRows, "", 0},
        ReportCase{"NoMachinePools", LargePagesHost().AddList(kPools, {0}, {}), WithOptions({"-qs", "nodeID"}),
                   "name,nodeID\npshare-0,0\npshare-1,1\nweb,1\nmail,1\nTotal,\n", "", 0}),
    NameOf<ReportCase>);

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
  Check({"", host, WithOptions({"-q", "-s", "nrLPages:nrFreeSPages:nrSPageAllocs:nrCachehit"}),
         "name,nrLPages,nrFreeSPages,nrSPageAllocs,nrCachehit\n"
         "pshare-0,2147483648,4294967295,4294967295,18446744073709551615\n"
         "web,2147483649,3,4294967295,5\n"
         "Total,1,2,8589934590,4\n",
         "", 0});
}

// Calls that fail.

class LPoolTableCall : public testing::TestWithParam<FailingCall> {};

TEST_P(LPoolTableCall, Fails) {
  CheckWithStatuses(LargePagesHost(), WithOptions({"-v", "-s", "nrLPages"}), GetParam(), kAnyFailure);
}

INSTANTIATE_TEST_SUITE_P(Around, LPoolTableCall,
                         testing::Values(FailingCall{"TheNumberOfNodes", "NODAL_Get", kMemInfo, 1, kStopped,
                                                     "KestrelTraversLPools: NODAL_Get hardwareInfo failure\n", 1},
                                         FailingCall{"TheNumberOfMachines", "NODAL_Get", kNumVMs, 1, kStopped,
                                                     "KestrelTraversLPools: NODAL_Get numVMs failure\n", 1},
                                         FailingCall{
                                             "ThePoolsOfTheSecondNode", "NODAL_GetInstanceListAllocHint", kPools, 2,
                                             std::string(kStopped) +
                                                 "       pshare-0             1001\n            web             2001\n"
                                                 "a-pool-with-a-long-name     3001\n             db             4001\n"
                                                 "       pshare-1             5001\n",
                                             "KestrelTraverseLPools: NODAL_GetInstanceListAllocHint() failure\n", 1}),
                         NameOf<FailingCall>);

class LPoolCall : public testing::TestWithParam<FailingCall> {};

TEST_P(LPoolCall, Fails) {
  CheckWithStatuses(LargePagesHost(), WithOptions({"-q", "-s", "nodeID:nrLPages"}), GetParam(), kAnyFailure);
}

// The rows in their order; one that is left out is missing in the total.
std::string Rows(const std::vector<size_t> &which, const std::string &total = "") {
  constexpr const char *kRows[] = {"pshare-0,0,1001\n", "web,0,2001\n",      "a-pool-with-a-long-name,0,3001\n",
                                   "db,0,4001\n",       "pshare-1,1,5001\n", "web,1,6001\n",
                                   "mail,1,7001\n"};
  std::string rows = "name,nodeID,nrLPages\n";
  for (const size_t row : which)
    rows += kRows[row];
  return rows + (total.empty() ? "" : "Total,," + total + "\n");
}

// What fails about one pool leaves that pool out. The lists and their nodes: 1 pshare-0, 2 the pools of node 0, 3 to 5
// one each, 6 pshare-1, 7 the pools of node 1, 8 and 9 one each.
FailingCall WithoutThisPool(const char *name, const char *operation, const char *node, unsigned call, size_t pool,
                            const std::string &errors) {
  std::vector<size_t> others;
  for (size_t other = 0; other < 7; ++other) {
    if (other != pool) others.push_back(other);
  }
  return {name, operation, node, call, Rows(others, std::to_string(28007 - (1000 * (pool + 1) + 1))), errors, 0};
}

constexpr char kPoolFailure[] = "KestrelGetVmPoolStats() failure, error code: <number>\n";

constexpr char kNoSharedList[] = "KestrelGetPSharePoolStats: NODAL_ParamListCreate() failure\n";
constexpr char kSharedNotAdded[] = "KestrelGetPSharePoolStats: NODAL_ParamListAddInt() failure, error code: <number>\n";

INSTANTIATE_TEST_SUITE_P(
    SharedPool, LPoolCall,
    testing::Values(WithoutThisPool("NoListForTheFirst", "NODAL_ParamListCreate", "*", 1, 0, kNoSharedList),
                    WithoutThisPool("NoListForTheSecond", "NODAL_ParamListCreate", "*", 6, 4, kNoSharedList),
                    WithoutThisPool("TheFirstNodeIsNotAdded", "NODAL_ParamListAddInt", "*", 1, 0, kSharedNotAdded),
                    WithoutThisPool("TheSecondNodeIsNotAdded", "NODAL_ParamListAddInt", "*", 6, 4, kSharedNotAdded),
                    WithoutThisPool("TheFirstIsUnreadable", "NODAL_Get", kShared, 1, 0, kPoolFailure),
                    WithoutThisPool("TheSecondIsUnreadable", "NODAL_Get", kShared, 2, 4, kPoolFailure),
                    FailingCall{"NoneIsReadable", "NODAL_Get", kShared, 0, Rows({1, 2, 3, 5, 6}, "22005"),
                                std::string(kPoolFailure) + kPoolFailure, 0}),
    NameOf<FailingCall>);

constexpr char kNoPoolList[] = "KestrelGetVmPoolStats: NODAL_ParamListCreate() failure\n";
constexpr char kNodeNotAdded[] = "KestrelGetVmPoolStats: NODAL_ParamListAddInt() failure, error code: <number>\n";
constexpr char kNameNotAdded[] = "KestrelGetVmPoolStats: NODAL_ParamListAddString() failure, error code: <number>\n";

INSTANTIATE_TEST_SUITE_P(
    MachinePool, LPoolCall,
    testing::Values(
        WithoutThisPool("NoListForTheFirst", "NODAL_ParamListCreate", "*", 3, 1, kNoPoolList),
        WithoutThisPool("NoListForOneInTheMiddle", "NODAL_ParamListCreate", "*", 4, 2, kNoPoolList),
        WithoutThisPool("NoListForTheLast", "NODAL_ParamListCreate", "*", 9, 6, kNoPoolList),
        WithoutThisPool("TheNodeOfTheFirstIsNotAdded", "NODAL_ParamListAddInt", "*", 3, 1, kNodeNotAdded),
        WithoutThisPool("TheNodeOfOneInTheMiddleIsNotAdded", "NODAL_ParamListAddInt", "*", 5, 3, kNodeNotAdded),
        WithoutThisPool("TheNodeOfTheLastIsNotAdded", "NODAL_ParamListAddInt", "*", 9, 6, kNodeNotAdded),
        WithoutThisPool("TheFirstNameIsNotAdded", "NODAL_ParamListAddString", "*", 1, 1, kNameNotAdded),
        WithoutThisPool("ANameInTheMiddleIsNotAdded", "NODAL_ParamListAddString", "*", 4, 5, kNameNotAdded),
        WithoutThisPool("TheLastNameIsNotAdded", "NODAL_ParamListAddString", "*", 5, 6, kNameNotAdded),
        WithoutThisPool("TheFirstIsUnreadable", "NODAL_Get", kPools, 1, 1, kPoolFailure),
        WithoutThisPool("OneInTheMiddleIsUnreadable", "NODAL_Get", kPools, 3, 3, kPoolFailure),
        WithoutThisPool("TheLastIsUnreadable", "NODAL_Get", kPools, 5, 6, kPoolFailure),
        FailingCall{"NoneIsReadable", "NODAL_Get", kPools, 0, Rows({0, 4}, "6002"),
                    std::string(kPoolFailure) + kPoolFailure + kPoolFailure + kPoolFailure + kPoolFailure, 0}),
    NameOf<FailingCall>);

// What fails about the list of a node's pools ends the report.
constexpr char kNoWalkList[] = "KestrelTraverseLPools: NODAL_ParamListCreate() failure\n";
constexpr char kWalkNotAdded[] = "KestrelTraverseLPools: NODAL_ParamListAddInt() failure, error code: <number>\n";
constexpr char kNotListed[] = "KestrelTraverseLPools: NODAL_GetInstanceListAllocHint() failure\n";
constexpr char kNoName[] = "KestrelTraverseLPools: NODAL_ParamListGetString() failure\n";

INSTANTIATE_TEST_SUITE_P(
    Pools, LPoolCall,
    testing::Values(
        FailingCall{"NoListForTheFirstNode", "NODAL_ParamListCreate", "*", 2, Rows({0}), kNoWalkList, 1},
        FailingCall{"NoListForTheSecondNode", "NODAL_ParamListCreate", "*", 7, Rows({0, 1, 2, 3, 4}), kNoWalkList, 1},
        FailingCall{"TheFirstNodeIsNotAdded", "NODAL_ParamListAddInt", "*", 2, Rows({0}), kWalkNotAdded, 1},
        FailingCall{"TheSecondNodeIsNotAdded", "NODAL_ParamListAddInt", "*", 7, Rows({0, 1, 2, 3, 4}), kWalkNotAdded,
                    1},
        FailingCall{"OfTheFirstNodeNotListed", "NODAL_GetInstanceListAllocHint", kPools, 1, Rows({0}), kNotListed, 1},
        FailingCall{"OfTheSecondNodeNotListed", "NODAL_GetInstanceListAllocHint", kPools, 2, Rows({0, 1, 2, 3, 4}),
                    kNotListed, 1},
        FailingCall{"TheFirstName", "NODAL_ParamListGetString", kPools, 1, Rows({0}), kNoName, 1},
        FailingCall{"ANameInTheMiddle", "NODAL_ParamListGetString", kPools, 3, Rows({0, 1, 2}), kNoName, 1},
        FailingCall{"TheLastName", "NODAL_ParamListGetString", kPools, 5, Rows({0, 1, 2, 3, 4, 5}), kNoName, 1}),
    NameOf<FailingCall>);

INSTANTIATE_TEST_SUITE_P(Start, LPoolCall,
                         testing::Values(FailingCall{"TheNumberOfNodes", "NODAL_Get", kMemInfo, 1, Rows({}),
                                                     "KestrelTraversLPools: NODAL_Get hardwareInfo failure\n", 1},
                                         FailingCall{"TheNumberOfMachines", "NODAL_Get", kNumVMs, 1, Rows({}),
                                                     "KestrelTraversLPools: NODAL_Get numVMs failure\n", 1},
                                         FailingCall{"EveryList", "NODAL_ParamListCreate", "*", 0, Rows({}),
                                                     std::string(kNoSharedList) + kNoWalkList, 1}),
                         NameOf<FailingCall>);

TEST(LPoolStatsMessages, StandBetweenTheRows) {
  StandinHost host = LargePagesHost();
  host.Fail({.operation = "NODAL_Get", .node = kShared, .call = 2, .status = 0x0bad0003});
  host.Fail({.operation = "NODAL_ParamListGetString", .node = kPools, .call = 5});
  const StandinRun run = RunKestrel(host, WithOptions({"-q", "-s", "nodeID"}), {.errorsToOutput = true});
  EXPECT_EQ(run.outcome.output,
            "name,nodeID\npshare-0,0\nweb,0\na-pool-with-a-long-name,0\ndb,0\n"
            "KestrelGetVmPoolStats() failure, error code: 195887107\n"
            "web,1\nKestrelTraverseLPools: NODAL_ParamListGetString() failure\n");
  EXPECT_EQ(run.outcome.exitStatus, 1);
}

TEST(LPoolStatsCalls, ThePoolsComeNodeByNode) {
  const StandinRun run = RunKestrel(LargePagesHost(), WithOptions({}));
  EXPECT_EQ(CallsThatCount(run),
            (std::vector<std::string>{
                "NODAL_CheckSig(21) = 0",
                "NODAL_Get(memory_memInfo, [], 24) = 0",
                "NODAL_Get(sched_globalStats_numVMs, [], 4) = 0",
                "NODAL_ParamListCreate(1, 1) = list1",
                "NODAL_ParamListAddInt(list1, 0) = 0",
                "NODAL_Get(memory_lpage_nodeList_psharePool, [0], 96) = 0",
                "NODAL_ParamListDestroy(list1)",
                "NODAL_ParamListCreate(1, 2) = list2",
                "NODAL_ParamListAddInt(list2, 0) = 0",
                "NODAL_GetInstanceListAllocHint(memory_lpage_nodeList_vmPools, [0], 3) = 0 list3",
                "NODAL_ParamListDestroy(list2)",
                "NODAL_ParamListGetString(list3, 0) = 0",
                "NODAL_ParamListCreate(1, 2) = list4",
                "NODAL_ParamListAddInt(list4, 0) = 0",
                "NODAL_ParamListAddString(list4, \"web\") = 0",
                "NODAL_Get(memory_lpage_nodeList_vmPools, [0,\"web\"], 96) = 0",
                "NODAL_ParamListDestroy(list4)",
                "NODAL_ParamListGetString(list3, 1) = 0",
                "NODAL_ParamListCreate(1, 2) = list5",
                "NODAL_ParamListAddInt(list5, 0) = 0",
                "NODAL_ParamListAddString(list5, \"a-pool-with-a-long-name\") = 0",
                "NODAL_Get(memory_lpage_nodeList_vmPools, [0,\"a-pool-with-a-long-name\"], 96) = 0",
                "NODAL_ParamListDestroy(list5)",
                "NODAL_ParamListGetString(list3, 2) = 0",
                "NODAL_ParamListCreate(1, 2) = list6",
                "NODAL_ParamListAddInt(list6, 0) = 0",
                "NODAL_ParamListAddString(list6, \"db\") = 0",
                "NODAL_Get(memory_lpage_nodeList_vmPools, [0,\"db\"], 96) = 0",
                "NODAL_ParamListDestroy(list6)",
                "NODAL_ParamListDestroy(list3)",
                "NODAL_ParamListCreate(1, 1) = list7",
                "NODAL_ParamListAddInt(list7, 1) = 0",
                "NODAL_Get(memory_lpage_nodeList_psharePool, [1], 96) = 0",
                "NODAL_ParamListDestroy(list7)",
                "NODAL_ParamListCreate(1, 2) = list8",
                "NODAL_ParamListAddInt(list8, 1) = 0",
                "NODAL_GetInstanceListAllocHint(memory_lpage_nodeList_vmPools, [1], 3) = 0 list9",
                "NODAL_ParamListDestroy(list8)",
                "NODAL_ParamListGetString(list9, 0) = 0",
                "NODAL_ParamListCreate(1, 2) = list10",
                "NODAL_ParamListAddInt(list10, 1) = 0",
                "NODAL_ParamListAddString(list10, \"web\") = 0",
                "NODAL_Get(memory_lpage_nodeList_vmPools, [1,\"web\"], 96) = 0",
                "NODAL_ParamListDestroy(list10)",
                "NODAL_ParamListGetString(list9, 1) = 0",
                "NODAL_ParamListCreate(1, 2) = list11",
                "NODAL_ParamListAddInt(list11, 1) = 0",
                "NODAL_ParamListAddString(list11, \"mail\") = 0",
                "NODAL_Get(memory_lpage_nodeList_vmPools, [1,\"mail\"], 96) = 0",
                "NODAL_ParamListDestroy(list11)",
                "NODAL_ParamListDestroy(list9)",
            }));
}

}  // namespace
}  // namespace faults
