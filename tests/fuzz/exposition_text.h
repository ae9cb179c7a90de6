// A strict parser of Prometheus' text format.
#ifndef TESTS_FUZZ_EXPOSITION_TEXT_H
#define TESTS_FUZZ_EXPOSITION_TEXT_H

#include <set>
#include <string>
#include <string_view>

namespace fuzz {

// Parses the text in the form that nodal prints: each metric has a HELP line, a TYPE line and then its samples, and
// "# EOF" is the last line. Returns the first line that does not have this form or repeats a sample, or a message if
// that line is empty or the last line is missing. Returns an empty text if there is no such error. Adds the names of
// the metrics to `names`.
std::string FindMalformedLine(std::string_view text, std::set<std::string, std::less<>> &names);

}  // namespace fuzz

#endif  // TESTS_FUZZ_EXPOSITION_TEXT_H
