// One run of kestrel over the stand-in and its expected results, as a row of a table of tests.
//
// Tables are arrays without constructors, since rows of strings and hosts would take long to compile.
#ifndef TESTS_FAULTS_REPORT_CASE_H
#define TESTS_FAULTS_REPORT_CASE_H

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/standin_host.h"
#include "tests/support/text.h"

namespace faults {

using testing_support::Fault;
using testing_support::Group;
using testing_support::Lines;
using testing_support::StandinHost;
using testing_support::StandinRun;

// A text in pieces, joined at run time.
class Text {
 public:
  constexpr Text(const char *first, const char *second = nullptr, const char *third = nullptr,
                 const char *fourth = nullptr)
      : pieces_{first, second, third, fourth, nullptr} {}
  // REQUIRES: `rest` has at most four pieces.
  constexpr Text(const char *first, const Text &rest)
      : pieces_{first, rest.pieces_[0], rest.pieces_[1], rest.pieces_[2], rest.pieces_[3]} {}

  std::string JoinedBy(const char *separator) const {
    std::string joined;
    for (const char *piece : pieces_) {
      if (piece != nullptr) joined += (joined.empty() ? "" : separator) + std::string(piece);
    }
    return joined;
  }

 private:
  std::array<const char *, 5> pieces_;
};

struct ReportCase {
  const char *name;  // of the test
  StandinHost (*host)();
  Text arguments;  // split at blanks; single quotes enclose blanks or an empty argument
  Text output;     // with "<time>" for the time
  Text errors = "";
  int exitStatus = 0;
};

inline void PrintTo(const ReportCase &reportCase, std::ostream *stream) { *stream << reportCase.name; }

template <typename Row>
std::string NameOf(const testing::TestParamInfo<Row> &info) {
  return info.param.name;
}

// Runs kestrel and compares output, messages and exit status. Checks that it destroys its lists.
inline StandinRun Check(const StandinHost &host, const std::string &arguments, const std::string &output,
                        const std::string &errors = "", int exitStatus = 0) {
  StandinRun run = RunKestrel(host, testing_support::Words(arguments));
  EXPECT_EQ(run.outcome.output, output);
  EXPECT_EQ(run.outcome.errors, errors);
  EXPECT_EQ(run.outcome.exitStatus, exitStatus) << run;
  EXPECT_EQ(ListErrors(run), "") << run;
  return run;
}

inline StandinRun Check(const ReportCase &expected) {
  return Check(expected.host(), expected.arguments.JoinedBy(" "), expected.output.JoinedBy(""),
               expected.errors.JoinedBy(""), expected.exitStatus);
}

// The calls of a run, without those that return the length of a list.
inline std::vector<std::string> CallsThatCount(const StandinRun &run) {
  std::vector<std::string> calls = run.calls;
  std::erase_if(calls, [](const std::string &call) { return call.starts_with("NODAL_ParamListUsedCount"); });
  return calls;
}

}  // namespace faults

#endif  // TESTS_FAULTS_REPORT_CASE_H
