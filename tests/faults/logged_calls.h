// Interprets the calls in a log: the read for which an argument list is made, the list from which an instance comes,
// and the group that is being visited.
#ifndef TESTS_FAULTS_LOGGED_CALLS_H
#define TESTS_FAULTS_LOGGED_CALLS_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace faults {

// The place of calls on a list node, as opposed to calls on its records.
std::string ListOf(const std::string &node);
// The place of calls that write a node.
std::string WriteOf(const std::string &node);
// The node of a place.
std::string NodeOf(const std::string &place);

struct LoggedCall {
  size_t line = 0;  // of the log
  std::string operation = {};
  // The node that the call reads or writes. For a call on arguments, the node of the next read; for an instance, the
  // node of its list.
  std::string place = {};
  // Counts the calls with this operation and place in this part of the log, from 1. For an instance, the number of the
  // call that made its list.
  unsigned number = 0;
  std::string arguments = {};  // of the read or write, as in the log but without brackets
  size_t part = 0;             // of the log, counted from 0
  bool isLastInstance = false;
};

// What starts a new part of the log: the visit of a group, or the access to a register. Other logs have one part.
enum class Parts { kOne, kGroups, kRegisters };

class CallLog {
 public:
  CallLog(const std::vector<std::string> &log, Parts parts);

  // The calls that can fail, in their order.
  const std::vector<LoggedCall> &calls() const { return calls_; }
  // The reads and writes before one line and from another line on, as place and arguments.
  std::vector<std::string> Accesses(size_t last, size_t next) const;
  // The end of the visit of a group and all groups below it.
  size_t EndOfGroup(size_t part) const;
  // The depth of the group below the start group.
  size_t DepthOf(size_t part) const { return depths_[part]; }

 private:
  void MarkGroups(const std::map<size_t, size_t> &makers);
  void MarkRegisters(const std::vector<std::string> &log);

  std::vector<LoggedCall> calls_;
  std::vector<size_t> starts_;  // of the parts, as lines
  std::vector<size_t> depths_;  // of the parts, if they are groups
};

}  // namespace faults

#endif  // TESTS_FAULTS_LOGGED_CALLS_H
