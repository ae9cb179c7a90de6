// Every call of a run fails once, in every way that the program tells apart. Whatever it is, the program ends in order,
// gives back its lists, and prints no row that it would not have printed otherwise.
#include <set>

#include "tests/faults/hosts.h"
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

void PrintTo(const Scenario &scenario, std::ostream *stream) { *stream << scenario.name; }

class EveryCall : public testing::TestWithParam<Scenario> {};

TEST_P(EveryCall, MayFail) {
  const Scenario &scenario = GetParam();
  const StandinRun clean = RunKestrel(scenario.host(), scenario.arguments);
  ASSERT_EQ(clean.outcome.exitStatus, 0) << clean;
  const std::vector<std::string> cleanLines = Lines(clean.outcome.output);
  const std::set<std::string> rows(cleanLines.begin(), cleanLines.end());

  const unsigned calls = FallibleCalls(clean);
  ASSERT_GT(calls, 2u);
  for (unsigned call = 1; call <= calls; ++call) {
    for (const HVC_ReturnStatus status : {0x0bad0001u, 0x0bad0003u, 0x0bad0031u}) {
      const StandinRun run = RunKestrel(scenario.host().Fail({.call = call, .status = status}), scenario.arguments);
      SCOPED_TRACE(testing::Message() << "call " << call << " fails with " << std::hex << status << "\n" << run);
      ASSERT_EQ(run.outcome.signal, 0);
      ASSERT_TRUE(run.outcome.exitStatus == 0 || run.outcome.exitStatus == 1);
      ASSERT_EQ(ListErrors(run), "");
      for (const std::string &line : Lines(run.outcome.output))
        ASSERT_TRUE(rows.contains(line)) << line;
    }
  }
}

TEST_P(EveryCall, MayFailForGood) {
  const Scenario &scenario = GetParam();
  for (const char *operation : {"NODAL_ParamListCreate", "NODAL_ParamListAddInt", "NODAL_ParamListRemoveLastParam",
                                "NODAL_ParamListGetInt64", "NODAL_Get", "NODAL_GetInstanceListAlloc"}) {
    const StandinRun run = RunKestrel(scenario.host().Fail({.operation = operation}), scenario.arguments);
    EXPECT_EQ(run.outcome.signal, 0) << run;
    EXPECT_EQ(ListErrors(run), "") << run;
  }
}

INSTANTIATE_TEST_SUITE_P(Reports, EveryCall,
                         testing::Values(Scenario{"GroupStats", SmallHost, {"-r", "group-stats", "-q"}},
                                         Scenario{"PShareStats", SharingHost, {"-r", "pshare-stats"}}),
                         NameOf<Scenario>);

}  // namespace
}  // namespace faults
