// The check of a whole snapshot.
#ifndef NODAL_SNAPSHOT_VERIFY_H
#define NODAL_SNAPSHOT_VERIFY_H

#include <string>

namespace nodal {

// Prints each problem and a summary. Returns true if there is no problem. Throws a Failure if the file is not a
// snapshot.
bool VerifySnapshot(const std::string &snapshot);

}  // namespace nodal

#endif  // NODAL_SNAPSHOT_VERIFY_H
