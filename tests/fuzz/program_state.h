// The variables of a program that runs many times in one process.
#ifndef TESTS_FUZZ_PROGRAM_STATE_H
#define TESTS_FUZZ_PROGRAM_STATE_H

#include <string_view>
#include <vector>

namespace fuzz {

// kestrel prints one report in its life, and keeps the report's columns and sums in variables that it never clears. The
// variables of a namespace are found by the symbols of the executable, and put back to what they were.
class ProgramState {
 public:
  explicit ProgramState(std::string_view nameSpace);

  void Restore() const;

 private:
  struct Variable {
    char *place;
    std::vector<char> bytes;
  };

  std::vector<Variable> variables_;
};

}  // namespace fuzz

#endif  // TESTS_FUZZ_PROGRAM_STATE_H
