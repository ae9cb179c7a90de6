// Captures the output of a program that runs in this process.
#ifndef TESTS_FUZZ_CAPTURED_OUTPUT_H
#define TESTS_FUZZ_CAPTURED_OUTPUT_H

#include <cstdio>
#include <string>
#include <string_view>

namespace fuzz {

// A stream that writes to a string instead of a descriptor.
class TextStream {
 public:
  TextStream();
  ~TextStream();
  TextStream(const TextStream &) = delete;
  TextStream &operator=(const TextStream &) = delete;

  FILE *file() const { return file_; }
  // Returns everything that was written so far.
  std::string Take();
  // From now on, every write fails.
  void Break() { broken_ = true; }

 private:
  static ssize_t Write(void *stream, const char *bytes, size_t size);
  static int Close(void *stream);

  std::string text_;
  bool broken_ = false;
  bool closed_ = false;  // by the program
  FILE *file_;
};

// Captures standard output and standard error until it is destroyed. It does not redirect the descriptors, so reports
// of the sanitizers and lines of the fuzzer are still printed.
class CapturedOutput {
 public:
  CapturedOutput();
  ~CapturedOutput();
  CapturedOutput(const CapturedOutput &) = delete;
  CapturedOutput &operator=(const CapturedOutput &) = delete;

  TextStream output;
  TextStream errors;

 private:
  FILE *const savedOutput_;
  FILE *const savedErrors_;
};

// Whether the text contains no control characters except newlines and tabs.
bool IsFitForTerminal(std::string_view text);

}  // namespace fuzz

#endif  // TESTS_FUZZ_CAPTURED_OUTPUT_H
