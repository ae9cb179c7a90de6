// A snapshot in a form that is short, and of which few changes make none at all: the host's name up to the end of the
// line, then nodes with their instances and what is stored there.
#ifndef TESTS_FUZZ_TREE_FORM_H
#define TESTS_FUZZ_TREE_FORM_H

#include <string>
#include <string_view>

namespace fuzz {

// Writes the snapshot of the input. False if there is none.
bool WriteTree(std::string_view input, const std::string &path);

}  // namespace fuzz

#endif  // TESTS_FUZZ_TREE_FORM_H
