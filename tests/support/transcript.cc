#include "tests/support/transcript.h"

#include "tests/support/text.h"

namespace testing_support {

std::vector<Example> ReadTranscript(std::string_view text) {
  std::vector<Example> examples;
  for (const std::string &line : Lines(text)) {
    if (line.starts_with("$ ")) {
      examples.push_back({line.substr(2), ""});
    } else if (examples.empty()) {
      break;
    } else if (line.starts_with("> ") && examples.back().output.empty()) {
      examples.back().command += '\n' + line.substr(2);
    } else {
      examples.back().output += line + '\n';
    }
  }
  return examples;
}

}  // namespace testing_support
