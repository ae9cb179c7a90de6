// Runs a program the way a shell would, and tells what came of it.
#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace testing_support {

// Where a program's standard output leads.
enum class OutputTo {
  kPipe,        // captured
  kTerminal,    // captured from a pseudo-terminal, which passes every byte on unchanged
  kFullDevice,  // every write fails with "no space left"
  kClosedPipe,  // nobody reads
};

struct Command {
  std::string program = {};
  std::vector<std::string> arguments = {};
  std::vector<std::pair<std::string, std::string>> environment = {};  // added to the test's own
  std::string input = {};                                             // at most what a pipe holds
  std::string directory = {};                                         // to run in; empty: the test's own
  OutputTo output = OutputTo::kPipe;
  bool errorsToOutput = false;  // as with 2>&1
};

struct Outcome {
  int exitStatus = -1;  // -1 if a signal ended the program
  int signal = 0;
  std::string output;
  std::string errors;
};

// Makes the program load a library before its own. A sanitizer's report then ends the program with status 99.
void Preload(Command &command, const std::string &library);

// Whether this machine has pseudo-terminals: a container may be without.
bool HasTerminals();

// Runs the program to its end. A program that hangs is ended by SIGALRM after a minute.
Outcome Run(const Command &command);

std::ostream &operator<<(std::ostream &stream, const Outcome &outcome);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_PROCESS_H
