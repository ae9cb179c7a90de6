#include "tests/fuzz/captured_output.h"

#include <cerrno>
#include <utility>

namespace fuzz {

TextStream::TextStream() {
  cookie_io_functions_t functions = {};
  functions.write = Write;
  functions.close = Close;
  file_ = fopencookie(this, "w", functions);
}

TextStream::~TextStream() {
  if (!closed_) std::fclose(file_);
}

std::string TextStream::Take() {
  if (!closed_) std::fflush(file_);
  return std::exchange(text_, {});
}

ssize_t TextStream::Write(void *stream, const char *bytes, size_t size) {
  auto *self = static_cast<TextStream *>(stream);
  if (self->broken_) {
    errno = ENOSPC;
    return 0;
  }
  self->text_.append(bytes, size);
  return static_cast<ssize_t>(size);
}

int TextStream::Close(void *stream) {
  static_cast<TextStream *>(stream)->closed_ = true;
  return 0;
}

// The C library lets a program replace its standard streams.
CapturedOutput::CapturedOutput()
    : savedOutput_(std::exchange(stdout, output.file())), savedErrors_(std::exchange(stderr, errors.file())) {}

CapturedOutput::~CapturedOutput() {
  stdout = savedOutput_;
  stderr = savedErrors_;
}

bool IsFitForTerminal(std::string_view text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if ((c < 0x20 && c != '\n' && c != '\t') || c == 0x7f) return false;
    // U+0080 to U+009F, which are control characters too
    if (c == 0xc2 && i + 1 < text.size() && (static_cast<unsigned char>(text[i + 1]) & 0xe0) == 0x80) return false;
  }
  return true;
}

}  // namespace fuzz
