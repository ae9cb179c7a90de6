// One call of a run that fails, with each status in turn, and what the run then leaves behind.
#ifndef TESTS_FAULTS_FAILING_CALL_H
#define TESTS_FAULTS_FAILING_CALL_H

#include <cstdio>

#include "tests/faults/report_case.h"

namespace faults {

struct FailingCall {
  const char *name;  // of the test
  const char *operation;
  const char *node;  // "*": any
  unsigned call;     // as in Fault
  std::string output;
  std::string errors;  // with "<number>" and "<hex>" for the status
  int exitStatus;
};

inline void PrintTo(const FailingCall &failing, std::ostream *stream) { *stream << failing.name; }

inline std::string Replaced(std::string text, const std::string &part, const std::string &replacement) {
  for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + replacement.size()))
    text.replace(at, part.size(), replacement);
  return text;
}

inline std::string WithStatus(const std::string &errors, HVC_ReturnStatus status) {
  char hex[16];
  std::snprintf(hex, sizeof hex, "%#x", status);
  return Replaced(Replaced(errors, "<number>", std::to_string(status)), "<hex>", hex);
}

inline const std::vector<HVC_ReturnStatus> kAnyFailure = {0x0bad0001, 0x0bad0003, 0x0bad0031, 0x2bad0000};
inline const std::vector<HVC_ReturnStatus> kAnyFailureButNotFound = {0x0bad0001, 0x0bad0031, 0x2bad0000};

inline void CheckWithStatuses(const StandinHost &host, const std::vector<std::string> &arguments,
                              const FailingCall &failing, const std::vector<HVC_ReturnStatus> &statuses) {
  // A call that makes a list has no status to fail with.
  const bool makesList = std::string(failing.operation).starts_with("NODAL_ParamListCreate");
  for (const HVC_ReturnStatus status : makesList ? std::vector<HVC_ReturnStatus>{HVC_FAILURE} : statuses) {
    StandinHost failingHost = host;
    failingHost.Fail({.operation = failing.operation, .node = failing.node, .call = failing.call, .status = status});
    Check(
        {failing.name, failingHost, arguments, failing.output, WithStatus(failing.errors, status), failing.exitStatus});
  }
}

}  // namespace faults

#endif  // TESTS_FAULTS_FAILING_CALL_H
