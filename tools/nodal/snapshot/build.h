// Builds a snapshot from JSON in the form of a dump.
#ifndef NODAL_SNAPSHOT_BUILD_H
#define NODAL_SNAPSHOT_BUILD_H

#include <string>

namespace nodal {

// `json` is a file, or "-" for standard input. Throws a Failure and writes no snapshot if this fails.
void BuildSnapshot(const std::string &json, const std::string &snapshot);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_BUILD_H
