// A snapshot as JSON, in the form that nodal-snapshot(5) describes.
#ifndef NODAL_SNAPSHOT_DUMP_H
#define NODAL_SNAPSHOT_DUMP_H

#include <string>

namespace nodal {

// Prints it. Throws a Failure.
void DumpSnapshot(const std::string &snapshot);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_DUMP_H
