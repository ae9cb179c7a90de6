// Builds snapshots for tests from JSON.
#ifndef TESTS_SUPPORT_SNAPSHOT_H
#define TESTS_SUPPORT_SNAPSHOT_H

#include <filesystem>
#include <string>

namespace testing_support {

// Builds the file `snapshot` from the file `json`. On failure, throws with nodal's messages.
void BuildSnapshot(const std::filesystem::path &json, const std::filesystem::path &snapshot);

// As BuildSnapshot, from JSON in a string.
void BuildSnapshotFromText(const std::string &json, const std::filesystem::path &snapshot);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_SNAPSHOT_H
