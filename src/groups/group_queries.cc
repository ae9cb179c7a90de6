#include "src/groups/group_queries.h"

#include "platkit/warning.h"
#include "src/groups/one_argument.h"
#include "src/status/status.h"

namespace kestrel {
namespace {

// Finds the first child of a VM that is a VMM sub-container. It skips children that it cannot read.
HVC_ReturnStatus FindVmmChild(const NODAL_ParamList *children, int64_t &vmmGroupID) {
  const uint32_t count = NODAL_ParamListUsedCount(children);
  for (uint32_t i = 0; i < count; ++i) {
    int64_t child = 0;
    GroupFlagsRecord flags = {};
    if (NODAL_ParamListGetInt64(children, i, &child) != HVC_OK) continue;
    if (Kestrel_GroupGetFlags(child, flags) != HVC_OK) continue;
    if ((flags.flags & HVC_GROUP_VMM_SUB_CONTAINER) == 0) continue;
    vmmGroupID = child;
    return child == -1 ? HVC_NOT_FOUND : HVC_OK;  // -1 is no group
  }
  return HVC_NOT_FOUND;
}

}  // namespace

HVC_ReturnStatus KestrelGroupNodalGet(int64_t groupID, uint32_t node, void *buffer, uint32_t size) {
  return WithOneArgument(
      "KestrelGroupNodalGet", groupID,
      [](HVC_ReturnStatus status) {
        // "faiure" must not change: people search their logs for it.
        Warning("KestrelGroupNodalGet: NODAL_ParamListAddInt() faiure, error code: %u\n", status);
      },
      [&](const NODAL_ParamList *arguments) { return NODAL_Get(node, arguments, buffer, size); });
}

HVC_ReturnStatus Kestrel_GroupGetName(int64_t groupID, GroupNameRecord &name) {
  return ReadGroupRecord(__func__, groupID, nodes::kGroupName, name, {});
}

HVC_ReturnStatus Kestrel_GroupGetTag(int64_t groupID, GroupTagRecord &tag) {
  return ReadGroupRecord(__func__, groupID, nodes::kGroupTag, tag, {});
}

HVC_ReturnStatus Kestrel_GroupGetParentID(int64_t groupID, ParentGroupIDRecord &parent) {
  return ReadGroupRecord(__func__, groupID, nodes::kParentGroupID, parent);
}

HVC_ReturnStatus Kestrel_GroupGetFlags(int64_t groupID, GroupFlagsRecord &flags) {
  return ReadGroupRecord(__func__, groupID, nodes::kGroupFlags, flags, {HVC_NOT_FOUND, HVC_NOT_INITIALIZED});
}

HVC_ReturnStatus Kestrel_GroupGetAlloc(int64_t groupID, GroupAllocRecord &alloc) {
  return ReadGroupRecord(__func__, groupID, nodes::kGroupAlloc, alloc);
}

HVC_ReturnStatus KestrelGroupGetCapacity(int64_t groupID, GroupCapacityRecord &capacity) {
  return ReadGroupRecord(__func__, groupID, nodes::kGroupCapacity, capacity);
}

HVC_ReturnStatus KestrelGroupGetMemoryStats(int64_t groupID, GroupMemoryStatsRecord &stats) {
  return ReadGroupRecord(__func__, groupID, nodes::kGroupMemoryStats, stats);
}

HVC_ReturnStatus Kestrel_GroupGetGroupLeaderID(int64_t groupID, uint32_t &leader) {
  leader = 0;
  GroupFlagsRecord flags = {};
  HVC_ReturnStatus status = Kestrel_GroupGetFlags(groupID, flags);
  if (status != HVC_OK) return status;
  if ((flags.flags & (HVC_GROUP_VM | HVC_GROUP_USER_WORLD)) == 0) return HVC_BAD_PARAM;
  GroupLeaderIDRecord record = {};
  status = ReadGroupRecord(__func__, groupID, nodes::kGroupLeaderID, record, {});
  if (status == HVC_OK) leader = record.leaderID;
  return status;
}

HVC_ReturnStatus ListMemberGroups(int64_t groupID, const MemberListing &listing, ParamList &members) {
  bool listed = false;  // distinguishes a failed listing from a failed argument
  // If the argument list cannot be created, the warning names KestrelGroupNodalGet instead of the caller.
  const HVC_ReturnStatus status = WithOneArgument(
      "KestrelGroupNodalGet", groupID,
      [&](HVC_ReturnStatus failure) {
        Warning("%s: NODAL_ParamListAddInt() failure: %s\n", listing.caller, HVC_ReturnStatusToString(failure));
      },
      [&](const NODAL_ParamList *arguments) {
        listed = true;
        return ListInstances(nodes::kMemberGroups, arguments, members);
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
