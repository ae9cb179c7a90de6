// Instances that vanish while a host is read.
#ifndef NODAL_CAPTURE_VANISHED_H
#define NODAL_CAPTURE_VANISHED_H

#include <cstddef>

#include "tools/nodal/tree/caching_tree.h"

namespace nodal {

// Removes the instances that vanished before they could be read, and every reference to them. If no record of an
// instance was found, the instance has vanished unless `host` still refers to it. If `host` does, the nodes of the
// instance are marked as missing. Returns the number of instances that vanished.
//
// An instance with only some of its records is kept, because a report on the host could have read the same records.
size_t OmitVanished(CachingTree &tree, Tree &host);

}  // namespace nodal

#endif  // NODAL_CAPTURE_VANISHED_H
