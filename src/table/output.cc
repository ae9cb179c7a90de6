#include "src/table/output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platkit/warning.h"

namespace kestrel {
namespace {

constinit bool isOpen = false;
constinit int failure = 0;  // errno of the first failed write

// The write function of stdout, which must return 0 on failure.
ssize_t WriteOutput(void *, const char *bytes, size_t size) {
  size_t written = 0;
  while (written < size) {
    const ssize_t count = write(STDOUT_FILENO, bytes + written, size - written);
    if (count == -1 && errno == EINTR) continue;
    if (count == -1) {
      if (failure == 0) failure = errno;
      return 0;
    }
    written += static_cast<size_t>(count);
  }
  return static_cast<ssize_t>(size);
}

bool HasFailed() {
  if (ferror_unlocked(stdout) == 0) return false;
  // If WriteOutput did not see the failure, its errno is lost.
  if (failure == 0) failure = EIO;
  return true;
}

void WarnOfLostOutput() {
  if (failure != EPIPE) Warning("Couldn't write to standard output: %s\n", std::strerror(failure));
}

}  // namespace

// The library also flushes standard output, so errno may have changed when a failure is noticed. stdio therefore writes
// through WriteOutput, which saves errno.
void OpenOutput() {
  if (fileno(stdout) != STDOUT_FILENO) return;
  static char buffer[1 << 16];
  std::FILE *output =
      fopencookie(nullptr, "w", {.read = nullptr, .write = WriteOutput, .seek = nullptr, .close = nullptr});
  if (output == nullptr) return;
  std::setvbuf(output, buffer, OutputIsTerminal() ? _IOLBF : _IOFBF, sizeof buffer);
  stdout = output;
  isOpen = true;
}

bool OutputIsTerminal() {
  static const bool isTerminal = isatty(STDOUT_FILENO) == 1;
  return isTerminal;
}

void PrintBytes(std::string_view bytes) { fwrite_unlocked(bytes.data(), 1, bytes.size(), stdout); }

void PrintDashes(size_t count) {
  constexpr std::string_view kDashes = "----------------------------------------------------------------";
  for (; count > kDashes.size(); count -= kDashes.size())
    PrintBytes(kDashes);
  PrintBytes(kDashes.substr(0, count));
}

void PrintLine(std::string_view line) {
  PrintBytes(line);
  putc_unlocked('\n', stdout);
  if (!isOpen || !HasFailed()) return;
  WarnOfLostOutput();
  std::exit(EXIT_FAILURE);
}

bool FinishOutput() {
  std::fflush(stdout);
  if (!HasFailed()) return true;
  WarnOfLostOutput();
  return false;
}

}  // namespace kestrel
