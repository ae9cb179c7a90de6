// /proc/zoneinfo: the zones of the host's memory and their watermarks.
#ifndef PLATKIT_LINUX_KERNEL_ZONEINFO_H
#define PLATKIT_LINUX_KERNEL_ZONEINFO_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

inline constexpr size_t kMaxZones = 1 << 16;  // more than any host has

// In pages. A figure is absent if the zone has no such line.
struct Zone {
  bool isLow = false;  // see IsLowZone
  Figure present;      // physical pages
  Figure managed;      // pages that the page allocator manages; 0: the zone has no memory
  Figure free;
  Figure min, low, high;          // watermarks of free pages
  Figure promo;                   // a higher watermark, since Linux 5.18
  Figure protection = Figure(0);  // highest number of "protection: (0, 3019, 5067)"
};

struct Zoneinfo {
  bool isComplete = false;  // false: the file could not be read to its end
  std::vector<Zone> zones;
};

Zoneinfo ReadZoneinfo(HostFiles &files);

// Whether the zone (DMA, DMA32) is reserved for devices that cannot address all memory.
bool IsLowZone(std::string_view zone);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_ZONEINFO_H
