// Signals that ask the program to end.
#ifndef NODAL_SUPPORT_SIGNALS_H
#define NODAL_SUPPORT_SIGNALS_H

namespace nodal {

// From now on, SIGINT, SIGTERM and SIGHUP do not end the program, unless it is asked to. Those that are ignored stay
// so.
void CatchSignals();

// Throws a Failure if one of them came.
void ThrowIfSignalled();

}  // namespace nodal

#endif  // NODAL_SUPPORT_SIGNALS_H
