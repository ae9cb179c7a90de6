#ifndef KESTREL_DCPMM_DCPMM_STATS_H
#define KESTREL_DCPMM_DCPMM_STATS_H

#include "src/reports/report.h"

namespace kestrel {

// The only report that writes to the machine: it programs the counters before it reads them.
extern const Report kDcpmmStats;

}  // namespace kestrel

#endif  // KESTREL_DCPMM_DCPMM_STATS_H
