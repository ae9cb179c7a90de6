// Sums over the zones of /proc/zoneinfo.
#ifndef PLATKIT_LINUX_RECORDS_ZONE_TOTALS_H
#define PLATKIT_LINUX_RECORDS_ZONE_TOTALS_H

#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/kernel/zoneinfo.h"

namespace platkit {

// In KB. A sum is unreadable if no zone has the line, or if the file could not be read to its end.
struct ZoneTotals {
  Figure present;                 // of all zones
  Figure free, min, low, high;    // zones with memory; min, low and high are watermarks of free memory
  Figure ample;                   // promo watermark; before Linux 5.18, high + (high - low)
  Figure lowReserve = Figure(0);  // low zones: memory withheld from allocations that can use other zones
};

ZoneTotals TotalsInKB(const Zoneinfo &info, PageSize &pageSize);

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_ZONE_TOTALS_H
