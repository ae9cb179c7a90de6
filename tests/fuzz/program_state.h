// Resets the global variables of a program that runs many times in one process.
#ifndef TESTS_FUZZ_PROGRAM_STATE_H
#define TESTS_FUZZ_PROGRAM_STATE_H

#include <string_view>
#include <vector>

namespace fuzz {

// kestrel prints one report per process, and never clears the global variables with the report's columns and sums. This
// class finds the variables of a namespace through the symbols of the executable, saves their values, and restores
// them.
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
