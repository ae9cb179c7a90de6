#include "platkit/str.h"

#include <cstring>

extern "C" char *Str_Strcpy(char *destination, const char *source, size_t size) {
  if (destination == nullptr || size == 0) return destination;
  const size_t length = source == nullptr ? 0 : strnlen(source, size - 1);
  if (length > 0) std::memcpy(destination, source, length);
  destination[length] = '\0';
  return destination;
}
