// The zones of the host's memory: what they have, and the watermarks at which the kernel starts and stops to reclaim.
#ifndef PLATKIT_LINUX_KERNEL_ZONEINFO_H
#define PLATKIT_LINUX_KERNEL_ZONEINFO_H

#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"
#include "platkit/linux/kernel/page_size.h"

namespace platkit {

// Whether a zone is there for devices that cannot address all of the memory.
bool IsLowZone(std::string_view zone);

// Sums over all zones, in KB. Unreadable if no zone tells.
struct ZoneTotals {
  Figure present;                 // the memory that there is, handed out by the kernel or not
  Figure free, min, low, high;    // of what it hands out; the last three are the watermarks of free memory
  Figure ample;                   // a watermark as far above the high one as that is above the low one
  Figure lowReserve = Figure(0);  // kept in low zones from whoever can do with others
};

ZoneTotals ReadZones(HostFiles &files, PageSize &pageSize);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_ZONEINFO_H
