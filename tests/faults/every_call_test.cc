// Every call of every report fails once, in every way that the program tells apart, and the run is held against the
// report's table of failures: its output to the byte, its messages and its status. Whatever fails, the program gives
// back its lists, no row has figures of two owners, and the total is that of the rows above it.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#include "tests/faults/failing_call.h"
#include "tests/faults/failure_rows.h"
#include "tests/faults/memory_modules.h"
#include "tests/support/text.h"

namespace faults {
namespace {

using testing_support::Lines;

constexpr HVC_ReturnStatus kNotFound = 0x0bad0003;
constexpr HVC_ReturnStatus kStatuses[] = {HVC_FAILURE, kNotFound, 0x0bad0031};

// What happens before a report is asked for anything.
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
    // A profile cannot be taken from a file.
    if (report.arguments[0] == "-r") {
      std::erase_if(report.table, [](const FailureRow &row) { return row.operation == "NODAL_UseCache"; });
    }
  }
  return all;
}

StandinRun RunOver(const Report &report, const std::optional<Fault> &fault = {}) {
  StandinHost host = report.host().AddCache("/host.cache");
  if (fault) host.Fail(*fault);
  return RunKestrel(host, report.arguments);
}

// The table of an output in CSV.

using Cells = std::vector<std::string>;

Cells Split(const std::string &line) {
  Cells cells;
  for (size_t start = 0; start <= line.size();) {
    const size_t end = std::min(line.find(',', start), line.size());
    cells.push_back(line.substr(start, end - start));
    start = end + 1;
  }
  return cells;
}

std::string Joined(const Cells &cells) {
  std::string line;
  for (const std::string &cell : cells)
    line += (&cell == &cells.front() ? "" : ",") + cell;
  return line;
}

bool IsNumber(const std::string &cell) { return !cell.empty() && cell.find_first_not_of("0123456789") == cell.npos; }

struct Table {
  Cells header = {};  // none: the run did not come to its table
  std::vector<Cells> rows = {};
  std::optional<Cells> total = {};
  std::string closing = {};  // the descriptions and what follows them

  explicit Table(const Report &report, const std::string &output) {
    std::vector<std::string> lines = Lines(output);
    const auto end = std::find(lines.begin(), lines.end(), "Description of report header labels:");
    for (auto line = end; line != lines.end(); ++line)
      closing += *line + "\n";
    lines.erase(end, lines.end());
    if (lines.empty()) return;
    header = Split(lines.front());
    for (size_t i = 1; i < lines.size(); ++i)
      rows.push_back(Split(lines[i]));
    const bool endsInTotal = report.total != Total::kNone && !rows.empty() &&
                             (rows.back().front() == "Total" || rows.back().front().empty());
    if (!endsInTotal) return;
    total = rows.back();
    rows.pop_back();
  }

  uint64_t Sum(size_t column) const {
    uint64_t sum = 0;
    for (const Cells &row : rows)
      sum += std::stoull(row[column]);
    return sum;
  }
};

// A figure of the total row, the rows of which are those of the table.
uint64_t TotalFigure(const Table &table, Total kind, size_t column) {
  const std::string &name = table.header[column];
  if (kind == Total::kOfZip && (name == "avgZipTime" || name == "avgUnzipTime")) {
    return table.rows.empty() ? 0 : table.Sum(column) / table.rows.size();
  }
  if (kind == Total::kOfHeaps) {
    // The sums stand one column to the left of what they are sums of.
    const bool isZero = name == "max" || name == "maxAvail" || name == "numShrinkOps";
    return isZero ? 0 : table.Sum(column + 1);
  }
  return table.Sum(column);
}

// A total row with texts and blanks like another one's.
Cells TotalLike(const Cells &other, const Table &table, Total kind) {
  Cells total = other;
  for (size_t column = 0; column < total.size(); ++column) {
    if (IsNumber(total[column])) total[column] = std::to_string(TotalFigure(table, kind, column));
  }
  return total;
}

// The number that a cell is or, if it is a name, ends in; none if it has none or is a zero.
uint64_t NumberIn(const std::string &cell) {
  if (cell.starts_with("0x")) return std::stoull(cell, nullptr, 16);
  const size_t end = cell.find_last_not_of("0123456789");
  const std::string digits = end == cell.npos ? cell : cell.substr(end + 1);
  // Page-sharing pools are named by the report, after their memory nodes.
  return digits.empty() || cell.starts_with("pshare-") ? 0 : std::stoull(digits);
}

bool HasOneOwner(const Report &report, const Table &table, const Cells &row) {
  return std::ranges::any_of(std::initializer_list<uint64_t>{113, 127, 131, 137, 139, 149}, [&](uint64_t owner) {
    for (size_t column = 0; column < row.size(); ++column) {
      const bool isShared = std::ranges::count(report.sharedColumns, table.header[column]) != 0;
      if (!isShared && NumberIn(row[column]) % owner != 0) return false;
    }
    return true;
  });
}

// What holds for every run, whatever fails in it.
void CheckAnyRun(const Report &report, const StandinRun &run) {
  EXPECT_EQ(run.outcome.signal, 0);
  EXPECT_TRUE(run.outcome.exitStatus == 0 || run.outcome.exitStatus == 1);
  EXPECT_EQ(ListErrors(run), "");
  if (!report.hasOwners) return;
  const Table table(report, run.outcome.output);
  for (const Cells &row : table.rows)
    EXPECT_TRUE(HasOneOwner(report, table, row)) << Joined(row);
  if (table.total) {
    EXPECT_EQ(Joined(*table.total), Joined(TotalLike(*table.total, table, report.total)));
  }
}

// What a run without failures tells of those with one.
class Oracle {
 public:
  Oracle(const Report &report, const StandinRun &clean)
      : report_(report),
        table_(report, clean.outcome.output),
        log_(clean.calls, report.parts),
        headerLine_(HeaderLine(clean)),
        rowLines_(RowLines()),
        lookups_(Lookups()),
        steps_(Steps({{0, 100}})) {
    std::erase_if(steps_, [](const Step &step) { return step.kind != Step::kWrite && step.kind != Step::kRead; });
  }

  const std::vector<LoggedCall> &calls() const { return log_.calls(); }

  // The first row of the table for a call that fails so; null if there is none.
  const FailureRow *Find(const LoggedCall &call, HVC_ReturnStatus status) const {
    const auto row = std::ranges::find_if(report_.table, [&](const FailureRow &candidate) {
      return candidate.operation == call.operation && candidate.place == call.place &&
             (candidate.number == 0 || candidate.number == call.number) &&
             (candidate.only.empty() || std::ranges::count(candidate.only, status) != 0);
    });
    return row == report_.table.end() ? nullptr : &*row;
  }

  struct Expected {
    std::string output;
    std::string errors;
    int exitStatus;
  };

  Expected WhenFails(const LoggedCall &call, HVC_ReturnStatus status) const {
    const FailureRow &row = *Find(call, status);
    if (row.effect == Effect::kSpoilsSearch) {
      const LoggedCall *next = NextRead(call);
      if (next != nullptr) return WhenFails(*next, kNotFound);
    }
    const bool endsRun = row.effect == Effect::kEndsRun || (row.effect == Effect::kEndsSearch && !HasSocket(call));
    const std::string messages = Messages(row, call, status);
    std::string output = !endsRun || call.line > headerLine_ ? WithoutLost(row, call, endsRun) : "";
    // What ends the front end is no message of the report.
    if (!report_.messagesInOutput || row.place.empty()) return {output, messages, ExitStatus(row, call)};
    const bool isSaidFirst = row.effect == Effect::kEndsSearch;
    output = isSaidFirst ? messages + output : output + messages;
    return {output + (isSaidFirst && endsRun ? "\n No Valid PCI BUS found.\n" : ""), "", ExitStatus(row, call)};
  }

 private:
  // The last line of the log before the header is printed.
  size_t HeaderLine(const StandinRun &clean) const {
    if (report_.header == Header::kAfterReading) return SIZE_MAX;
    size_t line = 0;
    for (const LoggedCall &call : log_.calls()) {
      const bool isReset = clean.calls[call.line].find("[258]") != std::string::npos;
      if (report_.header == Header::kAfterProgramming && isReset) return line;
      if (call.operation == (report_.header == Header::kFirst ? "NODAL_CheckSig" : "NODAL_Set")) line = call.line;
    }
    return line;
  }

  // The lines of the reads that each row follows.
  std::vector<size_t> RowLines() const {
    std::vector<size_t> reads;
    for (const LoggedCall &call : log_.calls()) {
      if (call.operation == "NODAL_Get" && std::ranges::count(report_.rowReads, call.place) != 0) {
        reads.push_back(call.line);
      }
    }
    if (report_.rowReads.empty()) return std::vector<size_t>(table_.rows.size(), SIZE_MAX);
    const size_t readsOfARow = reads.size() / table_.rows.size();
    std::vector<size_t> lines;
    for (size_t row = 0; row < table_.rows.size(); ++row)
      lines.push_back(reads[(row + 1) * readsOfARow - 1]);
    return lines;
  }

  // For each row the line at which its buddy's memory node is looked up. Rows are sorted by their names, look-ups come
  // in the order of the list.
  std::vector<size_t> Lookups() const {
    std::map<std::string, size_t> lines;
    const std::vector<std::string> listed = {"memmap-01-hi", "memmap-00-hi", "memmap-01-lo", "memmap-00-lo"};
    for (const LoggedCall &call : log_.calls()) {
      if (call.operation == "NODAL_Get" && call.place == "memory_memNodes") lines[listed[lines.size()]] = call.line;
    }
    std::vector<size_t> lookups;
    for (const Cells &row : table_.rows)
      lookups.push_back(lines[row.front()]);
    return lookups;
  }

  // The next read of a search after a call of it; null if it is over.
  const LoggedCall *NextRead(const LoggedCall &call) const {
    const auto next = std::ranges::find_if(log_.calls(), [&](const LoggedCall &later) {
      return later.line > call.line && (later.operation == "NODAL_Set" || later.operation == "NODAL_Get" ||
                                        later.operation == "NODAL_GetInstanceListAlloc");
    });
    return next->operation == "NODAL_Set" ? nullptr : &*next;
  }

  // Whether the search has found the socket before a call of it.
  bool HasSocket(const LoggedCall &call) const {
    return std::ranges::any_of(log_.calls(), [&](const LoggedCall &earlier) {
      return earlier.line < call.line && earlier.operation == "NODAL_Get" && earlier.arguments == "0,100,10,2";
    });
  }

  bool IsLost(size_t row, const FailureRow &failure, const LoggedCall &call) const {
    const auto isFirstFrom = [&call](const std::vector<size_t> &lines, size_t line) {
      return line >= call.line &&
             std::ranges::none_of(lines, [&](size_t other) { return other >= call.line && other < line; });
    };
    switch (failure.effect) {
      case Effect::kLosesRow: return isFirstFrom(rowLines_, rowLines_[row]);
      case Effect::kLosesGroup:
      case Effect::kLosesChild: return rowLines_[row] >= call.line && rowLines_[row] < log_.EndOfGroup(call.part);
      case Effect::kEndsTable:
      case Effect::kEndsRun: return rowLines_[row] >= call.line;
      case Effect::kLosesBuddy: return isFirstFrom(lookups_, lookups_[row]);
      case Effect::kEndsScan: return lookups_[row] > call.line;
      case Effect::kNone:
      case Effect::kEndsSearch:
      case Effect::kSpoilsSearch: return false;
    }
    return false;
  }

  std::string WithoutLost(const FailureRow &failure, const LoggedCall &call, bool endsRun) const {
    Table left = table_;
    left.rows.clear();
    for (size_t row = 0; row < table_.rows.size(); ++row) {
      if (!IsLost(row, failure, call)) left.rows.push_back(table_.rows[row]);
    }
    std::string output = Joined(left.header) + "\n";
    for (const Cells &row : left.rows)
      output += Joined(row) + "\n";
    if (endsRun) return output;
    if (left.total) output += Joined(TotalLike(*table_.total, left, report_.total)) + "\n";
    return output + left.closing;
  }

  std::string Messages(const FailureRow &row, const LoggedCall &call, HVC_ReturnStatus status) const {
    const std::string first = call.arguments.substr(0, call.arguments.find(','));
    std::string text;
    for (const Message &message : row.messages) {
      if (std::ranges::count(message.silent, status) == 0) text += message.text;
    }
    text = Replaced(WithStatus(text, status), "<1>", Replaced(first, "\"", ""));
    text = Replaced(text, "<text>", TextOf(status));
    return call.part > 0 && report_.parts == Parts::kRegisters ? Replaced(text, "<step>", steps_[call.part - 1].failure)
                                                               : text;
  }

  int ExitStatus(const FailureRow &row, const LoggedCall &call) const {
    const LoggedCall &start =
        *std::ranges::find(log_.calls(), std::string("NODAL_GetInstanceListAlloc"), &LoggedCall::operation);
    switch (row.effect) {
      case Effect::kLosesGroup: return call.part == 0 ? 1 : 0;
      case Effect::kLosesChild: return call.arguments == start.arguments && call.isLastInstance ? 1 : 0;
      case Effect::kEndsSearch: return HasSocket(call) ? 0 : 1;
      default: return row.exitStatus;
    }
  }

  static const char *TextOf(HVC_ReturnStatus status) {
    if (status == kNotFound) return "Not found";
    return status == HVC_FAILURE ? "Failure" : "Not initialized";
  }

  const Report &report_;
  Table table_;
  CallLog log_;
  size_t headerLine_;
  std::vector<size_t> rowLines_;
  std::vector<size_t> lookups_;
  std::vector<Step> steps_;  // of a profile
};

// A call that answers with a pointer has no status to fail with, and one of a register ends the run whatever it is.
bool HasOneFailure(const Report &report, const LoggedCall &call) {
  return call.operation.starts_with("NODAL_ParamListCreate") || call.operation == "NODAL_ParamListGetParam" ||
         (report.parts == Parts::kRegisters && call.part > 0);
}

class ReportFailures : public testing::TestWithParam<Report> {};

TEST_P(ReportFailures, AreAllInItsTable) {
  const Report &report = GetParam();
  const StandinRun clean = RunOver(report);
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

TEST_P(ReportFailures, ForGoodEndInOrder) {
  std::set<std::string> operations;
  for (const FailureRow &row : GetParam().table)
    operations.insert(row.operation);
  for (const std::string &operation : operations) {
    for (const HVC_ReturnStatus status : kStatuses) {
      const StandinRun run = RunOver(GetParam(), Fault{.operation = operation, .status = status});
      SCOPED_TRACE(testing::Message() << operation << " fails\n" << run);
      CheckAnyRun(GetParam(), run);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Every, ReportFailures, testing::ValuesIn(AllReports()), NameOf<Report>);

class EveryCall : public testing::TestWithParam<std::tuple<Report, HVC_ReturnStatus>> {};

TEST_P(EveryCall, FailsAsItsTableSays) {
  const auto &[report, status] = GetParam();
  const StandinRun clean = RunOver(report);
  const Oracle oracle(report, clean);
  for (size_t i = 0; i < oracle.calls().size(); ++i) {
    const LoggedCall &call = oracle.calls()[i];
    if (status != HVC_FAILURE && HasOneFailure(report, call)) continue;
    const StandinRun run = RunOver(report, Fault{.call = static_cast<unsigned>(i + 1), .status = status});
    SCOPED_TRACE(testing::Message() << clean.calls[call.line] << " fails\n" << run);
    ASSERT_NE(oracle.Find(call, status), nullptr);
    const Oracle::Expected expected = oracle.WhenFails(call, status);
    ASSERT_EQ(run.outcome.output, expected.output);
    ASSERT_EQ(run.outcome.errors, expected.errors);
    ASSERT_EQ(run.outcome.exitStatus, expected.exitStatus);
    CheckAnyRun(report, run);
    if (HasFailure()) return;
  }
}

std::string NameOfCalls(const testing::TestParamInfo<EveryCall::ParamType> &info) {
  const auto &[report, status] = info.param;
  return std::string(report.name) + "Status" + std::to_string(status & 0xffff);
}

INSTANTIATE_TEST_SUITE_P(Reports, EveryCall,
                         testing::Combine(testing::ValuesIn(AllReports()), testing::ValuesIn(kStatuses)), NameOfCalls);

}  // namespace
}  // namespace faults
