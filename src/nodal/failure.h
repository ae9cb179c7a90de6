// Warnings about failed reads.
#ifndef KESTREL_NODAL_FAILURE_H
#define KESTREL_NODAL_FAILURE_H

#include <algorithm>
#include <initializer_list>

#include "platkit/status.h"
#include "platkit/warning.h"

namespace kestrel {

using Statuses = std::initializer_list<HVC_ReturnStatus>;

// The status of a group or client that vanished while the report ran. It needs no warning.
inline constexpr Statuses kVanished = {HVC_NOT_FOUND};

// Warns that the function `step` failed with this status. Does nothing if the status is HVC_OK or in `silent`.
inline void WarnOfFailure(const char *step, HVC_ReturnStatus status, Statuses silent) {
  if (status != HVC_OK && std::ranges::find(silent, status) == silent.end()) {
    Warning("%s() failure, error code: %u\n", step, status);
  }
}

}  // namespace kestrel

#endif  // KESTREL_NODAL_FAILURE_H
