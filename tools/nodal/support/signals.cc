#include "tools/nodal/support/signals.h"

#include <signal.h>
#include <string.h>

#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

constexpr int kSignals[] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};

volatile sig_atomic_t received = 0;
sigset_t unheld;  // the signal mask before HoldSignals

void Receive(int signal) { received = signal; }

}  // namespace

void CatchSignals() {
  for (const int signal : kSignals) {
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

void HoldSignals() {
  CatchSignals();
  sigset_t held;
  sigemptyset(&held);
  for (const int signal : kSignals)
    sigaddset(&held, signal);
  static_cast<void>(sigprocmask(SIG_BLOCK, &held, &unheld));
}

bool PollForSignals(std::span<pollfd> descriptors, int64_t nanoseconds) {
  constexpr int64_t kSecond = 1'000'000'000;
  const timespec time = {.tv_sec = nanoseconds / kSecond, .tv_nsec = nanoseconds % kSecond};
  if (received == 0) static_cast<void>(ppoll(descriptors.data(), descriptors.size(), &time, &unheld));
  return received == 0;
}

}  // namespace nodal
