// The records and lists of scheduler groups.
#ifndef PLATKIT_LINUX_RECORDS_GROUP_RECORDS_H
#define PLATKIT_LINUX_RECORDS_GROUP_RECORDS_H

#include <cstdint>

#include "platkit/linux/groups/host_groups.h"
#include "platkit/linux/records/host_wide_files.h"
#include "platkit/linux/records/page_sharing_records.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// All operations return HVC_NOT_FOUND if the group does not exist. REQUIRES: the record is zeroed. Figures that Linux
// does not have stay 0. docs/linux.md lists the source of each field.
class GroupRecords {
 public:
  GroupRecords(HostFiles &files, HostGroups &groups, HostWideFiles &host, PageSharingRecords &sharing)
      : files_(files),
        reader_(groups.reader),
        tree_(groups.tree),
        limits_(groups.limits),
        vms_(groups.vms),
        host_(host),
        sharing_(sharing) {}

  [[nodiscard]] HVC_ReturnStatus Name(int64_t id, GroupNameRecord &record);
  [[nodiscard]] HVC_ReturnStatus Tag(int64_t id, GroupTagRecord &record);
  [[nodiscard]] HVC_ReturnStatus ParentID(int64_t id, ParentGroupIDRecord &record);
  [[nodiscard]] HVC_ReturnStatus Flags(int64_t id, GroupFlagsRecord &record);
  [[nodiscard]] HVC_ReturnStatus LeaderID(int64_t id, GroupLeaderIDRecord &record);
  [[nodiscard]] HVC_ReturnStatus Alloc(int64_t id, GroupAllocRecord &record);
  [[nodiscard]] HVC_ReturnStatus MemoryStats(int64_t id, GroupMemoryStatsRecord &record);
  [[nodiscard]] HVC_ReturnStatus Capacity(int64_t id, GroupCapacityRecord &record);
  [[nodiscard]] HVC_ReturnStatus Members(int64_t id, ParamList &list);
  [[nodiscard]] HVC_ReturnStatus MemClients(int64_t id, ParamList &list);

  // Counts the VMs of the host.
  [[nodiscard]] HVC_ReturnStatus NumVMs(NumVMsRecord &record);

 private:
  Group *FindOfKnownKind(int64_t id);
  Group *VmOf(Group &group);
  Figure ReservedByChildren(Group &group);
  Figure ConsumedByMembers(Group &host);
  void FillLimits(Group &limited, Group &reserved, GroupMemoryStatsRecord &record);
  bool IsGone(const Group &group, Figure required);

  void HostStats(GroupMemoryStatsRecord &record);
  void KernelStats(GroupMemoryStatsRecord &record);
  Figure SizePeak(Group &group, Figure peak);
  HVC_ReturnStatus ControlGroupStats(Group &group, GroupMemoryStatsRecord &record);
  HVC_ReturnStatus ProcessStats(Group &group, GroupMemoryStatsRecord &record);
  HVC_ReturnStatus VmmStats(Group &group, GroupMemoryStatsRecord &record);

  HostFiles &files_;
  GroupReader &reader_;
  GroupTree &tree_;
  GroupLimits &limits_;
  VmGroups &vms_;
  HostWideFiles &host_;
  PageSharingRecords &sharing_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_GROUP_RECORDS_H
