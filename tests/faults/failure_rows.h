// The expected effects of failing calls: for each report, a table with one row per kind of call.
//
// For a new report, add a Report with such a table; all tests of every_call_test.cc then cover it. A call without a row
// fails the tests, and so does a row without a call.
#ifndef TESTS_FAULTS_FAILURE_ROWS_H
#define TESTS_FAULTS_FAILURE_ROWS_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tests/faults/logged_calls.h"
#include "tests/support/standin_host.h"

namespace faults {

// The effect of a failure on the rows that the report prints.
enum class Effect {
  kNone,
  kLosesRow,      // omits the row that the call is for
  kLosesGroup,    // omits the group and all groups below it; for the start group, the exit status is 1
  kLosesChild,    // as kLosesGroup, but the exit status is 1 for the last child of the start group
  kEndsTable,     // prints no more rows, but the text after the rows
  kEndsRun,       // prints nothing more; FailureRow::exitStatus is the exit status
  kLosesBuddy,    // omits the buddy whose memory node is read
  kEndsScan,      // ends the search for buddies, but keeps those found before
  kEndsSearch,    // ends the search for sockets, but keeps those found before; without any, the exit status is 1
  kSpoilsSearch,  // the next read of the search for sockets fails, and ends the search
};

// <number>, <hex> and <text> stand for the status, <1> for the first argument of the read, and <step> for the message
// of the step around the call.
struct Message {
  std::string text;
  std::vector<HVC_ReturnStatus> silent = {};  // statuses without this message
};

using Messages = std::vector<Message>;

struct FailureRow {
  std::string operation;
  std::string place;    // as in LoggedCall
  unsigned number = 0;  // as in LoggedCall; 0: all calls
  Messages messages = {};
  Effect effect = Effect::kNone;
  int exitStatus = 0;                       // if the run ends
  std::vector<HVC_ReturnStatus> only = {};  // statuses that this row covers; empty: those that no earlier row covers
  bool isIgnored = false;                   // the report ignores the status and uses what the call filled
  bool readsOn = false;                     // the report makes more reads than the effect implies
};

using FailureTable = std::vector<FailureRow>;

// When a report prints the header of its table.
enum class Header { kFirst, kAfterProgramming, kAfterReading };

// The total row: none; the sum of each column; the same, but zip-stats averages its times; the same, but the sums of
// heaps are one column to the left of their figures, and three columns are 0.
enum class Total { kNone, kAdded, kOfZip, kOfHeaps };

struct Report {
  const char *name;  // of the test
  testing_support::StandinHost (*host)();
  std::vector<std::string> arguments;
  FailureTable table;
  // Places as in LoggedCall. The last read before the report prints a row is at one of them. Empty: the report prints
  // its rows after all reads.
  std::vector<std::string> rowReads = {};
  // The names of the rows, in the order in which the report reads their memory nodes; empty if it reads none.
  std::vector<std::string> lookedUp = {};
  Total total = Total::kNone;
  Header header = Header::kFirst;
  Parts parts = Parts::kOne;
  bool messagesInOutput = false;
  // Whether each figure of a row is a multiple of the number of the row's owner, such as its group or buddy. The shared
  // columns are exceptions.
  bool hasOwners = true;
  std::vector<std::string> sharedColumns = {};
};

inline void PrintTo(const Report &report, std::ostream *stream) { *stream << report.name; }

std::vector<Report> GroupReports();
std::vector<Report> HostReports();
Report Profiler();

}  // namespace faults

#endif  // TESTS_FAULTS_FAILURE_ROWS_H
