// The expected effects of failing calls: one table per report, with one row per kind of call.
//
// every_call_test.cc tests each Report with its table. The tests fail for a call without a row and for a row without a
// call.
#ifndef TESTS_FAULTS_FAILURE_ROWS_H
#define TESTS_FAULTS_FAILURE_ROWS_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tests/faults/logged_calls.h"
#include "tests/support/standin_host.h"

namespace faults {

// The effect on the printed rows.
enum class Effect {
  kNone,
  kLosesRow,      // the row of the call
  kLosesGroup,    // and the groups below it; a failing start group fails the run
  kLosesChild,    // the same for a child without an ID; the last child of the start group determines the result
  kEndsTable,     // no more rows; the lines after the rows are printed
  kEndsRun,       // no more output; exits with `exitStatus`
  kLosesBuddy,    // the buddy whose memory node is looked up
  kEndsScan,      // keeps the buddies that were looked up
  kEndsSearch,    // keeps the sockets that were found
  kSpoilsSearch,  // the search for sockets ends at its next read
};

// A message. <number>, <hex> and <text> are forms of the status, <1> is the first argument of the read, and <step> the
// message of the step.
struct Message {
  std::string text;
  std::vector<HVC_ReturnStatus> silent = {};  // no message for these statuses
};

using Messages = std::vector<Message>;

struct FailureRow {
  std::string operation;
  std::string place;    // as in LoggedCall
  unsigned number = 0;  // as in LoggedCall; 0: each
  Messages messages = {};
  Effect effect = Effect::kNone;
  int exitStatus = 0;                       // if the run ends
  std::vector<HVC_ReturnStatus> only = {};  // the statuses of this row; empty: all statuses without an earlier row
  bool isIgnored = false;                   // the status is ignored and the result used
  bool readsOn = false;                     // reads more than the effect suggests
};

using FailureTable = std::vector<FailureRow>;

// When a report prints the header of its table.
enum class Header { kFirst, kAfterProgramming, kAfterReading };

// The row of sums.
enum class Total { kNone, kAdded, kOfZip, kOfHeaps };

struct Report {
  const char *name;  // of the test
  testing_support::StandinHost (*host)();
  std::vector<std::string> arguments;
  FailureTable table;
  // A row is printed after a successful read at the last of these places; empty: after all reads.
  std::vector<std::string> rowReads = {};
  // The names of the rows in the order in which their memory nodes are looked up.
  std::vector<std::string> lookedUp = {};
  Total total = Total::kNone;
  Header header = Header::kFirst;
  Parts parts = Parts::kOne;
  bool messagesInOutput = false;
  // True if every figure of a row is a multiple of its owner's number, except in columns that identify the owner's
  // parent.
  bool hasOwners = true;
  std::vector<std::string> sharedColumns = {};
};

inline void PrintTo(const Report &report, std::ostream *stream) { *stream << report.name; }

std::vector<Report> GroupReports();
std::vector<Report> HostReports();
Report Profiler();

}  // namespace faults

#endif  // TESTS_FAULTS_FAILURE_ROWS_H
