// The clocks of the system.
#ifndef NODAL_SUPPORT_CLOCK_H
#define NODAL_SUPPORT_CLOCK_H

#include <time.h>

#include <cstdint>

namespace nodal {

// Returns the time of a clock, such as CLOCK_MONOTONIC, in nanoseconds.
inline int64_t NanosecondsOf(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace nodal

#endif  // NODAL_SUPPORT_CLOCK_H
