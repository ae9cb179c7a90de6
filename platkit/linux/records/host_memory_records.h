// The memory of the host as a whole: what holds it, and how short of it the kernel is.
#ifndef PLATKIT_LINUX_RECORDS_HOST_MEMORY_RECORDS_H
#define PLATKIT_LINUX_RECORDS_HOST_MEMORY_RECORDS_H

#include <cstdint>
#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/files/kept.h"
#include "platkit/linux/kernel/meminfo.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/kernel/zoneinfo.h"
#include "platkit/records.h"
#include "platkit/status.h"

namespace platkit {

// Records come filled with zeros, which stand for what Linux has no counterpart of.
class HostMemory {
 public:
  HostMemory(HostFiles &files, PageSize &pageSize) : files_(files), pageSize_(pageSize) {}

  [[nodiscard]] HVC_ReturnStatus Comprehensive(ComprehensiveRecord &record);
  [[nodiscard]] HVC_ReturnStatus Global(GlobalMemoryRecord &record);
  // HVC_NOT_FOUND if no state has that name.
  [[nodiscard]] HVC_ReturnStatus Transitions(std::string_view state, StateTransitionsRecord &record);

 private:
  // The counters of /proc/vmstat, in events and pages.
  struct Counters {
    Figure daemonRuns, shortRests, stalls;
    Figure pageDescriptors;
  };

  Counters ReadCounters();

  const Meminfo &MeminfoFor(uint32_t record);
  const ZoneTotals &ZonesFor(uint32_t record);
  const Counters &CountersFor(uint32_t record);

  HostFiles &files_;
  PageSize &pageSize_;
  Kept<Meminfo> meminfo_;
  Kept<ZoneTotals> zones_;
  Kept<Counters> counters_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_HOST_MEMORY_RECORDS_H
