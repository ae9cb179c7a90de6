// Prints a snapshot as JSON, in the form that nodal-snapshot(5) describes.
#ifndef NODAL_SNAPSHOT_DUMP_H
#define NODAL_SNAPSHOT_DUMP_H

#include <string>

namespace nodal {

// Throws a Failure if the snapshot is unreadable or damaged.
void DumpSnapshot(const std::string &snapshot);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_DUMP_H
