// The check of a snapshot file: its records, their order, their values and its index.
#ifndef NODAL_SNAPSHOT_FILE_CHECK_H
#define NODAL_SNAPSHOT_FILE_CHECK_H

#include <map>
#include <set>
#include <string>

#include "platkit/path.h"
#include "platkit/snapshot/snapshot_file.h"
#include "tools/nodal/snapshot/problems.h"

namespace nodal {

// The nodes that passed the check of a snapshot file.
struct CheckedNodes {
  std::map<std::string, platkit::PathTarget> byPath;
  std::set<std::string> unread;  // the paths of nodes that are saved as unreadable
};

CheckedNodes CheckFile(platkit::snapshot::SnapshotFile &file, Problems &problems);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_FILE_CHECK_H
