#include "src/groups/traverse.h"

#include "src/groups/group_queries.h"
#include "src/nodal/param_list.h"

namespace kestrel {

HVC_ReturnStatus KestrelTraverseGroups(int64_t groupID, uint32_t levels, bool csv, GroupCallback callback,
                                       void *context) {
  ParamList children;
  HVC_ReturnStatus status = ListMemberGroups(
      groupID, {.caller = "KestrelTraverseGroups", .listStep = "NODAL_GetInstanceListAlloc", .vanishedIsSilent = true},
      children);
  if (status != HVC_OK) return status;

  const uint32_t count = NODAL_ParamListUsedCount(children.get());
  status = callback(groupID, count, csv, context);
  if (status != HVC_OK || levels == 1) return status;

  for (uint32_t i = 0; i < count; ++i) {
    int64_t child = 0;
    status = NODAL_ParamListGetInt64(children.get(), i, &child);
    if (status != HVC_OK) continue;
    // A group that vanished, or that its callback refused, is no reason to leave out its siblings.
    static_cast<void>(KestrelTraverseGroups(child, levels - 1, csv, callback, context));
  }
  return status;
}

}  // namespace kestrel
