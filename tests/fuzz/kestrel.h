// Runs kestrel in this process. It reads the host that the last NODAL_UseCache selected, unless its arguments name
// another one.
#ifndef TESTS_FUZZ_KESTREL_H
#define TESTS_FUZZ_KESTREL_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

struct Outcome {
  int status;
  std::string output;
  std::string errors;

  bool operator==(const Outcome &) const = default;
};

enum class OutputTo { kTerminal, kPipe };

// Runs kestrel with these arguments. sleep() returns at once. After a few such calls, all output fails, because an
// input may ask for two billion iterations.
Outcome RunKestrel(std::span<const std::string> words, OutputTo output = OutputTo::kTerminal);

// Splits a text at the separator. A word ends before its first NUL.
std::vector<std::string> WordsOf(std::string_view text, char separator);

// Changes the word so that it cannot name a file outside the working directory.
std::string WithoutFolders(std::string word);

// Runs kestrel over a snapshot whose host name contains the options. Checks that the exit status is 0 or 1, and that
// the output contains no control characters except newlines and tabs. Does nothing if a walk over the groups of the
// snapshot takes too many visits.
void ReportOnSnapshot(const std::string &path);

}  // namespace fuzz

#endif  // TESTS_FUZZ_KESTREL_H
