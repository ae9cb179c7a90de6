// Runs a program and returns its output, messages and exit status.
#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace testing_support {

// The standard output of a program.
enum class OutputTo {
  kPipe,        // captured
  kTerminal,    // captured from a raw pseudo-terminal
  kFullDevice,  // every write fails with "no space left"
  kClosedPipe,  // a pipe without a reader
};

struct Command {
  std::string program = {};
  std::vector<std::string> arguments = {};
  std::vector<std::pair<std::string, std::string>> environment = {};  // added to the test's own
  std::string input = {};                                             // at most the capacity of a pipe
  std::string directory = {};                                         // working directory; empty: the test's own
  OutputTo output = OutputTo::kPipe;
  bool errorsToOutput = false;  // like 2>&1
};

struct Outcome {
  int exitStatus = -1;  // -1 if a signal ended the program
  int signal = 0;
  std::string output;
  std::string errors;
};

// Preloads a library into the program. A sanitizer report then ends the program with status 99.
void Preload(Command &command, const std::string &library);

// True if this machine has pseudo-terminals; a container may lack them.
bool HasTerminals();

// Runs the program until it exits. SIGALRM ends it after a minute.
Outcome Run(const Command &command);

std::ostream &operator<<(std::ostream &stream, const Outcome &outcome);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_PROCESS_H
