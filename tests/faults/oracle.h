// Derives the expected results of runs with one failure from a run without failures.
#ifndef TESTS_FAULTS_ORACLE_H
#define TESTS_FAULTS_ORACLE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/failure_rows.h"
#include "tests/faults/logged_calls.h"
#include "tests/faults/memory_modules.h"
#include "tests/faults/report_table.h"

namespace faults {

std::string Replaced(std::string text, const std::string &part, const std::string &replacement);

// Replaces <number> and <hex> in the messages of a FailureRow with the status.
std::string WithStatus(const std::string &errors, HVC_ReturnStatus status);

class Oracle {
 public:
  struct Expected {
    std::string output;
    std::string errors;
    int exitStatus;
  };

  Oracle(const Report &report, const testing_support::StandinRun &clean);

  const std::vector<LoggedCall> &calls() const { return log_.calls(); }

  // The first row of the report's table for this call and status; null if no row matches.
  const FailureRow *Find(const LoggedCall &call, HVC_ReturnStatus status) const;

  // REQUIRES: the table has a row for the call.
  Expected WhenFails(const LoggedCall &call, HVC_ReturnStatus status) const;
  // Returns the reads and writes of a run with this failure, in the form of CallLog::Accesses(). Returns std::nullopt
  // if the row does not define them.
  std::optional<std::vector<std::string>> AccessesWhenFails(const LoggedCall &call, HVC_ReturnStatus status) const;

 private:
  // The last line of the log before the header; SIZE_MAX if the header follows all reads.
  size_t HeaderLine(const testing_support::StandinRun &clean) const;
  // For each row, the line of the last read before the row.
  std::vector<size_t> RowLines() const;
  // For each row, the line where its buddy's memory node is read.
  std::vector<size_t> Lookups() const;

  // Returns the next read of the search for sockets after a call, or null if there is none.
  const LoggedCall *NextRead(const LoggedCall &call) const;
  bool HasSocket(const LoggedCall &call) const;
  bool IsLost(size_t row, const FailureRow &failure, const LoggedCall &call) const;
  std::string WithoutLost(const FailureRow &failure, const LoggedCall &call, bool endsRun) const;
  std::string Messages(const FailureRow &row, const LoggedCall &call, HVC_ReturnStatus status) const;
  int ExitStatus(const FailureRow &row, const LoggedCall &call) const;

  const Report &report_;
  ReportTable table_;
  CallLog log_;
  size_t headerLine_;
  std::vector<size_t> rowLines_;
  std::vector<size_t> lookups_;
  std::vector<Step> steps_;  // of dcpmm-stats
};

}  // namespace faults

#endif  // TESTS_FAULTS_ORACLE_H
