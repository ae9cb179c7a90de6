#include "tests/support/access_trap.h"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

namespace testing_support {
namespace {

struct Mapping {
  uintptr_t start;
  size_t size;
};

AccessTrap *armed = nullptr;
std::array<Mapping, 8> mappings;

void Protect(int protection) {
  for (const Mapping &mapping : mappings) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    if (mapping.size > 0) mprotect(reinterpret_cast<void *>(mapping.start), mapping.size, protection);
  }
}

bool IsTrapped(uintptr_t address) {
  for (const Mapping &mapping : mappings) {
    if (address - mapping.start < mapping.size) return true;
  }
  return false;
}

void Forget(uintptr_t start) {
  for (Mapping &mapping : mappings) {
    if (mapping.start == start) mapping = {};
  }
}

void SetSingleStep([[maybe_unused]] void *context, [[maybe_unused]] bool isOn) {
#ifdef __x86_64__
  constexpr greg_t kTrapFlag = 0x100;
  greg_t &flags = static_cast<ucontext_t *>(context)->uc_mcontext.gregs[REG_EFL];
  flags = isOn ? flags | kTrapFlag : flags & ~kTrapFlag;
#endif
}

}  // namespace

AccessTrap::AccessTrap(std::function<void(size_t access)> beforeAccess) : beforeAccess_(std::move(beforeAccess)) {
  if (!kIsSupported || armed != nullptr) std::abort();
  struct sigaction action = {};
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  action.sa_sigaction = HandleFault;
  sigaction(SIGSEGV, &action, &previousFault_);
  action.sa_sigaction = HandleStep;
  sigaction(SIGTRAP, &action, &previousStep_);
  armed = this;
}

// Protects the last page as a whole, because vector instructions read beyond the end of the file.
void AccessTrap::Trap(uintptr_t start, size_t size) {
  if (isStopped_) return;
  const auto page = static_cast<size_t>(getpagesize());
  size = (size + page - 1) / page * page;
  for (Mapping &mapping : mappings) {
    if (mapping.size > 0) continue;
    mapping = {start, size};
    Protect(PROT_NONE);
    return;
  }
  std::abort();
}

AccessTrap::~AccessTrap() {
  Stop();
  armed = nullptr;
  sigaction(SIGSEGV, &previousFault_, nullptr);
  sigaction(SIGTRAP, &previousStep_, nullptr);
}

void AccessTrap::Stop() {
  isStopped_ = true;
  Protect(PROT_READ);
  mappings = {};
}

void AccessTrap::HandleFault(int, siginfo_t *info, void *context) {
  const int error = errno;
  if (!IsTrapped(reinterpret_cast<uintptr_t>(info->si_addr))) {
    sigaction(SIGSEGV, &armed->previousFault_, nullptr);  // the access fails again
    return;
  }
  armed->beforeAccess_(armed->accesses_++);
  Protect(PROT_READ);
  SetSingleStep(context, !armed->isStopped_);
  errno = error;
}

void AccessTrap::HandleStep(int, siginfo_t *, void *context) {
  const int error = errno;
  SetSingleStep(context, false);
  Protect(PROT_NONE);
  errno = error;
}

}  // namespace testing_support

extern "C" {

void *mmap(void *start, size_t size, int protection, int flags, int fd, off_t offset) noexcept {
  using namespace testing_support;
  const long mapped = syscall(SYS_mmap, start, size, protection, flags, fd, offset);
  const bool isSharedFile = fd >= 0 && (flags & MAP_SHARED) != 0;
  if (armed != nullptr && mapped != -1 && isSharedFile) armed->Trap(static_cast<uintptr_t>(mapped), size);
  return reinterpret_cast<void *>(mapped);  // NOLINT(performance-no-int-to-ptr)
}

int munmap(void *start, size_t size) noexcept {
  using namespace testing_support;
  if (armed != nullptr) Forget(reinterpret_cast<uintptr_t>(start));
  return static_cast<int>(syscall(SYS_munmap, start, size));
}

}  // extern "C"
