// The command line of nodal.
#ifndef NODAL_COMMANDS_COMMAND_LINE_H
#define NODAL_COMMANDS_COMMAND_LINE_H

#include "tools/nodal/commands/command.h"

namespace nodal {

struct Invocation {
  Run run;  // the command, or what prints the help or version that was asked for
  ExitStatus failureStatus = kFailure;
};

// Throws a UsageError.
Invocation ParseCommandLine(int argc, const char *const *argv);

}  // namespace nodal

#endif  // NODAL_COMMANDS_COMMAND_LINE_H
