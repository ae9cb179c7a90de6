// Every call of a run fails once, in every way that the program tells apart. Whatever it is, the program ends in order,
// gives back its lists, and prints no row that it would not have printed otherwise.
#include <set>
#include <tuple>

#include "tests/faults/hosts.h"
#include "tests/faults/machine_hosts.h"
#include "tests/faults/report_case.h"
#include "tests/support/text.h"

namespace faults {
namespace {

using testing_support::Lines;

struct Scenario {
  const char *name;
  StandinHost (*host)();
  std::vector<std::string> arguments;
};

class EveryCall : public testing::TestWithParam<std::tuple<Scenario, HVC_ReturnStatus>> {
 protected:
  const Scenario &scenario() const { return std::get<0>(GetParam()); }
  HVC_ReturnStatus status() const { return std::get<1>(GetParam()); }

  StandinRun RunWith(const Fault &fault) const {
    return RunKestrel(scenario().host().Fail(fault), scenario().arguments);
  }
};

TEST_P(EveryCall, MayFailOnce) {
  const StandinRun clean = RunKestrel(scenario().host(), scenario().arguments);
  ASSERT_EQ(clean.outcome.exitStatus, 0) << clean;
  const std::vector<std::string> cleanLines = Lines(clean.outcome.output);
  const std::set<std::string> rows(cleanLines.begin(), cleanLines.end());

  const unsigned calls = FallibleCalls(clean);
  ASSERT_GT(calls, 2u);
  for (unsigned call = 1; call <= calls; ++call) {
    const StandinRun run = RunWith({.call = call, .status = status()});
    SCOPED_TRACE(testing::Message() << "call " << call << " fails\n" << run);
    ASSERT_EQ(run.outcome.signal, 0);
    ASSERT_TRUE(run.outcome.exitStatus == 0 || run.outcome.exitStatus == 1);
    ASSERT_EQ(ListErrors(run), "");
    for (const std::string &line : Lines(run.outcome.output))
      ASSERT_TRUE(rows.contains(line)) << line;
  }
}

TEST_P(EveryCall, MayFailForGood) {
  for (const char *operation :
       {"NODAL_ParamListCreate", "NODAL_ParamListCreateAndAllocateParams", "NODAL_ParamListAddInt",
        "NODAL_ParamListAddString", "NODAL_ParamListRemoveLastParam", "NODAL_ParamListGetInt64",
        "NODAL_ParamListGetInt32", "NODAL_ParamListGetUInt32", "NODAL_ParamListGetString", "NODAL_Get",
        "NODAL_GetInstanceList", "NODAL_GetInstanceListAlloc", "NODAL_GetInstanceListAllocHint"}) {
    const StandinRun run = RunWith({.operation = operation, .status = status()});
    EXPECT_EQ(run.outcome.signal, 0) << run;
    EXPECT_TRUE(run.outcome.exitStatus == 0 || run.outcome.exitStatus == 1) << run;
    EXPECT_EQ(ListErrors(run), "") << run;
  }
}

std::string NameOf(const testing::TestParamInfo<EveryCall::ParamType> &info) {
  const auto &[scenario, status] = info.param;
  return std::string(scenario.name) + "Status" + std::to_string(status & 0xffff);
}

// Totals change with what fails, so the reports that have them show columns without.
INSTANTIATE_TEST_SUITE_P(
    Reports, EveryCall,
    testing::Combine(
        testing::Values(
            Scenario{"GroupStats", SmallHost, {"-r", "group-stats", "-q"}},
            Scenario{"PShareStats", SharingHost, {"-r", "pshare-stats"}},
            Scenario{"VmStats", MachinesHost, {"-r", "vm-stats", "-q", "-s", "name:max"}},
            Scenario{"UwStats", MachinesHost, {"-r", "uw-stats", "-q", "-s", "name:max", "-g", "30"}},
            Scenario{"SwapStats", MachinesHost, {"-r", "swap-stats", "-q", "-s", "name:cacheUsage", "-g", "30"}},
            Scenario{"GuestStats", MachinesHost, {"-r", "guest-stats", "-q", "-s", "name:worldGrp", "-g", "30"}},
            Scenario{"ZipStats", MachinesHost, {"-r", "zip-stats", "-q", "-s", "name:worldGrp", "-g", "30"}},
            Scenario{"LPageStats", MachinesHost, {"-r", "lpage-stats", "-q", "-s", "name:worldGrp", "-g", "30"}},
            Scenario{
                "AsyncRemapStats", MachinesHost, {"-r", "asyncremap-stats", "-q", "-s", "name:grpLeader", "-g", "20"}},
            Scenario{"PShareHintStats", HintsHost, {"-r", "pshareHint-stats"}},
            Scenario{"BuddyStats", BuddyHost, {"-r", "buddy-stats", "-s", "name:type:numaNode"}},
            Scenario{"CompStats", ComprehensiveHost, {"-r", "comp-stats"}},
            Scenario{"LPoolStats", LargePagesHost, {"-r", "lpool-stats", "-s", "nodeID"}},
            Scenario{"HeapStats", HeapsHost, {"-r", "heap-stats", "-s", "dynGrow:numSuccAllocs"}},
            Scenario{"PMemRegionStoreStats", PMemHost, {"-r", "pmem-regionstore-stats"}},
            Scenario{"PMemRegionStats", PMemHost, {"-r", "pmem-region-stats"}},
            Scenario{"PMemExtentStats", PMemHost, {"-r", "pmem-extent-stats"}},
            Scenario{"PMemRegionNumaStats", PMemHost, {"-r", "pmem-region-numa-stats", "-q"}}),
        testing::Values(0x0bad0001u, 0x0bad0003u, 0x0bad0031u)),
    NameOf);

}  // namespace
}  // namespace faults
