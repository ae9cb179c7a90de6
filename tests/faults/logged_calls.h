// What the calls in a log are about: which read an argument list is made for, which list an instance is taken from, and
// which group of a walk is being visited.
#ifndef TESTS_FAULTS_LOGGED_CALLS_H
#define TESTS_FAULTS_LOGGED_CALLS_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace faults {

// The place of calls about a list node, as opposed to those about its records.
std::string ListOf(const std::string &node);
// The same for calls about the node's being written.
std::string WriteOf(const std::string &node);
// The node of any of these places.
std::string NodeOf(const std::string &place);

struct LoggedCall {
  size_t line = 0;  // of the log
  std::string operation = {};
  // The node that is read or written: by this call, or next if it is about arguments; or that the instance is taken
  // from.
  std::string place = {};
  // Which call of this operation and place it is in its part of the log, from 1; for an instance, the number of the
  // call that made its list.
  unsigned number = 0;
  std::string arguments = {};  // of the read or write, as in the log without their brackets
  size_t part = 0;             // of the log, counted from 0
  bool isLastInstance = false;
};

// Where the log has a new part: a visit of a group, or an access of a register. Other logs are one part.
enum class Parts { kOne, kGroups, kRegisters };

class CallLog {
 public:
  CallLog(const std::vector<std::string> &log, Parts parts);

  // The calls that can fail, in their order.
  const std::vector<LoggedCall> &calls() const { return calls_; }
  // The reads and writes up to a line and from another on, as place and arguments.
  std::vector<std::string> Accesses(size_t last, size_t next) const;
  // Where the visit of a group and of all below it ends.
  size_t EndOfGroup(size_t part) const;
  // How many groups the group is below the start group.
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
