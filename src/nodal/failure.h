// What a step says of its failure.
#ifndef KESTREL_NODAL_FAILURE_H
#define KESTREL_NODAL_FAILURE_H

#include <algorithm>
#include <initializer_list>

#include "platkit/status.h"
#include "platkit/warning.h"

namespace kestrel {

using Statuses = std::initializer_list<HVC_ReturnStatus>;

// What a read answers for a group or client that went away while the report runs: no failure to report.
inline constexpr Statuses kVanished = {HVC_NOT_FOUND};

// Reports the failure of a step by the number of its status, unless that is among the silent ones.
inline void WarnOfFailure(const char *step, HVC_ReturnStatus status, Statuses silent) {
  if (status != HVC_OK && std::ranges::find(silent, status) == silent.end()) {
    Warning("%s() failure, error code: %u\n", step, status);
  }
}

}  // namespace kestrel

#endif  // KESTREL_NODAL_FAILURE_H
