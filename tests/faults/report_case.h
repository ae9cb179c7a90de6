// One run of kestrel over the stand-in and all that is expected of it, as a row of a table of tests.
#ifndef TESTS_FAULTS_REPORT_CASE_H
#define TESTS_FAULTS_REPORT_CASE_H

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/support/standin_host.h"

namespace faults {

using testing_support::Fault;
using testing_support::Group;
using testing_support::StandinHost;
using testing_support::StandinRun;

struct ReportCase {
  const char *name;  // of the test
  StandinHost host;
  std::vector<std::string> arguments;
  std::string output;  // with "<time>" for the time
  std::string errors;
  int exitStatus;
};

inline void PrintTo(const ReportCase &reportCase, std::ostream *stream) { *stream << reportCase.name; }

template <typename Row>
std::string NameOf(const testing::TestParamInfo<Row> &info) {
  return info.param.name;
}

// Runs kestrel and compares everything that it leaves behind.
inline StandinRun Check(const ReportCase &expected) {
  StandinRun run = RunKestrel(expected.host, expected.arguments);
  EXPECT_EQ(run.outcome.output, expected.output);
  EXPECT_EQ(run.outcome.errors, expected.errors);
  EXPECT_EQ(run.outcome.exitStatus, expected.exitStatus) << run;
  EXPECT_EQ(ListErrors(run), "") << run;
  return run;
}

// The calls of a run without the mere questions for a list's length.
inline std::vector<std::string> CallsThatCount(const StandinRun &run) {
  std::vector<std::string> calls = run.calls;
  std::erase_if(calls, [](const std::string &call) { return call.starts_with("NODAL_ParamListUsedCount"); });
  return calls;
}

}  // namespace faults

#endif  // TESTS_FAULTS_REPORT_CASE_H
