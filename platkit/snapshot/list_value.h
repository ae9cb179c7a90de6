// The entries of a list, as a snapshot or a history stores them.
#ifndef PLATKIT_SNAPSHOT_LIST_VALUE_H
#define PLATKIT_SNAPSHOT_LIST_VALUE_H

#include "platkit/catalogue.h"
#include "platkit/param_list.h"
#include "platkit/snapshot/format.h"
#include "platkit/status.h"

namespace platkit::snapshot {

// Appends the entries in `value`, the value of the list `node`, to `list`.
//
// HVC_SNAPSHOT_DAMAGED: the value is not a list with entries of this node's type. Other statuses as for ParamList::Add.
[[nodiscard]] HVC_ReturnStatus AddEntries(const Node &node, const Value &value, ParamList &list);

}  // namespace platkit::snapshot

#endif  // PLATKIT_SNAPSHOT_LIST_VALUE_H
