// The records of memory clients. A process is identified by its PID, and a virtual machine monitor (VMM) by the
// identifier of its group.
#ifndef PLATKIT_LINUX_RECORDS_CLIENT_RECORDS_H
#define PLATKIT_LINUX_RECORDS_CLIENT_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platkit/linux/groups/host_groups.h"
#include "platkit/linux/groups/vm_monitors.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/records/host_wide_files.h"
#include "platkit/linux/records/page_sharing_records.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// All operations return HVC_NOT_FOUND if the client does not exist or has no such record. REQUIRES: the record is
// zeroed. Figures that Linux does not have stay 0. docs/linux.md lists the source of each field.
class ClientRecords {
 public:
  ClientRecords(HostFiles &files, PageSize &pageSize, HostGroups &groups, HostWideFiles &host,
                PageSharingRecords &sharing)
      : files_(files),
        pageSize_(pageSize),
        reader_(groups.reader),
        tree_(groups.tree),
        limits_(groups.limits),
        vms_(groups.vms),
        host_(host),
        sharing_(sharing),
        monitors_(files, groups.vms) {}

  // Records of a VM's process.
  [[nodiscard]] HVC_ReturnStatus Vmm(int64_t client, VmmMemoryStatsRecord &record);
  [[nodiscard]] HVC_ReturnStatus Guest(int64_t client, GuestStatsRecord &record);
  [[nodiscard]] HVC_ReturnStatus Zip(int64_t client, ZipStatsRecord &record);
  [[nodiscard]] HVC_ReturnStatus VmmLeaderID(int64_t client, VmmLeaderIDRecord &record);

  // Records of a VMM.
  [[nodiscard]] HVC_ReturnStatus SwapInfo(int64_t client, VmSwapInfoRecord &record);
  [[nodiscard]] HVC_ReturnStatus LargePages(int64_t client, LPageStatsRecord &record);

  // Records of any process.
  [[nodiscard]] HVC_ReturnStatus UserWorld(int64_t client, UwMemoryStatsRecord &record);

  // Records of any client. The lists of a VMM are empty.
  [[nodiscard]] HVC_ReturnStatus TotalCommon(int64_t client, TotalCommonRecord &record);
  [[nodiscard]] HVC_ReturnStatus RemapTypes(int64_t client, ParamList &list);
  [[nodiscard]] HVC_ReturnStatus Remap(int64_t client, std::string_view type, RemapStatsRecord &record);

 private:
  // Return null if the client is not a process, a VM's process or a VMM, respectively. FindVmOfVmm returns the VM of
  // the VMM.
  Group *FindProcess(int64_t client);
  Group *FindVm(int64_t client);
  Group *FindVmOfVmm(int64_t client);

  // Returns memory.stat of a VM's own control group. All figures are absent if `own` is null.
  const CgroupStat &StatOf(Group *own);

  // Returns a count of the VM's own control group since the VM started, if it is known; see the definition.
  Figure CountOfVm(const Group *own, Figure count, Figure ofHost);

  // Figures of the VM's compressed memory, in KB.
  struct Compressed {
    Figure size;   // before compression
    Figure saved;  // by compression
  };
  Compressed CompressedOf(Group *own);
  Figure CompressionCache(Group &vm);

  // The VM's memory in swap space, in KB.
  Figure Swapped(Group *own, const ProcessStatus &status);

  // Memory in zram, in KB.
  struct ZramUse {
    Figure size;    // before compression
    Figure memory;  // the memory that zram uses for it
  };
  ZramUse InZram(Figure swapped);

  Figure IsSwapping(Group *own, Figure swapped);
  Figure AllocationTarget(Group &process, Group *own, Figure memory);

  Figure PagesInKB(Figure pages);
  Figure GiganticPagesInKB(Group &vm, Group *own, const ProcessStatus &status);
  Figure TransparentPagesInKB(Group &vm, Group *own, const ProcessStatus &status, Figure pooled);
  Figure RemappedPages(Group &process, size_t type);
  Figure NumaPagesLeft(Group &process);

  HostFiles &files_;
  PageSize &pageSize_;
  GroupReader &reader_;
  GroupTree &tree_;
  GroupLimits &limits_;
  VmGroups &vms_;
  HostWideFiles &host_;
  PageSharingRecords &sharing_;
  VmMonitors monitors_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_CLIENT_RECORDS_H
