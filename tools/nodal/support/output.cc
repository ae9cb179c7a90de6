#include "tools/nodal/support/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

#include "tools/nodal/support/text.h"

namespace nodal {

namespace {

const char *programName = "nodal";

// A message can quote the file that it complains about, and that file may contain megabytes of text.
constexpr size_t kMaxMessage = 8192;

}  // namespace

Failure::Failure(std::string_view where, std::string_view what)
    : std::runtime_error(std::string(where) + ": " + std::string(what)) {}

Failure::Failure(std::string_view where, HVC_ReturnStatus status) : Failure(where, StatusText(status)) {}

HVC_ReturnStatus ThrowIfOutOfMemory(HVC_ReturnStatus status) {
  if (status == HVC_NO_MEMORY) throw std::bad_alloc();
  return status;
}

void Print(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
    throw Failure("standard output", std::strerror(errno));
  }
}

void FlushOutput() {
  if (std::fflush(stdout) != 0) throw Failure("standard output", std::strerror(errno));
}

void FinishOutput() {
  // Some file systems report a full disk only when a file is closed.
  if (std::fflush(stdout) != 0 || std::fclose(stdout) != 0) throw Failure("standard output", std::strerror(errno));
}

void SetProgramName(const char *name) { programName = name; }

void Complain(std::string_view message) {
  const std::string_view end = message.size() > kMaxMessage ? "...\n" : "\n";
  const std::string line =
      std::string(programName) + ": " + Printable(message.substr(0, kMaxMessage)) + std::string(end);
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void HoldStandardDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
    if (open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) != fd) _exit(1);
  }
}

}  // namespace nodal
