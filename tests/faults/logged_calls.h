// Finds the context of each call in a log: the read that uses an argument list, the list that contains an instance, and
// the visited group of a walk.
#ifndef TESTS_FAULTS_LOGGED_CALLS_H
#define TESTS_FAULTS_LOGGED_CALLS_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace faults {

// The place of calls that list a node's instances.
std::string ListOf(const std::string &node);
// The place of calls that write a node.
std::string WriteOf(const std::string &node);
// Returns the node of a place.
std::string NodeOf(const std::string &place);

struct LoggedCall {
  size_t line = 0;  // of the log
  std::string operation = {};
  // The node that this call reads or writes, that its arguments are for, or that its instance comes from.
  std::string place = {};
  // The number of this call among the calls of its operation and place in its part of the log, from 1. For an instance,
  // the number of the call that created its list.
  unsigned number = 0;
  std::string arguments = {};  // arguments of the read or write, as in the log but without brackets
  size_t part = 0;             // part of the log, counted from 0
  bool isLastInstance = false;
};

// How a log is split into parts: not at all, at each visit of a group, or at each access to a register.
enum class Parts { kOne, kGroups, kRegisters };

class CallLog {
 public:
  CallLog(const std::vector<std::string> &log, Parts parts);

  // The calls that can fail, in order.
  const std::vector<LoggedCall> &calls() const { return calls_; }
  // The reads and writes up to line `last` and from line `next` on, each as its place and arguments.
  std::vector<std::string> Accesses(size_t last, size_t next) const;
  // The first line after the visit of a group and its descendants; SIZE_MAX if the visit is the end of the log.
  size_t EndOfGroup(size_t part) const;
  // The number of levels below the start group.
  size_t DepthOf(size_t part) const { return depths_[part]; }

 private:
  void MarkGroups(const std::map<size_t, size_t> &makers);
  void MarkRegisters(const std::vector<std::string> &log);

  std::vector<LoggedCall> calls_;
  std::vector<size_t> starts_;  // first line of each part, if the parts are groups
  std::vector<size_t> depths_;  // depth of each of these parts
};

}  // namespace faults

#endif  // TESTS_FAULTS_LOGGED_CALLS_H
