// /proc/slabinfo: the kernel's object caches, each for objects of one size. Only root may read it.
#ifndef PLATKIT_LINUX_KERNEL_SLABINFO_H
#define PLATKIT_LINUX_KERNEL_SLABINFO_H

#include <string>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// A line of the file. A malformed or missing figure is unreadable.
struct SlabCache {
  std::string name;
  Figure activeObjects;   // active_objs
  Figure objects;         // num_objs
  Figure objectSize;      // objsize, bytes
  Figure objectsPerSlab;  // objperslab
  Figure pagesPerSlab;    // pagesperslab
  Figure slabs;           // num_slabs
};

struct Slabinfo {
  HVC_ReturnStatus status = HVC_FAILURE;  // HVC_OK, or why the file could not be read
  std::vector<SlabCache> caches;          // in the order of the file; several may have the same name
};

Slabinfo ReadSlabinfo(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_SLABINFO_H
