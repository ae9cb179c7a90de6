// Reads JSON files.
#ifndef NODAL_SNAPSHOT_JSON_FILE_H
#define NODAL_SNAPSHOT_JSON_FILE_H

#include <string>

#include "tools/nodal/snapshot/record_json.h"

namespace nodal {

// `path` is a file, or "-" for standard input. Throws a Failure for a file that exceeds 1 GiB, and with line and column
// for a syntax error. Throws an InvalidJson for a duplicate key or excessive nesting.
Json ParseJsonFile(const std::string &path);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_JSON_FILE_H
