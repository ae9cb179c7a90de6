// The commands of nodal. Each command has a row in command_table.cc, and a file of the same name in this folder.
#ifndef NODAL_COMMANDS_COMMAND_H
#define NODAL_COMMANDS_COMMAND_H

#include <functional>
#include <span>

#include "tools/nodal/commands/options.h"
#include "tools/nodal/commands/source.h"

namespace nodal {

enum ExitStatus { kSuccess = 0, kFailure = 1, kDifferent = 1, kUsageError = 2, kTrouble = 2 };

// Runs a command with the parsed options. Returns the exit status, or throws a Failure or a UsageError.
using Run = std::function<ExitStatus()>;

struct Command {
  const char *name;
  const char *summary;
  // Declares the options and returns the function that runs the command. `source` is not set before that function runs.
  Run (*declare)(OptionSet &options, const SourceOptions &source);
  ExitStatus failureStatus = kFailure;
};

// Returns the commands in the order of --help.
std::span<const Command> Commands();

}  // namespace nodal

#endif  // NODAL_COMMANDS_COMMAND_H
