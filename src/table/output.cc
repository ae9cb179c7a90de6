#include "src/table/output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platkit/warning.h"

namespace kestrel {
namespace {

constinit int failure = 0;  // errno of the first failed write

bool HasFailed() {
  if (ferror_unlocked(stdout) == 0) return false;
  if (failure == 0) failure = errno != 0 ? errno : EIO;
  return true;
}

void WarnOfLostOutput() {
  Warning("Couldn't write to standard output: %s\n", std::strerror(failure));
}

}  // namespace

bool OutputIsTerminal() {
  static const bool isTerminal = isatty(STDOUT_FILENO) == 1;
  return isTerminal;
}

void PrintBytes(std::string_view bytes) { fwrite_unlocked(bytes.data(), 1, bytes.size(), stdout); }

void PrintLine(std::string_view line) {
  PrintBytes(line);
  putc_unlocked('\n', stdout);
  static_cast<void>(HasFailed());
}

bool FinishOutput() {
  std::fflush(stdout);
  if (!HasFailed()) return true;
  WarnOfLostOutput();
  return false;
}

}  // namespace kestrel
