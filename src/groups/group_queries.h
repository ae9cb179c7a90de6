// Functions that read the data of one scheduler group. All of them return the status of the read.
//
// Groups come and go while a report runs, and the report omits a vanished group. These functions therefore do not warn
// of HVC_NOT_FOUND when they read a parent, flags, an allocation, a capacity or memory statistics. Reading flags does
// not warn of HVC_NOT_INITIALIZED either. Every other failure prints a warning unless the function's comment says
// otherwise.
//
// The names of functions that start with Kestrel must not change, because warnings contain them.
#ifndef KESTREL_GROUPS_GROUP_QUERIES_H
#define KESTREL_GROUPS_GROUP_QUERIES_H

#include <cstdint>

#include "platkit/records.h"
#include "platkit/status.h"
#include "src/nodal/failure.h"
#include "src/nodal/param_list.h"

namespace kestrel {

// Reads a node whose only argument is the group's ID. It warns if it cannot create the argument list, but not if the
// read fails.
[[nodiscard]] HVC_ReturnStatus KestrelGroupNodalGet(int64_t groupID, uint32_t node, void *buffer, uint32_t size);

// Reads a record of a group for the function `step`. A failure prints a warning that names `step`, unless its status is
// in `silent`.
template <typename Record>
[[nodiscard]] HVC_ReturnStatus ReadGroupRecord(const char *step, int64_t groupID, NodeRef<Record> node, Record &record,
                                               Statuses silent = kVanished) {
  const HVC_ReturnStatus status = KestrelGroupNodalGet(groupID, node.id, &record, sizeof record);
  WarnOfFailure(step, status, silent);
  return status;
}

[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetName(int64_t groupID, GroupNameRecord &name);
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetTag(int64_t groupID, GroupTagRecord &tag);
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetParentID(int64_t groupID, ParentGroupIDRecord &parent);
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetFlags(int64_t groupID, GroupFlagsRecord &flags);
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetAlloc(int64_t groupID, GroupAllocRecord &alloc);
[[nodiscard]] HVC_ReturnStatus KestrelGroupGetCapacity(int64_t groupID, GroupCapacityRecord &capacity);
[[nodiscard]] HVC_ReturnStatus KestrelGroupGetMemoryStats(int64_t groupID, GroupMemoryStatsRecord &stats);

// The memory client that leads a VM or user-world group; 0 on failure. Returns HVC_BAD_PARAM without a warning for
// other groups, which have no leader.
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetGroupLeaderID(int64_t groupID, uint32_t &leader);

// The allocation of a VM: minimum and maximum of its VMM sub-container, shares and minLimit of the VM's own group.
#pragma pack(push, 1)
struct VmmAllocRecord {
  uint64_t min;
  uint64_t max;
  int32_t shares;
  uint64_t minLimit;
};
#pragma pack(pop)
static_assert(sizeof(VmmAllocRecord) == 28);

// Returns HVC_NOT_FOUND without a warning for a group without a VMM sub-container. Writes `alloc` on success only.
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetVMMAlloc(int64_t vmGroupID, VmmAllocRecord &alloc);

struct MemberListing {
  const char *caller;     // the name of the function in warnings
  const char *listStep;   // the name of the listing in warnings
  bool vanishedIsSilent;  // do not warn of HVC_NOT_FOUND
};

// Lists the direct children of a group.
[[nodiscard]] HVC_ReturnStatus ListMemberGroups(int64_t groupID, const MemberListing &listing, ParamList &members);

}  // namespace kestrel

#endif  // KESTREL_GROUPS_GROUP_QUERIES_H
