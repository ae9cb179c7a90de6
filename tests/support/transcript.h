// What a terminal showed, as documents have it.
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

// A command stands behind "$ ", and goes on in lines behind "> "; what it prints is below it. A text that does not
// begin with a command has none.
std::vector<Example> ReadTranscript(std::string_view text);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_TRANSCRIPT_H
