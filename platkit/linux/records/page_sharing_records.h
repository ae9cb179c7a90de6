// The record of page sharing (KSM), and the memory that KSM saves.
#ifndef PLATKIT_LINUX_RECORDS_PAGE_SHARING_RECORDS_H
#define PLATKIT_LINUX_RECORDS_PAGE_SHARING_RECORDS_H

#include "platkit/linux/groups/host_groups.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/records/host_wide_files.h"
#include "platkit/records.h"

namespace platkit {

// The memory that KSM saves in a process, in KB. A figure is absent if this kernel does not have it.
struct ProcessSharing {
  Figure saved;  // merged pages and zero pages
  Figure zero;   // pages replaced by the kernel's page of zeros, which are not resident
};

class PageSharingRecords {
 public:
  PageSharingRecords(HostFiles &files, PageSize &pageSize, HostWideFiles &host, GroupReader &reader)
      : files_(files), pageSize_(pageSize), host_(host), reader_(reader) {}

  // From /sys/kernel/mm/ksm and cow_ksm of /proc/vmstat. All zeros on a kernel without KSM.
  [[nodiscard]] HVC_ReturnStatus Stats(PShareStatsRecord &record);

  // pages_sharing + ksm_zero_pages, in KB; absent on a kernel without KSM.
  Figure SavedOnHost();

  // The memory that KSM saves in a control group, in KB. The kernel counts it only for the host and for processes, so
  // the figure is unreadable unless the host saves nothing.
  Figure OfControlGroup();

  // From ksm_stat of the process. Both figures are 0 if KSM saves nothing on the host, and absent on a kernel without
  // KSM.
  ProcessSharing OfProcess(Group &process);

 private:
  Figure ReadRecordPages(std::string_view file);

  HostFiles &files_;
  PageSize &pageSize_;
  HostWideFiles &host_;
  GroupReader &reader_;
  Fresh<Figure> savedOnHost_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_PAGE_SHARING_RECORDS_H
