#include "tests/faults/oracle.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>

namespace faults {

using testing_support::StandinRun;

namespace {

constexpr HVC_ReturnStatus kNotFound = 0x0bad0003;

const char *TextOf(HVC_ReturnStatus status) {
  if (status == kNotFound) return "Not found";
  return status == HVC_FAILURE ? "Failure" : "Not initialized";
}

}  // namespace

std::string Replaced(std::string text, const std::string &part, const std::string &replacement) {
  for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + replacement.size()))
    text.replace(at, part.size(), replacement);
  return text;
}

std::string WithStatus(const std::string &errors, HVC_ReturnStatus status) {
  char hex[16];
  std::snprintf(hex, sizeof hex, "%#x", status);
  return Replaced(Replaced(errors, "<number>", std::to_string(status)), "<hex>", hex);
}

Oracle::Oracle(const Report &report, const StandinRun &clean)
    : report_(report),
      table_(report, clean.outcome.output),
      log_(clean.calls, report.parts),
      headerLine_(HeaderLine(clean)),
      rowLines_(RowLines()),
      lookups_(Lookups()),
      steps_(Steps({{0, 100}})) {
  std::erase_if(steps_, [](const Step &step) { return step.kind != Step::kWrite && step.kind != Step::kRead; });
}

const FailureRow *Oracle::Find(const LoggedCall &call, HVC_ReturnStatus status) const {
  const auto row = std::ranges::find_if(report_.table, [&](const FailureRow &candidate) {
    return candidate.operation == call.operation && candidate.place == call.place &&
           (candidate.number == 0 || candidate.number == call.number) &&
           (candidate.only.empty() || std::ranges::count(candidate.only, status) != 0);
  });
  return row == report_.table.end() ? nullptr : &*row;
}

Oracle::Expected Oracle::WhenFails(const LoggedCall &call, HVC_ReturnStatus status) const {
  const FailureRow &row = *Find(call, status);
  if (row.effect == Effect::kSpoilsSearch) {
    const LoggedCall *next = NextRead(call);
    if (next != nullptr) return WhenFails(*next, kNotFound);
  }
  const bool endsRun = row.effect == Effect::kEndsRun || (row.effect == Effect::kEndsSearch && !HasSocket(call));
  const std::string messages = Messages(row, call, status);
  std::string output = !endsRun || call.line > headerLine_ ? WithoutLost(row, call, endsRun) : "";
  // A call of the front end fails before the report starts, so its message goes to standard error.
  if (!report_.messagesInOutput || row.place.empty()) return {output, messages, ExitStatus(row, call)};
  const bool isSaidFirst = row.effect == Effect::kEndsSearch;
  output = isSaidFirst ? messages + output : output + messages;
  return {output + (isSaidFirst && endsRun ? "\n No Valid PCI BUS found.\n" : ""), "", ExitStatus(row, call)};
}

std::optional<std::vector<std::string>> Oracle::AccessesWhenFails(const LoggedCall &call,
                                                                  HVC_ReturnStatus status) const {
  const FailureRow &row = *Find(call, status);
  if (row.isIgnored || row.readsOn) return {};
  switch (row.effect) {
    case Effect::kLosesGroup:
    case Effect::kLosesChild: return log_.Accesses(call.line, log_.EndOfGroup(call.part));
    case Effect::kEndsTable:
    case Effect::kEndsRun: return log_.Accesses(call.line, SIZE_MAX);
    default: return {};
  }
}

size_t Oracle::HeaderLine(const StandinRun &clean) const {
  if (report_.header == Header::kAfterReading) return SIZE_MAX;
  size_t line = 0;
  for (const LoggedCall &call : log_.calls()) {
    const bool isReset = clean.calls[call.line].find("[258]") != std::string::npos;
    if (report_.header == Header::kAfterProgramming && isReset) return line;
    if (call.operation == (report_.header == Header::kFirst ? "NODAL_CheckSig" : "NODAL_Set")) line = call.line;
  }
  return line;
}

std::vector<size_t> Oracle::RowLines() const {
  if (report_.rowReads.empty() || table_.rows.empty()) return std::vector<size_t>(table_.rows.size(), SIZE_MAX);
  std::vector<size_t> reads;
  for (const LoggedCall &call : log_.calls()) {
    if (call.operation == "NODAL_Get" && std::ranges::count(report_.rowReads, call.place) != 0) {
      reads.push_back(call.line);
    }
  }
  const size_t readsOfARow = reads.size() / table_.rows.size();
  std::vector<size_t> lines;
  for (size_t row = 0; row < table_.rows.size(); ++row)
    lines.push_back(reads[(row + 1) * readsOfARow - 1]);
  return lines;
}

std::vector<size_t> Oracle::Lookups() const {
  std::map<std::string, size_t> lines;
  auto name = report_.lookedUp.begin();
  for (const LoggedCall &call : log_.calls()) {
    if (name == report_.lookedUp.end()) break;
    if (call.operation == "NODAL_Get" && call.place == "memory_memNodes") lines[*name++] = call.line;
  }
  std::vector<size_t> lookups;
  for (const Cells &row : table_.rows)
    lookups.push_back(lines[row.front()]);
  return lookups;
}

const LoggedCall *Oracle::NextRead(const LoggedCall &call) const {
  const auto next = std::ranges::find_if(log_.calls(), [&](const LoggedCall &later) {
    return later.line > call.line && (later.operation == "NODAL_Set" || later.operation == "NODAL_Get" ||
                                      later.operation == "NODAL_GetInstanceListAlloc");
  });
  return next->operation == "NODAL_Set" ? nullptr : &*next;
}

// The search has found the socket if it has read the header of the function 10.2.
bool Oracle::HasSocket(const LoggedCall &call) const {
  return std::ranges::any_of(log_.calls(), [&](const LoggedCall &earlier) {
    return earlier.line < call.line && earlier.operation == "NODAL_Get" && earlier.arguments == "0,100,10,2";
  });
}

bool Oracle::IsLost(size_t row, const FailureRow &failure, const LoggedCall &call) const {
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

std::string Oracle::WithoutLost(const FailureRow &failure, const LoggedCall &call, bool endsRun) const {
  ReportTable left = table_;
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

std::string Oracle::Messages(const FailureRow &row, const LoggedCall &call, HVC_ReturnStatus status) const {
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

int Oracle::ExitStatus(const FailureRow &row, const LoggedCall &call) const {
  switch (row.effect) {
    case Effect::kLosesGroup: return call.part == 0 ? 1 : 0;
    case Effect::kLosesChild: return log_.DepthOf(call.part) == 1 && call.isLastInstance ? 1 : 0;
    case Effect::kEndsSearch: return HasSocket(call) ? 0 : 1;
    default: return row.exitStatus;
  }
}

}  // namespace faults
