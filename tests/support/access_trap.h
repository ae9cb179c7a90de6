// Calls a function before each access to a file that the process maps, so that a test can change the file between any
// two accesses.
//
// While an AccessTrap exists, files that are mapped as shared are inaccessible. An access raises SIGSEGV; the trap
// calls the function, makes the mapping accessible, and lets the processor execute a single instruction. Link
// access_trap.cc into the program itself: it replaces mmap and munmap.
#ifndef TESTS_SUPPORT_ACCESS_TRAP_H
#define TESTS_SUPPORT_ACCESS_TRAP_H

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace testing_support {

class AccessTrap {
 public:
  // Single-stepping is implemented for x86-64 only.
#ifdef __x86_64__
  static constexpr bool kIsSupported = true;
#else
  static constexpr bool kIsSupported = false;
#endif

  // `beforeAccess` runs in a signal handler. It gets the number of the access, counted from 0.
  explicit AccessTrap(std::function<void(size_t access)> beforeAccess);
  ~AccessTrap();
  AccessTrap(const AccessTrap &) = delete;
  AccessTrap &operator=(const AccessTrap &) = delete;

  size_t accesses() const { return accesses_; }

  // Lets all later accesses through, without calling the function. The function may call this.
  void Stop();

  // Called by the replacement of mmap.
  void Trap(uintptr_t start, size_t size);

 private:
  static void HandleFault(int signal, siginfo_t *info, void *context);
  static void HandleStep(int signal, siginfo_t *info, void *context);

  std::function<void(size_t access)> beforeAccess_;
  size_t accesses_ = 0;
  bool isStopped_ = false;
  struct sigaction previousFault_;
  struct sigaction previousStep_;
};

}  // namespace testing_support

#endif  // TESTS_SUPPORT_ACCESS_TRAP_H
