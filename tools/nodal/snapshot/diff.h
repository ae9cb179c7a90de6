// The differences between two snapshots.
#ifndef NODAL_SNAPSHOT_DIFF_H
#define NODAL_SNAPSHOT_DIFF_H

#include <string>
#include <vector>

namespace nodal {

struct DiffOptions {
  std::string from;
  std::string to;
  std::vector<std::string> only;  // paths; empty: all
  bool json = false;
};

// Prints the differences, and returns whether the snapshots are equal apart from host and time. Throws a Failure.
bool DiffSnapshots(const DiffOptions &options);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_DIFF_H
