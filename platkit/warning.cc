#include "platkit/warning.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>

extern "C" void Warning(const char *format, ...) {
  const int savedErrno = errno;
  std::fflush(stdout);
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
  errno = savedErrno;
}
