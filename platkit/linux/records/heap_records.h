// The kernel's heaps: its caches of objects of one size each.
#ifndef PLATKIT_LINUX_RECORDS_HEAP_RECORDS_H
#define PLATKIT_LINUX_RECORDS_HEAP_RECORDS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// What is read for the list serves each heap's record once. Only root may read it: others get HVC_NO_PERMISSION.
class Heaps {
 public:
  Heaps(HostFiles &files, PageSize &pageSize) : files_(files), pageSize_(pageSize) {}

  // In the order of the kernel.
  [[nodiscard]] HVC_ReturnStatus List(ParamList &list);
  [[nodiscard]] HVC_ReturnStatus Stats(std::string_view name, HeapStatsRecord &record);

 private:
  // Caches of one name, and of one that is the same as far as a record shows it, are one heap.
  struct Heap {
    std::string name;
    Figure slabs = Figure(0);
    Figure size = Figure(0);     // in bytes, as the others
    Figure objects = Figure(0);  // what the objects take, used or not
    Figure avail = Figure(0);    // what those take that are not used
    Figure objectSize;
    bool given = false;
  };

  HVC_ReturnStatus Read();
  void TakeCache(std::string_view line);
  Heap *Find(std::string_view name);

  HostFiles &files_;
  PageSize &pageSize_;
  bool isRead_ = false;
  std::vector<Heap> heaps_;
  std::unordered_map<std::string, size_t> byName_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_HEAP_RECORDS_H
