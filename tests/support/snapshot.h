// Snapshots for tests, from hosts written as JSON.
#ifndef TESTS_SUPPORT_SNAPSHOT_H
#define TESTS_SUPPORT_SNAPSHOT_H

#include <filesystem>
#include <string>

namespace testing_support {

// Turns the host written in `json` into the file `snapshot`. Throws, with what nodal had to say, if that fails.
void BuildSnapshot(const std::filesystem::path &json, const std::filesystem::path &snapshot);

// The same for a host in a text.
void BuildSnapshotFromText(const std::string &json, const std::filesystem::path &snapshot);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_SNAPSHOT_H
