#include "platkit/snapshot/mapping_guard.h"

#include <sys/mman.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <mutex>

namespace platkit::snapshot {
namespace {

// A guarded mapping, or an unused slot of size 0. The handler can read a slot while another thread changes it. The
// version is therefore odd during a change, and different after it.
struct Slot {
  std::atomic<uint32_t> version = 0;
  std::atomic<uintptr_t> start = 0;
  std::atomic<size_t> size = 0;
  std::atomic<bool> isDamaged = false;

  void Set(uintptr_t newStart, size_t newSize) {
    version.fetch_add(1);
    start.store(newStart);
    size.store(newSize);
    isDamaged.store(false);
    version.fetch_add(1);
  }
};

static_assert(std::atomic<uintptr_t>::is_always_lock_free, "signal handlers must not wait for a lock");

std::array<Slot, MappingGuard::kMaxMappings> slots;

// Serializes the changes to the slots and to the process's SIGBUS handler. The handler itself takes no lock.
std::mutex changes;
size_t usedSlots = 0;
bool isInstalled = false;
struct sigaction previous;
std::atomic<bool> isPreviousReset = false;

struct Mapping {
  uintptr_t start;
  size_t size;

  bool Contains(uintptr_t address) const { return address - start < size; }
};

// Returns size 0 for a slot that another thread is changing. That slot cannot contain the mapping that the faulting
// thread reads.
Mapping Load(const Slot &slot) {
  const uint32_t version = slot.version.load();
  const Mapping mapping = {slot.start.load(), slot.size.load()};
  const bool isStable = version % 2 == 0 && slot.version.load() == version;
  return isStable ? mapping : Mapping{0, 0};
}

// Replaces the guarded mapping that contains the address with zeros. Returns false if there is none, or on failure. All
// pages are replaced at once: one call for each page could exceed the kernel's limit on mappings.
bool ReplaceByZeros(uintptr_t address) {
  for (Slot &slot : slots) {
    const Mapping mapping = Load(slot);
    if (!mapping.Contains(address)) continue;
    void *start = reinterpret_cast<void *>(mapping.start);  // NOLINT(performance-no-int-to-ptr)
    slot.isDamaged.store(true);
    constexpr int kFlags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED | MAP_NORESERVE;
    return mmap(start, mapping.size, PROT_READ, kFlags, -1, 0) == start;
  }
  return false;
}

// Whether the signal reports a failed access of this thread. Other signals were sent by a process, or report a memory
// error before any access (BUS_MCEERR_AO). Their si_addr is undefined, or an address that is not in use.
bool IsFault(const siginfo_t &info) { return info.si_code > 0 && info.si_code != BUS_MCEERR_AO; }

// Restores the default action. After the handler returns, the access fails again, or the raised signal is delivered.
void ActByDefault(int signal, bool isFault) {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
  if (!isFault) raise(signal);
}

void PassOn(int signal, siginfo_t *info, void *context) {
  const bool isReset = (previous.sa_flags & static_cast<int>(SA_RESETHAND)) != 0 && isPreviousReset.exchange(true);
  const bool hasInfo = (previous.sa_flags & SA_SIGINFO) != 0;
  if (isReset || (!hasInfo && previous.sa_handler == SIG_DFL)) {
    ActByDefault(signal, IsFault(*info));
  } else if (hasInfo) {
    previous.sa_sigaction(signal, info, context);
  } else if (previous.sa_handler != SIG_IGN) {
    previous.sa_handler(signal);
  } else if (IsFault(*info)) {
    ActByDefault(signal, true);  // the kernel does not let a process ignore a fault
  }
}

void HandleSigbus(int signal, siginfo_t *info, void *context) {
  const int error = errno;
  if (!IsFault(*info) || !ReplaceByZeros(reinterpret_cast<uintptr_t>(info->si_addr))) PassOn(signal, info, context);
  errno = error;
}

bool IsOurs(const struct sigaction &action) {
  return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == HandleSigbus;
}

bool IsHandler(const struct sigaction &action) {
  return (action.sa_flags & SA_SIGINFO) != 0 || (action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN);
}

// If the program has replaced this handler with its own, that handler may pass signals on to this one. If this handler
// were then installed again, the two would pass a signal to each other forever.
//
// The handler runs with the signal mask that the previous handler expects, and on the alternate stack if there is one.
bool Install() {
  struct sigaction current;
  if (sigaction(SIGBUS, nullptr, &current) != 0) return false;
  if (IsOurs(current) || (isInstalled && IsHandler(current))) return true;
  previous = current;
  isPreviousReset.store(false);
  struct sigaction action = {};
  action.sa_sigaction = HandleSigbus;
  action.sa_mask = previous.sa_mask;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | (previous.sa_flags & (SA_NODEFER | SA_RESTART));
  return sigaction(SIGBUS, &action, nullptr) == 0;
}

// Returns false and changes nothing if the program has installed its own handler later: that handler may call this one.
bool Uninstall() {
  struct sigaction current;
  return sigaction(SIGBUS, nullptr, &current) == 0 && IsOurs(current) && sigaction(SIGBUS, &previous, nullptr) == 0;
}

}  // namespace

HVC_ReturnStatus MappingGuard::Protect(const void *start, size_t size) {
  if (slot_ != kNoSlot) return HVC_ALREADY_EXISTS;
  const std::lock_guard lock(changes);
  size_t free = 0;
  while (free < slots.size() && slots[free].size.load() != 0)
    ++free;
  if (free == slots.size()) return HVC_LIMIT_EXCEEDED;
  if (!Install()) return HVC_IO_ERROR;
  isInstalled = true;
  slots[free].Set(reinterpret_cast<uintptr_t>(start), size);
  ++usedSlots;
  slot_ = free;
  return HVC_OK;
}

void MappingGuard::Release() {
  if (slot_ == kNoSlot) return;
  const std::lock_guard lock(changes);
  slots[slot_].Set(0, 0);
  slot_ = kNoSlot;
  if (--usedSlots == 0 && Uninstall()) isInstalled = false;
}

bool MappingGuard::IsDamaged() const {
  return slot_ != kNoSlot && slots[slot_].isDamaged.load(std::memory_order_relaxed);
}

}  // namespace platkit::snapshot
