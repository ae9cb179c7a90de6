#include "tests/stress/allocations.h"

#include <cerrno>
#include <cstdlib>
#include <new>

// The linker replaces the calls of malloc in this program by calls of __wrap_malloc, which reaches malloc as
// __real_malloc; see CMakeLists.txt.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);
}

namespace stress {
namespace {

bool isCounting = false;
Shortage shortage;
uint64_t allocations = 0;
uint64_t failures = 0;
int64_t blocks = 0;

bool IsToFail() {
  if (!isCounting) return false;
  ++allocations;
  const bool fails =
      shortage.from != 0 && (shortage.lasts ? allocations >= shortage.from : allocations == shortage.from);
  if (fails) ++failures;
  return fails;
}

void *Counted(void *block) {
  if (block != nullptr) ++blocks;
  return block;
}

void *Fail() {
  errno = ENOMEM;
  return nullptr;
}

}  // namespace

void BeginShortage(Shortage wanted) {
  shortage = wanted;
  allocations = failures = 0;
  isCounting = true;
}

uint64_t EndShortage() {
  isCounting = false;
  return allocations;
}

uint64_t FailedAllocations() { return failures; }

int64_t BlocksInUse() { return blocks; }

}  // namespace stress

using stress::Counted;

extern "C" {

void *__wrap_malloc(size_t size) { return stress::IsToFail() ? stress::Fail() : Counted(__real_malloc(size)); }

void *__wrap_calloc(size_t count, size_t size) {
  return stress::IsToFail() ? stress::Fail() : Counted(__real_calloc(count, size));
}

void *__wrap_realloc(void *block, size_t size) {
  if (stress::IsToFail()) return stress::Fail();
  void *moved = __real_realloc(block, size);
  return block == nullptr ? Counted(moved) : moved;
}

void __wrap_free(void *block) {
  if (block != nullptr) --stress::blocks;
  __real_free(block);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

// The other forms of new and delete call these, except under the sanitizers, which replace each form.
void *operator new(size_t size) {
  void *block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void *block) noexcept { std::free(block); }
void operator delete(void *block, size_t) noexcept { std::free(block); }

void *operator new(size_t size, const std::nothrow_t &) noexcept { return std::malloc(size == 0 ? 1 : size); }
