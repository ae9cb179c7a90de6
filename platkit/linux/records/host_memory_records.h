// The records of the host's memory as a whole: its consumers, and the memory state.
#ifndef PLATKIT_LINUX_RECORDS_HOST_MEMORY_RECORDS_H
#define PLATKIT_LINUX_RECORDS_HOST_MEMORY_RECORDS_H

#include <string_view>

#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/records/host_wide_files.h"
#include "platkit/records.h"

namespace platkit {

// REQUIRES: the record is zeroed. Figures that Linux does not have stay 0.
class HostMemoryRecords {
 public:
  HostMemoryRecords(HostFiles &files, PageSize &pageSize, HostWideFiles &host)
      : files_(files), pageSize_(pageSize), host_(host) {}

  // From /proc/meminfo, zoneinfo, iomem and vmstat.
  [[nodiscard]] HVC_ReturnStatus Comprehensive(ComprehensiveRecord &record);

  // From /proc/meminfo, zoneinfo and pressure/memory.
  [[nodiscard]] HVC_ReturnStatus Global(GlobalMemoryRecord &record);

  // From /proc/vmstat, meminfo, zoneinfo and pressure/memory. HVC_NOT_FOUND if `state` is not one of kMemoryStates.
  [[nodiscard]] HVC_ReturnStatus Transitions(std::string_view state, StateTransitionsRecord &record);

 private:
  HostFiles &files_;
  PageSize &pageSize_;
  HostWideFiles &host_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_HOST_MEMORY_RECORDS_H
