// Signals that ask the program to end.
#ifndef NODAL_INTERRUPTION_H
#define NODAL_INTERRUPTION_H

namespace nodal {

// From now on, SIGINT, SIGTERM and SIGHUP do not end the program, unless it is asked to. Those that are ignored stay
// so.
void HoldSignals();

// Throws a Failure if one of them came.
void EndIfInterrupted();

}  // namespace nodal

#endif  // NODAL_INTERRUPTION_H
