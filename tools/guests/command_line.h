// The command line of nodal-guests.
#ifndef GUESTS_COMMAND_LINE_H
#define GUESTS_COMMAND_LINE_H

#include <stdexcept>
#include <string>
#include <vector>

#include "tools/guests/libvirt.h"

namespace guests {

struct Options {
  std::string answer;  // the help or the version, if it was asked for
  std::string uri = kSystemUri;
  bool withoutLibvirt = false;
  std::vector<std::string> qmp;
  double deadline = 1;   // in seconds
  unsigned period = 30;  // in seconds
  bool asJson = false;
  std::string output;  // empty: standard output
};

class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Throws a UsageError.
Options ParseCommandLine(int argc, const char *const *argv);

}  // namespace guests

#endif  // GUESTS_COMMAND_LINE_H
