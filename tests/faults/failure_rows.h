// What is expected when a call fails, for each report a table with a row for each kind of call that it makes.
//
// A new report gets every test of every_call_test.cc by a Report with such a table. A call that no row is for fails the
// tests, as does a row that is for no call.
#ifndef TESTS_FAULTS_FAILURE_ROWS_H
#define TESTS_FAULTS_FAILURE_ROWS_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tests/faults/logged_calls.h"
#include "tests/support/standin_host.h"

namespace faults {

// What becomes of the rows that would have been printed.
enum class Effect {
  kNone,
  kLosesRow,      // that the call is for
  kLosesGroup,    // and the groups below it; the start group decides the result
  kLosesChild,    // the same for a group that has no ID; the start group's last child decides the result
  kEndsTable,     // no more rows, but all that follows them
  kEndsRun,       // nothing more, and the status below
  kLosesBuddy,    // whose memory node is looked up
  kEndsScan,      // of the buddies, those that were looked up stay
  kEndsSearch,    // for sockets, those that were found stay
  kSpoilsSearch,  // which then ends at its next read
};

// <number>, <hex> and <text> stand for the status, <1> for the first argument of the read, <step> for what the step
// that the call is part of says.
struct Message {
  std::string text;
  std::vector<HVC_ReturnStatus> silent = {};  // statuses that are no reason for it
};

using Messages = std::vector<Message>;

struct FailureRow {
  std::string operation;
  std::string place;    // as in LoggedCall
  unsigned number = 0;  // as in LoggedCall; 0: each
  Messages messages = {};
  Effect effect = Effect::kNone;
  int exitStatus = 0;                       // if the run ends
  std::vector<HVC_ReturnStatus> only = {};  // the statuses that the row is for; none: those that no earlier row is for
  bool isIgnored = false;                   // the status is: what the call gives in spite of it counts
  bool readsOn = false;                     // more is read than the effect lets expect
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
  // The places of which a successful read, the last of several, is followed by a row; none: the rows follow all reads.
  std::vector<std::string> rowReads = {};
  // The names of the rows in the order in which their memory nodes are looked up, if they are.
  std::vector<std::string> lookedUp = {};
  Total total = Total::kNone;
  Header header = Header::kFirst;
  Parts parts = Parts::kOne;
  bool messagesInOutput = false;
  // Whether every figure of a row is a multiple of its owner's number, but for those of some columns, which number what
  // the owner is part of.
  bool hasOwners = true;
  std::vector<std::string> sharedColumns = {};
};

inline void PrintTo(const Report &report, std::ostream *stream) { *stream << report.name; }

std::vector<Report> GroupReports();
std::vector<Report> HostReports();
Report Profiler();

}  // namespace faults

#endif  // TESTS_FAULTS_FAILURE_ROWS_H
