// The walk over the hierarchy of scheduler groups that all per-group reports share.
#ifndef KESTREL_GROUPS_TRAVERSE_H
#define KESTREL_GROUPS_TRAVERSE_H

#include <cstdint>

#include "platkit/status.h"

namespace kestrel {

// Called once for each visit of a group, before its children. After a status other than HVC_OK, the walk skips the
// group's children.
using GroupCallback = HVC_ReturnStatus (*)(int64_t groupID, uint32_t childCount, bool csv, void *context);

// Visits a group and its descendants, down to a total of `levels` levels (at least 1). Parents precede children, and
// children are in the order of their list. A failure below the start group only prunes the walk there, because groups
// can vanish while it runs. A group that is listed several times is visited several times; a walk that exceeds its
// budget stops with a warning.
//
// Returns HVC_NOT_FOUND without a warning if the start group does not exist, and HVC_LIMIT_EXCEEDED if the budget is
// exceeded. Otherwise returns the first failure of these steps for the start group: listing its children, and the
// callback. If both succeed, returns the status of reading the last child's ID.
[[nodiscard]] HVC_ReturnStatus KestrelTraverseGroups(int64_t groupID, uint32_t levels, bool csv, GroupCallback callback,
                                                     void *context);

}  // namespace kestrel

#endif  // KESTREL_GROUPS_TRAVERSE_H
