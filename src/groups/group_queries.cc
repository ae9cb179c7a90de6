#include "src/groups/group_queries.h"

#include "platkit/nodes.h"
#include "platkit/warning.h"
#include "src/groups/one_argument.h"
#include "src/status/status.h"

namespace kestrel {
namespace {

// The first of a VM's children that is a VMM sub-container. Children that cannot be read are passed over.
HVC_ReturnStatus FindVmmChild(const NODAL_ParamList *children, int64_t &vmmGroupID) {
  const uint32_t count = NODAL_ParamListUsedCount(children);
  for (uint32_t i = 0; i < count; ++i) {
    int64_t child = 0;
    GroupFlagsRecord flags = {};
    if (NODAL_ParamListGetInt64(children, i, &child) != HVC_OK) continue;
    if (Kestrel_GroupGetFlags(child, flags) != HVC_OK) continue;
    if ((flags.flags & HVC_GROUP_VMM_SUB_CONTAINER) == 0) continue;
    vmmGroupID = child;
    return child == -1 ? HVC_NOT_FOUND : HVC_OK;  // all ones is no group's ID
  }
  return HVC_NOT_FOUND;
}

}  // namespace

HVC_ReturnStatus KestrelGroupNodalGet(int64_t groupID, uint32_t node, void *buffer, uint32_t size) {
  return WithOneArgument(
      "KestrelGroupNodalGet", groupID,
      [](HVC_ReturnStatus status) {
        // Spelt as those who search their logs for it know it.
        Warning("KestrelGroupNodalGet: NODAL_ParamListAddInt() faiure, error code: %u\n", status);
      },
      [&](const NODAL_ParamList *arguments) { return NODAL_Get(node, arguments, buffer, size); });
}

HVC_ReturnStatus Kestrel_GroupGetName(int64_t groupID, GroupNameRecord &name) {
  return ReadGroupRecord("Kestrel_GroupGetName", groupID, NODAL_NODE_sched_groups_groupName, name, {});
}

HVC_ReturnStatus Kestrel_GroupGetTag(int64_t groupID, GroupTagRecord &tag) {
  return ReadGroupRecord("Kestrel_GroupGetTag", groupID, NODAL_NODE_sched_groups_groupTag, tag, {});
}

HVC_ReturnStatus Kestrel_GroupGetParentID(int64_t groupID, ParentGroupIDRecord &parent) {
  return ReadGroupRecord("Kestrel_GroupGetParentID", groupID, NODAL_NODE_sched_groups_parentGroupID, parent);
}

HVC_ReturnStatus Kestrel_GroupGetFlags(int64_t groupID, GroupFlagsRecord &flags) {
  return ReadGroupRecord("Kestrel_GroupGetFlags", groupID, NODAL_NODE_sched_groups_groupFlags, flags,
                         {HVC_NOT_FOUND, HVC_NOT_INITIALIZED});
}

HVC_ReturnStatus Kestrel_GroupGetAlloc(int64_t groupID, GroupAllocRecord &alloc) {
  return ReadGroupRecord("Kestrel_GroupGetAlloc", groupID, NODAL_NODE_sched_groups_memAllocationInKB, alloc);
}

HVC_ReturnStatus KestrelGroupGetMemoryStats(int64_t groupID, GroupMemoryStatsRecord &stats) {
  return ReadGroupRecord("KestrelGroupGetMemoryStats", groupID, NODAL_NODE_sched_groups_stats_memoryStats, stats);
}

HVC_ReturnStatus Kestrel_GroupGetGroupLeaderID(int64_t groupID, uint32_t &leader) {
  leader = 0;
  GroupFlagsRecord flags = {};
  HVC_ReturnStatus status = Kestrel_GroupGetFlags(groupID, flags);
  if (status != HVC_OK) return status;
  if ((flags.flags & (HVC_GROUP_VM | HVC_GROUP_USER_WORLD)) == 0) return HVC_BAD_PARAM;
  GroupLeaderIDRecord record = {};
  status = ReadGroupRecord("Kestrel_GroupGetGroupLeaderID", groupID, NODAL_NODE_sched_groups_groupLeaderID, record, {});
  if (status == HVC_OK) leader = record.leaderID;
  return status;
}

HVC_ReturnStatus ListMemberGroups(int64_t groupID, const MemberListing &listing, ParamList &members) {
  bool listed = false;  // so that a failing list is reported when its argument list is gone, and not as the argument's
  // A list that cannot be made is reported in the name of the shared read, whoever lists.
  const HVC_ReturnStatus status = WithOneArgument(
      "KestrelGroupNodalGet", groupID,
      [&](HVC_ReturnStatus failure) {
        Warning("%s: NODAL_ParamListAddInt() failure: %s\n", listing.caller, HVC_ReturnStatusToString(failure));
      },
      [&](const NODAL_ParamList *arguments) {
        listed = true;
        return ListInstances(NODAL_NODE_sched_groups_members_groups, arguments, members);
      });
  if (listed && status != HVC_OK && !(status == HVC_NOT_FOUND && listing.vanishedIsSilent)) {
    Warning("%s: %s failure: %s\n", listing.caller, listing.listStep, HVC_ReturnStatusToString(status));
  }
  return status;
}

HVC_ReturnStatus Kestrel_GroupGetVMMAlloc(int64_t vmGroupID, VmmAllocRecord &alloc) {
  ParamList children;
  HVC_ReturnStatus status = ListMemberGroups(
      vmGroupID, {.caller = "Kestrel_GroupGetVMMAlloc", .listStep = "GetInstanceListAlloc", .vanishedIsSilent = false},
      children);
  if (status != HVC_OK) return status;
  int64_t vmmGroupID = 0;
  status = FindVmmChild(children.get(), vmmGroupID);
  children.reset();
  if (status != HVC_OK) return status;

  GroupAllocRecord vm = {}, vmm = {};
  status = Kestrel_GroupGetAlloc(vmGroupID, vm);
  if (status != HVC_OK) {
    Warning("Kestrel_GroupGetVMMAlloc: VM GroupGetAlloc failure, error code: %u\n", status);
    return status;
  }
  status = Kestrel_GroupGetAlloc(vmmGroupID, vmm);
  if (status != HVC_OK) {
    Warning("Kestrel_GroupGetVMMAlloc: GroupGetAlloc failure, error code: %u\n", status);
    return status;
  }
  alloc = {.min = vmm.min, .max = vmm.max, .shares = vm.shares, .minLimit = vm.minLimit};
  return HVC_OK;
}

}  // namespace kestrel
