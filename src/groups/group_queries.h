// One attribute of one scheduler group at a time.
//
// Groups come and go while a report runs. The getters of parents, flags, allocations and figures are silent about
// HVC_NOT_FOUND, so that a vanished group just drops out of the report; those of names, tags and leaders are not. Every
// other failure is reported. All are returned.
#ifndef KESTREL_GROUPS_GROUP_QUERIES_H
#define KESTREL_GROUPS_GROUP_QUERIES_H

#include <cstdint>

#include "platkit/records.h"
#include "platkit/status.h"
#include "src/nodal/failure.h"
#include "src/nodal/param_list.h"

namespace kestrel {

// The shared read: a node with the group's ID as its only argument. Reports what keeps it from reading, but leaves the
// status of the read itself to its caller.
[[nodiscard]] HVC_ReturnStatus KestrelGroupNodalGet(int64_t groupID, uint32_t node, void *buffer, uint32_t size);

// Reads a record of a group for the step of that name, which reports what it is not silent about.
template <typename Record>
[[nodiscard]] HVC_ReturnStatus ReadGroupRecord(const char *step, int64_t groupID, uint32_t node, Record &record,
                                               Statuses silent = kVanished) {
  const HVC_ReturnStatus status = KestrelGroupNodalGet(groupID, node, &record, sizeof record);
  WarnOfFailure(step, status, silent);
  return status;
}

[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetName(int64_t groupID, GroupNameRecord &name);
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetTag(int64_t groupID, GroupTagRecord &tag);
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetParentID(int64_t groupID, ParentGroupIDRecord &parent);
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetFlags(int64_t groupID, GroupFlagsRecord &flags);
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetAlloc(int64_t groupID, GroupAllocRecord &alloc);
[[nodiscard]] HVC_ReturnStatus KestrelGroupGetMemoryStats(int64_t groupID, GroupMemoryStatsRecord &stats);

// The memory client that leads a VM or user-world group; 0 on failure. Other groups have no leader: HVC_BAD_PARAM,
// silently.
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetGroupLeaderID(int64_t groupID, uint32_t &leader);

// How a virtual machine's memory is allocated: its guest memory is that of its VMM sub-container, while shares and the
// limit of the reservation are set on the VM as a whole.
#pragma pack(push, 1)
struct VmmAllocRecord {
  uint64_t min;
  uint64_t max;
  int32_t shares;
  uint64_t minLimit;
};
#pragma pack(pop)
static_assert(sizeof(VmmAllocRecord) == 28);

// HVC_NOT_FOUND, silently, for a group without a VMM sub-container. `alloc` is written on success only.
[[nodiscard]] HVC_ReturnStatus Kestrel_GroupGetVMMAlloc(int64_t vmGroupID, VmmAllocRecord &alloc);

// Lists a group's direct children. What fails is reported in the name of `caller`, with `listStep` for the listing
// itself, except, if `vanishedIsSilent`, a group that does not exist.
struct MemberListing {
  const char *caller;
  const char *listStep;
  bool vanishedIsSilent;
};
[[nodiscard]] HVC_ReturnStatus ListMemberGroups(int64_t groupID, const MemberListing &listing, ParamList &members);

}  // namespace kestrel

#endif  // KESTREL_GROUPS_GROUP_QUERIES_H
