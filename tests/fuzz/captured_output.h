// What a program that runs in this process writes.
#ifndef TESTS_FUZZ_CAPTURED_OUTPUT_H
#define TESTS_FUZZ_CAPTURED_OUTPUT_H

#include <cstdio>
#include <string>
#include <string_view>

namespace fuzz {

// A stream whose bytes go into a text, and to no descriptor.
class TextStream {
 public:
  TextStream();
  ~TextStream();
  TextStream(const TextStream &) = delete;
  TextStream &operator=(const TextStream &) = delete;

  FILE *file() const { return file_; }
  // All that was written so far.
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

// While it lives, standard output and standard error are captured. The descriptors stay what they are, so that a
// sanitizer's report and the fuzzer's own lines still reach their reader.
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

// Whether nothing in the text moves a cursor or changes a terminal's state: names come from outside.
bool IsFitForTerminal(std::string_view text);

}  // namespace fuzz

#endif  // TESTS_FUZZ_CAPTURED_OUTPUT_H
