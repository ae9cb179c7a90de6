#include "tools/nodal/support/signals.h"

#include <signal.h>
#include <string.h>

#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

volatile sig_atomic_t received = 0;

void Receive(int signal) { received = signal; }

}  // namespace

void CatchSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = Receive;
    static_cast<void>(sigaction(signal, &action, nullptr));
  }
}

void ThrowIfSignalled() {
  if (received != 0) throw Failure("interrupted by a signal", strsignal(received));
}

}  // namespace nodal
