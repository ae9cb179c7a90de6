// Explains why a snapshot or root folder cannot be opened.
#ifndef NODAL_SNAPSHOT_OPEN_FAILURE_H
#define NODAL_SNAPSHOT_OPEN_FAILURE_H

#include <string>

#include "tools/nodal/support/output.h"

namespace nodal {

// `status` is the failure of opening the path. Reads the file to distinguish a truncated snapshot from a damaged one.
Failure OpenFailure(const std::string &path, HVC_ReturnStatus status);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_OPEN_FAILURE_H
