// The records of scheduler groups, made from the figures of the host.
//
// What is read of a group is kept for all its records, and each of these is given from what is kept once: the same
// record asked for again is made from figures read anew.
#ifndef PLATKIT_LINUX_RECORDS_GROUP_RECORDS_H
#define PLATKIT_LINUX_RECORDS_GROUP_RECORDS_H

#include <optional>

#include "platkit/linux/groups/group_tree.h"
#include "platkit/linux/kernel/ksm.h"
#include "platkit/linux/kernel/meminfo.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// The sharing of a process, kept or read.
const ProcessSharing &SharingOf(PageSharing &sharing, Group &process);

// Records come filled with zeros, which stand for what Linux has no counterpart of.
class GroupRecords {
 public:
  GroupRecords(HostFiles &files, GroupTree &tree, PageSharing &sharing)
      : files_(files), tree_(tree), sharing_(sharing) {}

  [[nodiscard]] HVC_ReturnStatus Name(Group &group, GroupNameRecord &record);
  [[nodiscard]] HVC_ReturnStatus Tag(Group &group, GroupTagRecord &record);
  [[nodiscard]] HVC_ReturnStatus ParentID(Group &group, ParentGroupIDRecord &record);
  [[nodiscard]] HVC_ReturnStatus Flags(Group &group, GroupFlagsRecord &record);
  [[nodiscard]] HVC_ReturnStatus LeaderID(Group &group, GroupLeaderIDRecord &record);
  [[nodiscard]] HVC_ReturnStatus Alloc(Group &group, GroupAllocRecord &record);
  [[nodiscard]] HVC_ReturnStatus MemoryStats(Group &group, GroupMemoryStatsRecord &record);
  [[nodiscard]] HVC_ReturnStatus Capacity(Group &group, GroupCapacityRecord &record);
  [[nodiscard]] HVC_ReturnStatus Members(Group &group, ParamList &list);
  [[nodiscard]] HVC_ReturnStatus MemClients(Group &group, ParamList &list);

 private:
  // In KB.
  struct Limits {
    uint64_t min = 0;
    uint64_t max = HVC_KB_NONE;
  };

  void Renew(Group &keeper, GivenRecord record);
  const Meminfo &HostMemory();
  Limits LimitsOf(Group &group, GivenRecord record);
  Figure ReservedByChildren(Group &group);
  Figure LowestMin(Group &group);
  bool IsGone(const Group &group, Figure required);

  HVC_ReturnStatus HostStats(GroupMemoryStatsRecord &record);
  HVC_ReturnStatus KernelStats(GroupMemoryStatsRecord &record);
  HVC_ReturnStatus ControlGroupStats(Group &group, GroupMemoryStatsRecord &record);
  HVC_ReturnStatus ProcessStats(Group &group, GroupMemoryStatsRecord &record);
  HVC_ReturnStatus VmmStats(Group &group, GroupMemoryStatsRecord &record);

  HostFiles &files_;
  GroupTree &tree_;
  PageSharing &sharing_;
  std::optional<Meminfo> meminfo_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_GROUP_RECORDS_H
