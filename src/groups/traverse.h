// The walk over the hierarchy of scheduler groups that all per-group reports share.
#ifndef KESTREL_GROUPS_TRAVERSE_H
#define KESTREL_GROUPS_TRAVERSE_H

#include <cstdint>

#include "platkit/status.h"

namespace kestrel {

// Called once per visited group, before its children. A status other than HVC_OK keeps the walk out of the group's
// children.
using GroupCallback = HVC_ReturnStatus (*)(int64_t groupID, uint32_t childCount, bool csv, void *context);

// Visits a group and its descendants, `levels` levels in all (at least 1), each parent before its children and children
// in the kernel's order. What fails below the start group keeps that group out of the walk and nothing else: groups
// vanish while it goes on.
//
// Groups that name each other are visited each time they are named, but not without end: a walk that is longer than any
// tree can make it is ended, which is reported.
//
// HVC_NOT_FOUND, silently, if the start group does not exist; HVC_LIMIT_EXCEEDED if the walk was ended; else the status
// of the callback for the start group, or of reading the last of its children's IDs.
[[nodiscard]] HVC_ReturnStatus KestrelTraverseGroups(int64_t groupID, uint32_t levels, bool csv, GroupCallback callback,
                                                     void *context);

}  // namespace kestrel

#endif  // KESTREL_GROUPS_TRAVERSE_H
