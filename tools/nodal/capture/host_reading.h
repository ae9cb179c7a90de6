// Reads all nodes of a host once.
#ifndef NODAL_CAPTURE_HOST_READING_H
#define NODAL_CAPTURE_HOST_READING_H

#include <cstddef>

#include "tools/nodal/tree/caching_tree.h"
#include "tools/nodal/tree/path_filter.h"

namespace nodal {

// Reads the nodes of `host` that the filter contains into `tree`, and removes the instances that vanished meanwhile.
// Shows the progress on a terminal. Returns the number of instances that vanished. Throws a Failure if a named path of
// the filter does not exist. Afterwards, `tree` reads nothing more.
size_t ReadHost(CachingTree &tree, Tree &host, PathFilter &filter);

}  // namespace nodal

#endif  // NODAL_CAPTURE_HOST_READING_H
