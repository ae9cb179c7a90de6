// Reads JSON files.
#ifndef NODAL_SNAPSHOT_JSON_FILE_H
#define NODAL_SNAPSHOT_JSON_FILE_H

#include <string>

#include "tools/nodal/snapshot/record_json.h"

namespace nodal {

// `path` is a file, or "-" for standard input. Throws a Failure if the file is unreadable or exceeds 1 GiB, or for a
// syntax error, with line and column. Throws an InvalidJson for a duplicate key or excessive nesting.
Json ParseJsonFile(const std::string &path);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_JSON_FILE_H
