// The commands of nodal. Each has a file of its name here and a row in command_table.cc.
#ifndef NODAL_COMMANDS_COMMAND_H
#define NODAL_COMMANDS_COMMAND_H

#include <functional>
#include <span>

#include "tools/nodal/commands/options.h"
#include "tools/nodal/commands/source.h"

namespace nodal {

enum ExitStatus { kSuccess = 0, kFailure = 1, kDifferent = 1, kUsageError = 2, kTrouble = 2 };

// Runs a command with the options that were parsed. Returns the exit status; throws a Failure.
using Run = std::function<ExitStatus()>;

struct Command {
  const char *name;
  const char *summary;
  // Declares the options. `source` has its value when the command runs.
  Run (*declare)(OptionSet &options, const SourceOptions &source);
  ExitStatus failureStatus = kFailure;
};

// In the order of --help.
std::span<const Command> Commands();

}  // namespace nodal

#endif  // NODAL_COMMANDS_COMMAND_H
