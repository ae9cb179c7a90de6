// Reads terminal sessions in documents.
#ifndef TESTS_SUPPORT_TRANSCRIPT_H
#define TESTS_SUPPORT_TRANSCRIPT_H

#include <string>
#include <string_view>
#include <vector>

namespace testing_support {

struct Example {
  std::string command;
  std::string output;
};

// A command follows "$ " and continues on lines after "> "; its output is below it. A text that does not start with a
// command has no examples.
std::vector<Example> ReadTranscript(std::string_view text);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_TRANSCRIPT_H
