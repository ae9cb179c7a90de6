// Instances that vanish while a host is read.
#ifndef NODAL_CAPTURE_VANISHED_H
#define NODAL_CAPTURE_VANISHED_H

#include <cstddef>

#include "tools/nodal/tree/caching_tree.h"

namespace nodal {

// Removes the instances that vanished before they could be read, and every reference to them. An instance of which no
// record was found has vanished if `host` no longer refers to it; if `host` still does, its nodes are marked as
// missing. Returns the number of instances that vanished.
//
// An instance with only some of its records is kept, because a report would have read the same.
size_t OmitVanished(CachingTree &tree, Tree &host);

}  // namespace nodal

#endif  // NODAL_CAPTURE_VANISHED_H
