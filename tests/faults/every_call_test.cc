// Runs each report many times. In each run, one call fails, in one of the ways that the program distinguishes; a build
// with sanitizers tries only one way, and not every call of a report with very many. Compares the output, messages,
// exit status, reads and writes with those that follow from the report's table of failures. After any failure, the
// program destroys its lists, no row mixes figures of two owners, and the total is the sum of the rows above it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "tests/faults/failure_rows.h"
#include "tests/faults/oracle.h"
#include "tests/faults/report_case.h"
#include "tests/faults/report_table.h"
#include "tests/support/report_names.h"

namespace faults {
namespace {

constexpr HVC_ReturnStatus kNotFound = 0x0bad0003;
constexpr HVC_ReturnStatus kStatuses[] = {HVC_FAILURE, kNotFound, 0x0bad0031};

// A way to fail.
struct Failing {
  HVC_ReturnStatus status;
  bool answers = false;  // the call fills its output although it fails
};
#ifdef KESTREL_SANITIZE
// With sanitizers, only one way is tested, and at most this number of calls of a report: programs start slowly, and the
// way hardly affects the use of memory.
constexpr Failing kWays[] = {{HVC_FAILURE}};
constexpr size_t kCalls = 400;
#else
constexpr size_t kCalls = SIZE_MAX;
constexpr Failing kWays[] = {{kStatuses[0]}, {kStatuses[1]}, {kStatuses[2]}, {HVC_FAILURE, true}};
#endif

// Whether the operation can fill its output and still fail.
bool CanAnswer(const LoggedCall &call) {
  return call.operation == "NODAL_Get" || call.operation == "NODAL_ParamListGetString" ||
         call.operation.starts_with("NODAL_ParamListGetInt");
}

// Calls before the report starts.
const FailureTable kFrontEnd = {
    {"NODAL_UseCache", "", 1, {{"Couldn't open cache file /host.cache, error code: <number>\n"}}, Effect::kEndsRun, 1},
    {"NODAL_CheckSig",
     "",
     1,
     {{"<hex>: md5 signature mismatch with running hvcore built on stand-in. (vs stand-in for app sysinfo)\n"
       "Version check failed\n"}},
     Effect::kEndsRun,
     1}};

std::vector<Report> AllReports() {
  std::vector<Report> all = GroupReports();
  for (const Report &report : HostReports())
    all.push_back(report);
  for (Report &report : all)
    report.arguments.insert(report.arguments.begin(), {"-c", "/host.cache"});
  all.push_back(Profiler());
  for (Report &report : all) {
    report.arguments.insert(report.arguments.end(), {"-q", "-v"});
    report.table.insert(report.table.end(), kFrontEnd.begin(), kFrontEnd.end());
    // dcpmm-stats refuses a saved host.
    if (report.arguments[0] == "-r") {
      std::erase_if(report.table, [](const FailureRow &row) { return row.operation == "NODAL_UseCache"; });
    }
  }
  return all;
}

StandinHost HostOf(const Report &report) { return report.host().AddCache("/host.cache"); }

// Runs the report over its host, with or without a fault.
StandinRun RunOver(const Report &report, StandinHost host, const std::optional<Fault> &fault = {}) {
  if (fault) host.Fail(*fault);
  return RunKestrel(host, report.arguments);
}

// Checks the properties that every run must have, whichever call fails.
void CheckAnyRun(const Report &report, const StandinRun &run) {
  EXPECT_EQ(run.outcome.signal, 0);
  EXPECT_TRUE(run.outcome.exitStatus == 0 || run.outcome.exitStatus == 1);
  EXPECT_EQ(ListErrors(run), "");
  if (!report.hasOwners) return;
  const ReportTable table(report, run.outcome.output);
  for (const Cells &row : table.rows) {
    ASSERT_EQ(row.size(), table.header.size()) << Joined(row);
    EXPECT_TRUE(HasOneOwner(report, table, row)) << Joined(row);
  }
  if (table.total) {
    EXPECT_EQ(Joined(*table.total), Joined(TotalLike(*table.total, table, report.total)));
  }
}

// Whether all statuses have the same effect. A call that returns a pointer has no status, and a failed register access
// ends the run.
bool HasOneFailure(const Report &report, const LoggedCall &call) {
  return call.operation.starts_with("NODAL_ParamListCreate") || call.operation == "NODAL_ParamListGetParam" ||
         (report.parts == Parts::kRegisters && call.part > 0);
}

class ReportFailures : public testing::TestWithParam<Report> {};

TEST_P(ReportFailures, AreAllInItsTable) {
  const Report &report = GetParam();
  const StandinRun clean = RunOver(report, HostOf(report));
  ASSERT_EQ(clean.outcome.exitStatus, 0) << clean;
  CheckAnyRun(report, clean);
  const Oracle oracle(report, clean);
  ASSERT_EQ(oracle.calls().size(), FallibleCalls(clean));

  std::set<const FailureRow *> found;
  for (const LoggedCall &call : oracle.calls()) {
    for (const HVC_ReturnStatus status : kStatuses) {
      const FailureRow *row = oracle.Find(call, status);
      EXPECT_NE(row, nullptr) << call.operation << ", " << call.place << ", " << call.number;
      found.insert(row);
    }
  }
  for (const FailureRow &row : report.table) {
    EXPECT_EQ(found.count(&row), 1u) << row.operation << ", " << row.place << ", " << row.number
                                     << ": there is no such call";
  }
}

TEST(ReportTables, AreThereForAllReports) {
  const std::vector<std::string> names = testing_support::ReportNames(KESTREL_PROGRAM);
  const std::set<std::string> listed(names.begin(), names.end());
  std::set<std::string> withTable;
  for (const Report &report : AllReports())
    withTable.insert(*std::next(std::ranges::find(report.arguments, "-r")));
  EXPECT_EQ(withTable, listed);
}

// Fails all calls of one kind: an operation on one node or list, or on arguments.
TEST_P(ReportFailures, ForGoodEndInOrder) {
  std::set<std::pair<std::string, std::string>> kinds;
  for (const FailureRow &row : GetParam().table) {
    const bool isAboutArguments = row.operation.starts_with("NODAL_ParamListCreate") ||
                                  row.operation.starts_with("NODAL_ParamListAdd") ||
                                  row.operation == "NODAL_ParamListRemoveLastParam";
    kinds.emplace(row.operation, isAboutArguments || row.place.empty() ? "*" : NodeOf(row.place));
  }
  const StandinHost host = HostOf(GetParam());
  for (const auto &[operation, node] : kinds) {
    for (const HVC_ReturnStatus status : {HVC_ReturnStatus{HVC_FAILURE}, kNotFound}) {
      const StandinRun run = RunOver(GetParam(), host, Fault{.operation = operation, .node = node, .status = status});
      CheckAnyRun(GetParam(), run);
      if (HasFailure()) {
        ADD_FAILURE() << operation << " of " << node << " fails\n" << run;
        return;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Every, ReportFailures, testing::ValuesIn(AllReports()), NameOf<Report>);

class EveryCall : public testing::TestWithParam<std::tuple<Report, Failing>> {};

TEST_P(EveryCall, FailsAsItsTableSays) {
  const auto &[report, failing] = GetParam();
  const auto [status, answers] = failing;
  const StandinHost host = HostOf(report);
  const StandinRun clean = RunOver(report, host);
  const Oracle oracle(report, clean);
  const size_t step = (oracle.calls().size() / kCalls + 1) | 1;  // odd, because many reads come in pairs
  for (size_t i = 0; i < oracle.calls().size(); i += step) {
    const LoggedCall &call = oracle.calls()[i];
    if (status != HVC_FAILURE && HasOneFailure(report, call)) continue;
    if (answers && !CanAnswer(call)) continue;
    const StandinRun run =
        RunOver(report, host, Fault{.call = static_cast<unsigned>(i + 1), .status = status, .answers = answers});
    const FailureRow *row = oracle.Find(call, status);
    ASSERT_NE(row, nullptr) << clean.calls[call.line];
    const bool isSuccess = answers && row->isIgnored;
    const Oracle::Expected expected =
        isSuccess ? Oracle::Expected{clean.outcome.output, "", 0} : oracle.WhenFails(call, status);
    CheckAnyRun(report, run);
    EXPECT_EQ(run.outcome.output, expected.output);
    EXPECT_EQ(run.outcome.errors, expected.errors);
    EXPECT_EQ(run.outcome.exitStatus, expected.exitStatus);
    const auto accesses = oracle.AccessesWhenFails(call, status);
    if (accesses) {
      EXPECT_EQ(CallLog(run.calls, Parts::kOne).Accesses(SIZE_MAX, SIZE_MAX), *accesses);
    }
    if (HasFailure()) {
      ADD_FAILURE() << clean.calls[call.line] << " fails\n" << run;
      return;
    }
  }
}

std::string NameOfCalls(const testing::TestParamInfo<EveryCall::ParamType> &info) {
  const auto &[report, failing] = info.param;
  return std::string(report.name) + "Status" + std::to_string(failing.status & 0xffff) +
         (failing.answers ? "InSpiteOfAnAnswer" : "");
}

INSTANTIATE_TEST_SUITE_P(Reports, EveryCall,
                         testing::Combine(testing::ValuesIn(AllReports()), testing::ValuesIn(kWays)), NameOfCalls);

// Checks that this build would have found leaks in the runs above.
TEST(Leaks, AreFound) {
#ifdef KESTREL_SANITIZE
  const StandinRun run = RunKestrel(StandinHost(), {"leak", "1000"}, {.program = QUERY_PROGRAM});
  EXPECT_EQ(run.outcome.exitStatus, 99);
  EXPECT_NE(run.outcome.errors.find("1000 byte(s) leaked"), std::string::npos) << run;
#else
  GTEST_SKIP() << "this build does not look for leaks";
#endif
}

}  // namespace
}  // namespace faults
