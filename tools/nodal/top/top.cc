#include "tools/nodal/top/top.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>

#include "tools/nodal/support/clock.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/signals.h"
#include "tools/nodal/top/terminal.h"

namespace nodal::top {
namespace {

constexpr int64_t kSecond = 1'000'000'000;

int64_t Now() { return NanosecondsOf(CLOCK_MONOTONIC); }

// Returns the time of the next sample. Skips overdue samples.
int64_t NextDue(int64_t due, int64_t interval) {
  const int64_t late = std::max<int64_t>(Now() - due, 0);
  return due + (late / interval + 1) * interval;
}

void PrintSamples(Session &session, const TopOptions &options) {
  const uint64_t count = std::max<uint64_t>(options.count, 1);
  int64_t due = Now();
  for (uint64_t taken = 0; taken < count; ++taken) {
    if (taken > 0 && session.isRunning() && !PollForSignals({}, std::max<int64_t>(due - Now(), 0))) return;
    if (!session.TakeSample()) {
      if (!session.problem().empty()) Complain(session.problem());
      return;
    }
    if (taken > 0) Print("\n");
    session.WriteBatch(Print);
    FlushOutput();
    due = NextDue(due, options.interval);
  }
}

// Returns false if the user quits.
bool PressKeys(Terminal &terminal, Session &session) {
  while (const uint32_t key = terminal.ReadKey()) {
    if (key != kKeyOther && !session.Press(key)) return false;
  }
  return true;
}

void Interact(Session &session, const TopOptions &options) {
  constexpr int64_t kLongTime = 3600 * kSecond;
  Terminal terminal;
  session.TakeSample();
  int64_t due = Now() + options.interval;
  for (uint64_t taken = 1;;) {
    terminal.Draw(session.Paint(terminal.width(), terminal.height()));
    if (options.count > 0 && taken >= options.count) return;
    pollfd input = {.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    const int64_t wait = session.isRunning() ? std::max<int64_t>(due - Now(), 0) : kLongTime;
    if (!PollForSignals(std::span(&input, 1), wait)) return;
    if ((input.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) return;
    if (!PressKeys(terminal, session)) return;
    if (Now() < due) continue;
    due = NextDue(due, options.interval);
    if (session.isRunning() && session.TakeSample()) ++taken;
  }
}

}  // namespace

void Show(const TopOptions &options) {
  UseLocale();
  HoldSignals();
  const std::unique_ptr<Feed> feed = OpenFeed(options.cache, options.root);
  Session session(*feed, options.session);
  if (options.isBatch) return PrintSamples(session, options);
  Interact(session, options);
  if (session.wantsCommandLine()) Print(session.CommandLine() + "\n");
}

}  // namespace nodal::top
