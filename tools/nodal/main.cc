// nodal: reads the system-information tree, and saves, shows and compares snapshots of it.
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

#include "tools/nodal/commands/command_line.h"
#include "tools/nodal/support/output.h"

namespace {

// The exit status of the command if it throws.
nodal::ExitStatus failureStatus = nodal::kFailure;

int RunCommand(int argc, char **argv) {
  const nodal::Invocation invocation = nodal::ParseCommandLine(argc, argv);
  failureStatus = invocation.failureStatus;
  const int status = invocation.run();
  nodal::FinishOutput();
  return status;
}

// CLI11 allocates memory before main, and the JSON library allocates memory in destructors, which must not throw. If
// such an allocation fails, the program ends here.
[[noreturn]] void EndWithoutMemory() {
  try {
    if (const std::exception_ptr failure = std::current_exception()) std::rethrow_exception(failure);
  } catch (const std::bad_alloc &) {
    std::fputs("nodal: out of memory\n", stderr);
    std::_Exit(failureStatus);
  } catch (...) {
  }
  std::abort();
}

// Runs before the constructors of static objects.
[[gnu::constructor(101)]] void InstallTerminateHandler() { std::set_terminate(EndWithoutMemory); }

}  // namespace

int main(int argc, char **argv) {
  nodal::HoldStandardDescriptors();
  // With these signals ignored, a write to a closed pipe or beyond the file size limit returns an error, and temporary
  // files are removed.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  try {
    return RunCommand(argc, argv);
  } catch (const nodal::UsageError &error) {
    nodal::Complain(error.what());
    return nodal::kUsageError;
  } catch (const std::bad_alloc &) {
    nodal::Complain("out of memory");
  } catch (const std::exception &failure) {
    nodal::Complain(failure.what());
  }
  return failureStatus;
}
