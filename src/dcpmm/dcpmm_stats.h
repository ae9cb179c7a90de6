#ifndef KESTREL_DCPMM_DCPMM_STATS_H
#define KESTREL_DCPMM_DCPMM_STATS_H

#include "platkit/status.h"

namespace kestrel {

// The report's entry, as in src/reports/reports.h. It is the only one that writes to the machine: it programs the
// counters that it reads.
[[nodiscard]] HVC_ReturnStatus KestrelDCPMMStats(int argc, char **argv);

}  // namespace kestrel

#endif  // KESTREL_DCPMM_DCPMM_STATS_H
