// Signals that ask the program to end.
#ifndef NODAL_SUPPORT_SIGNALS_H
#define NODAL_SUPPORT_SIGNALS_H

#include <poll.h>

#include <cstdint>
#include <span>

namespace nodal {

// From now on, SIGINT, SIGTERM and SIGHUP are only recorded. Signals that are ignored stay ignored.
void CatchSignals();

// Throws a Failure if one of them has arrived.
void ThrowIfSignalled();

// As CatchSignals, but the signals arrive only in PollForSignals, so that they interrupt nothing else.
void HoldSignals();

// Waits until a descriptor is ready, the time has passed, or a signal has arrived. False if one has arrived.
bool PollForSignals(std::span<pollfd> descriptors, int64_t nanoseconds);

}  // namespace nodal

#endif  // NODAL_SUPPORT_SIGNALS_H
