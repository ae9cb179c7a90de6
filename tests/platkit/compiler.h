// Runs the build's compilers over source texts.
#ifndef TESTS_PLATKIT_COMPILER_H
#define TESTS_PLATKIT_COMPILER_H

#include <cstdio>
#include <cstdlib>
#include <string>

struct CompilerOutput {
  int status;
  std::string text;
};

inline bool IsInstalled(const std::string &compiler) {
  setenv("COMPILER", compiler.c_str(), 1);
  return std::system("command -v \"$COMPILER\" >/dev/null") == 0;
}

// Arguments may contain quotation marks, so the shell gets them in environment variables.
inline CompilerOutput Compile(const std::string &compiler, const std::string &options, const std::string &source) {
  setenv("COMPILER", compiler.c_str(), 1);
  setenv("SOURCE", source.c_str(), 1);
  setenv("ROOT", PLATKIT_SOURCE_DIR, 1);
  const std::string command =
      "printf '%s' \"$SOURCE\" | \"$COMPILER\" -Wall -Wextra -Wpedantic -I\"$ROOT\"/include " + options + " - 2>&1";
  FILE *pipe = popen(command.c_str(), "r");
  CompilerOutput output = {.status = -1, .text = {}};
  if (pipe == nullptr) return output;
  char buffer[4096];
  for (size_t count; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    output.text.append(buffer, count);
  output.status = pclose(pipe);
  return output;
}

#endif  // TESTS_PLATKIT_COMPILER_H
