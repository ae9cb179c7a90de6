// kestrel, run in this process over the source that it reads already.
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

// `words` are those behind the program's name. What is printed is printed as for a terminal; sleeping takes no time,
// and after a few periods of it output fails, for who may ask for two thousand million of them.
Outcome RunKestrel(std::span<const std::string> words);

// The words of a command line in a text.
std::vector<std::string> WordsOf(std::string_view text, char separator);

// The word, made such that it names no file outside the folder that the program runs in.
std::string WithoutFolders(std::string word);

// Runs kestrel over a snapshot, with the options that are the host's name in it, and checks what must be true of any
// run: a status of 0 or 1, and nothing from the snapshot that could steer a terminal.
void ReportOnSnapshot(const std::string &path);

}  // namespace fuzz

#endif  // TESTS_FUZZ_KESTREL_H
