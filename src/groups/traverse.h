// The walk over the hierarchy of scheduler groups that all per-group reports share.
#ifndef KESTREL_GROUPS_TRAVERSE_H
#define KESTREL_GROUPS_TRAVERSE_H

#include <cstdint>

#include "platkit/status.h"

namespace kestrel {

// Called once for each visit of a group, before its children. After a status other than HVC_OK, the walk skips the
// group's children.
using GroupCallback = HVC_ReturnStatus (*)(int64_t groupID, uint32_t childCount, bool csv, void *context);

// Visits a group and its descendants on `levels` levels in all (at least 1), parents before children, and children in
// the order of their list. A failure below the start group prunes the walk there and has no other effect, since groups
// vanish while it runs. A group is visited as often as it is named; a walk that exceeds its budget stops with a
// warning.
//
// Returns HVC_NOT_FOUND without a warning if the start group does not exist, and HVC_LIMIT_EXCEEDED if the budget is
// exceeded. Otherwise returns the status of the callback for the start group, or of reading its last child's ID.
[[nodiscard]] HVC_ReturnStatus KestrelTraverseGroups(int64_t groupID, uint32_t levels, bool csv, GroupCallback callback,
                                                     void *context);

}  // namespace kestrel

#endif  // KESTREL_GROUPS_TRAVERSE_H
