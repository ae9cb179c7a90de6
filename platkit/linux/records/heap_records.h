// The records of heaps: the kernel's caches of objects, from /proc/slabinfo.
#ifndef PLATKIT_LINUX_RECORDS_HEAP_RECORDS_H
#define PLATKIT_LINUX_RECORDS_HEAP_RECORDS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/kernel/slabinfo.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// If the file cannot be read, operations return the status of the read, which is HVC_NO_PERMISSION for an ordinary
// user.
class HeapRecords {
 public:
  HeapRecords(HostFiles &files, PageSize &pageSize) : files_(files), pageSize_(pageSize) {}

  // Lists the heaps in the order of the file.
  [[nodiscard]] HVC_ReturnStatus List(ParamList &list);

  // HVC_NOT_FOUND if there is no such heap.
  [[nodiscard]] HVC_ReturnStatus Stats(std::string_view name, HeapStatsRecord &record);

 private:
  // All caches whose printable names are equal after truncation to the size of the record's field.
  struct Heap {
    std::string name;
    Figure slabs = Figure(0);
    Figure size = Figure(0);         // in bytes
    Figure objects = Figure(0);      // bytes of all objects
    Figure freeObjects = Figure(0);  // bytes of objects that are not in use
    Figure objectSize;               // bytes, of the first cache
    Figure objectsPerSlab;           // of the first cache
  };

  struct Heaps {
    HVC_ReturnStatus status = HVC_FAILURE;
    std::vector<Heap> heaps;
    std::unordered_map<std::string, size_t> byName;
  };

  const Heaps &Read();
  Heaps Merge(const Slabinfo &info);

  HostFiles &files_;
  PageSize &pageSize_;
  Fresh<Heaps> heaps_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_HEAP_RECORDS_H
