// Reads of a truncated file continue; any other SIGBUS is handled as it was before the guard.
#include "platkit/snapshot/mapping_guard.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csetjmp>
#include <csignal>
#include <memory>
#include <thread>

namespace platkit::snapshot {
namespace {

constexpr size_t kSize = 3 * 4096 - 100;

// A mapped file with the letter x in every byte.
class MappedLetters {
 public:
  MappedLetters() : fd_(memfd_create("letters", MFD_CLOEXEC)) {
    const std::string letters(kSize, 'x');
    EXPECT_EQ(write(fd_, letters.data(), letters.size()), static_cast<ssize_t>(letters.size()));
    void *mapped = mmap(nullptr, kSize, PROT_READ, MAP_SHARED, fd_, 0);
    EXPECT_NE(mapped, MAP_FAILED);
    bytes_ = static_cast<const volatile char *>(mapped);
  }
  ~MappedLetters() {
    guard.Release();
    munmap(start(), kSize);
    close(fd_);
  }
  MappedLetters(const MappedLetters &) = delete;
  MappedLetters &operator=(const MappedLetters &) = delete;

  void *start() const { return const_cast<char *>(bytes_); }
  char At(size_t i) const { return bytes_[i]; }
  void Truncate(off_t size) const { EXPECT_EQ(ftruncate(fd_, size), 0); }

  MappingGuard guard;

 private:
  int fd_;
  const volatile char *bytes_;
};

class GuardedLetters : public MappedLetters {
 public:
  GuardedLetters() { EXPECT_EQ(guard.Protect(start(), kSize), HVC_OK); }
};

struct sigaction CurrentAction() {
  struct sigaction action = {};
  EXPECT_EQ(sigaction(SIGBUS, nullptr, &action), 0);
  return action;
}

// Restores the process's handler of SIGBUS.
class Guard : public testing::Test {
 protected:
  Guard() : atStart_(CurrentAction()) { signal(SIGBUS, SIG_DFL); }
  ~Guard() override { sigaction(SIGBUS, &atStart_, nullptr); }

 private:
  struct sigaction atStart_;
};

// The signal that ends a child process that calls `act`, or 0.
template <typename Act>
int SignalOf(Act act) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    act();
    _exit(0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0) << status;
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

void ReadTruncated(const MappedLetters &letters) {
  letters.Truncate(0);
  static_cast<void>(letters.At(0));
}

TEST_F(Guard, TruncatedPagesReadAsZeros) {
  const GuardedLetters letters, other;
  letters.Truncate(4096);
  EXPECT_EQ(letters.At(0), 'x');
  EXPECT_FALSE(letters.guard.IsDamaged());
  EXPECT_EQ(letters.At(kSize - 1), '\0');
  EXPECT_TRUE(letters.guard.IsDamaged());
  EXPECT_EQ(letters.At(4096), '\0');
  EXPECT_EQ(other.At(kSize - 1), 'x');
  EXPECT_FALSE(other.guard.IsDamaged());
}

TEST_F(Guard, AFileThatGrowsAgainStaysDamaged) {
  const GuardedLetters letters;
  ReadTruncated(letters);
  letters.Truncate(kSize);
  EXPECT_EQ(letters.At(0), '\0');
  EXPECT_TRUE(letters.guard.IsDamaged());
}

TEST_F(Guard, AReleasedSlotIsUsedAgain) {
  for (size_t i = 0; i < 3 * MappingGuard::kMaxMappings; ++i) {
    const GuardedLetters letters;
    EXPECT_FALSE(letters.guard.IsDamaged());
    ReadTruncated(letters);
    EXPECT_TRUE(letters.guard.IsDamaged());
  }
}

TEST_F(Guard, TooManyMappings) {
  const MappedLetters letters;
  std::vector<std::unique_ptr<MappingGuard>> guards;
  for (size_t i = 0; i < MappingGuard::kMaxMappings; ++i) {
    guards.push_back(std::make_unique<MappingGuard>());
    ASSERT_EQ(guards.back()->Protect(letters.start(), kSize), HVC_OK);
    ASSERT_EQ(guards.back()->Protect(letters.start(), kSize), HVC_ALREADY_EXISTS);
  }
  MappingGuard further;
  EXPECT_EQ(further.Protect(letters.start(), kSize), HVC_LIMIT_EXCEEDED);
  EXPECT_FALSE(further.IsDamaged());
  guards.pop_back();
  EXPECT_EQ(further.Protect(letters.start(), kSize), HVC_OK);
}

TEST_F(Guard, TheHandlerIsInstalledOnlyWhileAMappingIsGuarded) {
  EXPECT_EQ(CurrentAction().sa_handler, SIG_DFL);
  {
    const GuardedLetters first;
    EXPECT_NE(CurrentAction().sa_handler, SIG_DFL);
    { const GuardedLetters second; }
    EXPECT_NE(CurrentAction().sa_handler, SIG_DFL);
  }
  EXPECT_EQ(CurrentAction().sa_handler, SIG_DFL);
}

sigjmp_buf escape;
volatile sig_atomic_t calls = 0;
const void *volatile faultAddress = nullptr;

void Count(int) { calls = calls + 1; }
void Escape(int) { siglongjmp(escape, 1); }
void EscapeWithAddress(int, siginfo_t *info, void *context) {
  faultAddress = context == nullptr ? nullptr : info->si_addr;
  siglongjmp(escape, 1);
}

// Reads a truncated mapping without a guard. Returns whether the program's handler left the read with siglongjmp.
bool Escapes(const MappedLetters &letters) {
  if (sigsetjmp(escape, 1) != 0) return true;
  ReadTruncated(letters);
  return false;
}

TEST_F(Guard, OtherFaultsGoToThePreviousHandler) {
  struct sigaction action = {};
  action.sa_flags = SA_SIGINFO;
  action.sa_sigaction = EscapeWithAddress;
  sigaction(SIGBUS, &action, nullptr);
  const GuardedLetters guarded;
  const MappedLetters other;
  EXPECT_TRUE(Escapes(other));
  EXPECT_EQ(faultAddress, other.start());
  EXPECT_FALSE(guarded.guard.IsDamaged());
}

TEST_F(Guard, OtherFaultsGoToAPreviousHandlerWithoutInformation) {
  signal(SIGBUS, Escape);
  const GuardedLetters guarded;
  const MappedLetters other;
  EXPECT_TRUE(Escapes(other));
}

TEST_F(Guard, AReleasedMappingIsNotGuarded) {
  signal(SIGBUS, Escape);
  const GuardedLetters guarded;
  GuardedLetters released;
  released.guard.Release();
  EXPECT_TRUE(Escapes(released));
}

TEST_F(Guard, ASentSignalGoesToThePreviousHandler) {
  signal(SIGBUS, Count);
  calls = 0;
  const GuardedLetters letters;
  raise(SIGBUS);
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(letters.guard.IsDamaged());
}

TEST_F(Guard, WithoutAPreviousHandlerTheSignalEndsTheProcess) {
  EXPECT_EQ(SignalOf([] {
              const GuardedLetters guarded;
              const MappedLetters other;
              ReadTruncated(other);
            }),
            SIGBUS);
  EXPECT_EQ(SignalOf([] {
              const GuardedLetters guarded;
              raise(SIGBUS);
            }),
            SIGBUS);
}

TEST_F(Guard, OnlySentSignalsCanBeIgnored) {
  signal(SIGBUS, SIG_IGN);
  EXPECT_EQ(SignalOf([] {
              const GuardedLetters guarded;
              raise(SIGBUS);
            }),
            0);
  EXPECT_EQ(SignalOf([] {
              const GuardedLetters guarded;
              const MappedLetters other;
              ReadTruncated(other);
            }),
            SIGBUS);
}

TEST_F(Guard, APreviousHandlerForOneSignalIsCalledOnce) {
  EXPECT_EQ(SignalOf([] {
              struct sigaction action = {};
              action.sa_flags = static_cast<int>(SA_RESETHAND);
              action.sa_handler = Count;
              sigaction(SIGBUS, &action, nullptr);
              calls = 0;
              const GuardedLetters guarded;
              raise(SIGBUS);
              if (calls != 1) _exit(1);
              raise(SIGBUS);
            }),
            SIGBUS);
}

TEST_F(Guard, ALaterHandlerOfTheProgramStays) {
  {
    const GuardedLetters letters;
    signal(SIGBUS, Count);
  }
  EXPECT_EQ(CurrentAction().sa_handler, Count);
}

TEST_F(Guard, TheHandlerIsInstalledAgainWhenTheProgramsHandlerIsGone) {
  {
    const GuardedLetters letters;
    signal(SIGBUS, Count);
  }
  signal(SIGBUS, SIG_DFL);
  const GuardedLetters letters;
  ReadTruncated(letters);
  EXPECT_TRUE(letters.guard.IsDamaged());
}

struct sigaction guardAction;
void PassOn(int signal, siginfo_t *info, void *context) {
  calls = calls + 1;
  guardAction.sa_sigaction(signal, info, context);
}

TEST_F(Guard, ALaterHandlerCanPassSignalsOn) {
  struct sigaction action = {};
  action.sa_flags = SA_SIGINFO;
  action.sa_sigaction = PassOn;
  calls = 0;
  for (int round = 0; round < 2; ++round) {
    const GuardedLetters letters;
    if (round == 0) sigaction(SIGBUS, &action, &guardAction);
    ReadTruncated(letters);
    EXPECT_TRUE(letters.guard.IsDamaged());
    EXPECT_EQ(calls, round + 1);
  }
}

TEST_F(Guard, AChildProcessIsGuarded) {
  const GuardedLetters letters;
  EXPECT_EQ(SignalOf([&] {
              ReadTruncated(letters);
              if (!letters.guard.IsDamaged()) _exit(1);
            }),
            0);
  EXPECT_FALSE(letters.guard.IsDamaged());
}

TEST_F(Guard, Threads) {
  const auto work = [] {
    for (int i = 0; i < 300; ++i) {
      const GuardedLetters letters;
      EXPECT_EQ(letters.At(0), 'x');
      ReadTruncated(letters);
      EXPECT_TRUE(letters.guard.IsDamaged());
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(CurrentAction().sa_handler, SIG_DFL);
}

}  // namespace
}  // namespace platkit::snapshot
