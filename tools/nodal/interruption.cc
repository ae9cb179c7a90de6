#include "tools/nodal/interruption.h"

#include <signal.h>
#include <string.h>

#include "tools/nodal/output.h"

namespace nodal {
namespace {

volatile sig_atomic_t received = 0;

void Receive(int signal) { received = signal; }

}  // namespace

void HoldSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = Receive;
    static_cast<void>(sigaction(signal, &action, nullptr));
  }
}

void EndIfInterrupted() {
  if (received != 0) throw Failure("ended by a signal", strsignal(received));
}

}  // namespace nodal
