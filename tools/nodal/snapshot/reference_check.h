// The check of the references in a snapshot.
#ifndef NODAL_SNAPSHOT_REFERENCE_CHECK_H
#define NODAL_SNAPSHOT_REFERENCE_CHECK_H

#include "platkit/source.h"
#include "tools/nodal/snapshot/file_check.h"

namespace nodal {

// Reports references to instances that have no node, and nodes of instances to which nothing refers. `source` reads the
// snapshot.
void CheckReferences(const CheckedNodes &nodes, platkit::Source &source, Problems &problems);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_REFERENCE_CHECK_H
