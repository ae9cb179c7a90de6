// Keeps exceptions inside the library.
#ifndef PLATKIT_API_ANSWER_H
#define PLATKIT_API_ANSWER_H

#include <new>
#include <stdexcept>

#include "platkit/status.h"

namespace platkit {

// Calls `call` and returns its status. Returns HVC_NO_MEMORY if a container in the call could not allocate memory.
//
// Each operation of the C interface that allocates calls the rest of the library through Answer: its callers may be
// written in C, or compiled without exceptions. The library throws no exceptions of its own. Its containers throw
// std::bad_alloc, and std::length_error for a size that no allocation can have.
template <typename Call>
HVC_ReturnStatus Answer(Call call) noexcept {
  try {
    return call();
  } catch (const std::bad_alloc &) {
    return HVC_NO_MEMORY;
  } catch (const std::length_error &) {
    return HVC_NO_MEMORY;
  }
}

}  // namespace platkit

#endif  // PLATKIT_API_ANSWER_H
