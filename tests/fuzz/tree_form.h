// A short binary form of snapshots: a line with the host name, then nodes with their instances and values. Most changes
// to an input give another valid input.
#ifndef TESTS_FUZZ_TREE_FORM_H
#define TESTS_FUZZ_TREE_FORM_H

#include <string>
#include <string_view>

namespace fuzz {

// Writes the snapshot that the input describes. Returns false if the input describes no snapshot.
bool WriteTree(std::string_view input, const std::string &path);

}  // namespace fuzz

#endif  // TESTS_FUZZ_TREE_FORM_H
