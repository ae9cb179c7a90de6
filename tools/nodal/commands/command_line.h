// The command line of nodal.
#ifndef NODAL_COMMANDS_COMMAND_LINE_H
#define NODAL_COMMANDS_COMMAND_LINE_H

#include "tools/nodal/commands/command.h"

namespace nodal {

struct Invocation {
  Run run;  // runs the command, or prints the requested help or version
  ExitStatus failureStatus = kFailure;
};

// Throws a UsageError if the command line is invalid.
Invocation ParseCommandLine(int argc, const char *const *argv);

}  // namespace nodal

#endif  // NODAL_COMMANDS_COMMAND_LINE_H
