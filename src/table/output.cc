#include "src/table/output.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platkit/warning.h"

namespace kestrel {
namespace {

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

void PutPadding(int count) {
  for (; count > 0; --count)
    putc_unlocked(' ', stdout);
}

bool OnTerminal() {
  static const bool onTerminal = isatty(STDOUT_FILENO) == 1;
  return onTerminal;
}

// Eight-bit control characters reach a terminal as two bytes, 0xc2 and the character itself.
bool IsEncodedControl(std::string_view text, size_t i) {
  return text[i] == '\xc2' && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0x80 &&
         static_cast<unsigned char>(text[i + 1]) < 0xa0;
}

// Hands out a text as a terminal may show it, byte for byte as many as it has.
template <typename Emit>
void ForEachShown(std::string_view text, Emit emit) {
  for (size_t i = 0; i < text.size(); ++i) {
    if (IsEncodedControl(text, i)) {
      emit('?');
      emit('?');
      ++i;
    } else {
      emit(IsControl(text[i]) ? '?' : text[i]);
    }
  }
}

void PutPrintable(std::string_view text) { ForEachShown(text, PutChar); }

template <typename Put>
int PutPadded(std::string_view text, int width, Put put) {
  const int length = static_cast<int>(text.size());
  PutPadding(width - length);
  put(text);
  PutPadding(-width - length);
  return std::max(length, std::abs(width));
}

// Why standard output failed first. What could not be written then is gone, so a later flush may find nothing wrong.
int failure = 0;

// To be called soon after a write, while errno still tells.
void NoteFailure() {
  if (failure == 0 && ferror_unlocked(stdout) != 0) failure = errno != 0 ? errno : EIO;
}

}  // namespace

int PutField(std::string_view text, int width) {
  return PutPadded(text, width, [](std::string_view bytes) { fwrite_unlocked(bytes.data(), 1, bytes.size(), stdout); });
}

int PutForeignField(std::string_view text, int width) {
  return OnTerminal() ? PutPadded(text, width, PutPrintable) : PutField(text, width);
}

void PutChar(char c) { putc_unlocked(c, stdout); }

void EndLine() {
  PutChar('\n');
  NoteFailure();
}

void MakeFitForTerminal(int descriptor, char *text) {
  if (isatty(descriptor) == 1) ForEachShown(text, [&text](char shown) { *text++ = shown; });
}

bool FinishOutput() {
  NoteFailure();
  if (std::fflush(stdout) != 0 && failure == 0) failure = errno;
  if (failure == 0) return true;
  Warning("Couldn't write to standard output: %s\n", std::strerror(failure));
  return false;
}

}  // namespace kestrel
