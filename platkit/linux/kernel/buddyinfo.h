// /proc/buddyinfo: the free chunks of each zone.
#ifndef PLATKIT_LINUX_KERNEL_BUDDYINFO_H
#define PLATKIT_LINUX_KERNEL_BUDDYINFO_H

#include <cstdint>
#include <string>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

struct BuddyZone {
  uint64_t numaNode = 0;
  std::string zone;
  std::vector<Figure> free;  // chunks of 2^index pages
};

struct Buddyinfo {
  HVC_ReturnStatus status = HVC_FAILURE;  // HVC_OK, or why the file could not be read
  std::vector<BuddyZone> zones;           // in the order of the file; if a zone occurs twice, its first line counts
};

Buddyinfo ReadBuddyinfo(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_BUDDYINFO_H
