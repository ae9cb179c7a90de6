#include "tests/faults/logged_calls.h"

#include <cstdint>
#include <map>
#include <utility>

#include "tests/faults/memory_modules.h"

namespace faults {
namespace {

std::string Between(const std::string &text, const char *start, const char *end) {
  const size_t from = text.find(start) + 1;
  return text.substr(from, text.find(end, from) - from);
}

bool IsAccess(const std::string &operation) {
  return operation == "NODAL_Get" || operation == "NODAL_Set" || operation.starts_with("NODAL_GetInstanceList");
}

bool IsAboutArguments(const std::string &operation) {
  return operation.starts_with("NODAL_ParamListCreate") || operation.starts_with("NODAL_ParamListAdd");
}

bool IsOfInstance(const std::string &operation) {
  return operation.starts_with("NODAL_ParamListGet");  // as an integer, a text or a parameter
}

bool CannotFail(const std::string &operation) {
  return operation == "NODAL_ParamListDestroy" || operation == "NODAL_ParamListUsedCount" ||
         operation == "NODAL_ParamGetInt" || operation == "sleep";
}

struct List {
  size_t madeBy;  // index in calls_ of the read that filled the list
  std::string count = {};
};

}  // namespace

std::string ListOf(const std::string &node) { return "list of " + node; }

std::string WriteOf(const std::string &node) { return "write of " + node; }

std::string NodeOf(const std::string &place) { return place.substr(place.rfind(' ') + 1); }

CallLog::CallLog(const std::vector<std::string> &log, Parts parts) {
  std::map<std::string, List> lists;
  std::map<size_t, size_t> makers;  // index of a call on an instance -> index of the read that filled its list
  size_t unread = 0;                // index of the first call on the arguments of the next read
  const LoggedCall *read = nullptr;
  calls_.reserve(log.size());
  for (size_t line = 0; line < log.size(); ++line) {
    const std::string &text = log[line];
    LoggedCall call = {.line = line, .operation = text.substr(0, text.find('('))};
    const std::string list = Between(text, "(", text.find(',') < text.find(')') ? "," : ")");
    if (call.operation == "NODAL_ParamListUsedCount") lists[list].count = text.substr(text.rfind(' ') + 1);
    if (CannotFail(call.operation)) continue;

    if (IsAccess(call.operation)) {
      const bool makesList = call.operation.starts_with("NODAL_GetInstanceList");
      call.place = makesList ? ListOf(list) : call.operation == "NODAL_Set" ? WriteOf(list) : list;
      call.arguments = Between(text, "[", "]");
      for (; unread < calls_.size(); ++unread) {
        if (!IsAboutArguments(calls_[unread].operation)) continue;
        calls_[unread].place = call.place;
        calls_[unread].arguments = call.arguments;
      }
      unread = calls_.size() + 1;
      if (makesList) lists[text.substr(text.rfind(' ') + 1)] = {.madeBy = calls_.size()};
    } else if (IsOfInstance(call.operation)) {
      const List &from = lists[list];
      call.place = calls_[from.madeBy].place;
      call.arguments = calls_[from.madeBy].arguments;
      makers[calls_.size()] = from.madeBy;
      call.isLastInstance = std::to_string(std::stoul(Between(text, " ", ")")) + 1) == from.count;
    } else if (call.operation == "NODAL_ParamListRemoveLastParam" && read != nullptr) {
      call.place = read->place;
      call.arguments = read->arguments;
    }
    calls_.push_back(call);
    if (IsAccess(call.operation)) read = &calls_.back();
  }

  if (parts == Parts::kGroups) MarkGroups(makers);
  if (parts == Parts::kRegisters) MarkRegisters(log);

  std::map<std::pair<std::string, std::string>, unsigned> numbers;
  for (size_t i = 0; i < calls_.size(); ++i) {
    LoggedCall &call = calls_[i];
    if (i > 0 && call.part != calls_[i - 1].part) numbers.clear();
    const auto maker = makers.find(i);
    call.number = maker != makers.end() ? calls_[maker->second].number : ++numbers[{call.operation, call.place}];
  }
}

// The walk first reads the children of a group. Except for the start group, a visit begins with the read of the group's
// ID from the list of its parent's children.
void CallLog::MarkGroups(const std::map<size_t, size_t> &makers) {
  std::map<size_t, size_t> walked;  // the groups whose children the walk listed, by the call that listed them
  bool isListed = false;
  starts_ = {0};
  depths_ = {0};
  for (size_t i = 0; i < calls_.size(); ++i) {
    const auto maker = makers.find(i);
    if (const auto parent = maker == makers.end() ? walked.end() : walked.find(maker->second); parent != walked.end()) {
      starts_.push_back(calls_[i].line);
      depths_.push_back(depths_[parent->second] + 1);
      isListed = false;
    }
    calls_[i].part = starts_.size() - 1;
    if (calls_[i].operation == "NODAL_GetInstanceListAlloc" && !isListed) {
      walked[i] = calls_[i].part;
      isListed = true;
    }
  }
}

void CallLog::MarkRegisters(const std::vector<std::string> &log) {
  size_t part = 0;
  for (LoggedCall &call : calls_) {
    const bool isOfRegister = call.place == kConfigRegister || call.place == WriteOf(kConfigRegister);
    if (isOfRegister && log[call.line].starts_with("NODAL_ParamListCreate(1,")) ++part;
    call.part = part;
  }
}

std::vector<std::string> CallLog::Accesses(size_t last, size_t next) const {
  std::vector<std::string> accesses;
  for (const LoggedCall &call : calls_) {
    const bool isMade = call.line <= last || call.line >= next;
    if (isMade && IsAccess(call.operation)) accesses.push_back(call.place + " [" + call.arguments + "]");
  }
  return accesses;
}

size_t CallLog::EndOfGroup(size_t part) const {
  for (size_t later = part + 1; later < starts_.size(); ++later) {
    if (depths_[later] <= depths_[part]) return starts_[later];
  }
  return SIZE_MAX;
}

}  // namespace faults
