// A short binary form of snapshots, in which most changes give another snapshot: the host name up to the end of the
// line, then nodes with their instances and values.
#ifndef TESTS_FUZZ_TREE_FORM_H
#define TESTS_FUZZ_TREE_FORM_H

#include <string>
#include <string_view>

namespace fuzz {

// Writes the snapshot that the input describes. Returns false if there is none.
bool WriteTree(std::string_view input, const std::string &path);

}  // namespace fuzz

#endif  // TESTS_FUZZ_TREE_FORM_H
