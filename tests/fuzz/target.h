// A fuzz target: a function that accepts any bytes. libFuzzer calls it with generated inputs; replay_main.cc calls it
// with the inputs in corpus/.
#ifndef TESTS_FUZZ_TARGET_H
#define TESTS_FUZZ_TARGET_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fuzz {

inline std::string_view Text(const uint8_t *data, size_t size) { return {reinterpret_cast<const char *>(data), size}; }

[[noreturn]] inline void Fail(const char *file, int line, const char *what) {
  std::fprintf(stderr, "%s:%d: this does not hold: %s\n", file, line, what);
  std::abort();
}

}  // namespace fuzz

// Ends the process, as a sanitizer does, if a property does not hold.
#define REQUIRE(property) \
  if (!(property)) fuzz::Fail(__FILE__, __LINE__, #property)

#endif  // TESTS_FUZZ_TARGET_H
