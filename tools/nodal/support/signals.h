// Signals that ask the program to end.
#ifndef NODAL_SUPPORT_SIGNALS_H
#define NODAL_SUPPORT_SIGNALS_H

namespace nodal {

// From now on, SIGINT, SIGTERM and SIGHUP are only recorded. Signals that are ignored stay ignored.
void CatchSignals();

// Throws a Failure if one of them has arrived.
void ThrowIfSignalled();

}  // namespace nodal

#endif  // NODAL_SUPPORT_SIGNALS_H
