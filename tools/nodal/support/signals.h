// Signals that ask the program to end.
#ifndef NODAL_SUPPORT_SIGNALS_H
#define NODAL_SUPPORT_SIGNALS_H

#include <poll.h>

#include <cstdint>
#include <span>

namespace nodal {

// Catches SIGINT, SIGQUIT, SIGTERM and SIGHUP: from now on, their arrival is only recorded. A signal that is ignored
// stays ignored.
void CatchSignals();

// Throws a Failure if one of these signals has arrived.
void ThrowIfSignalled();

// Like CatchSignals, but the signals are delivered only in PollForSignals, so that they interrupt no other call.
void HoldSignals();

// Waits until a descriptor is ready, the time has passed, or a signal has arrived. Returns false if a signal has
// arrived.
bool PollForSignals(std::span<pollfd> descriptors, int64_t nanoseconds);

}  // namespace nodal

#endif  // NODAL_SUPPORT_SIGNALS_H
