// /proc/PID/status: the identity of a process, and its memory.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_STATUS_H
#define PLATKIT_LINUX_KERNEL_PROCESS_STATUS_H

#include <cstdint>
#include <optional>
#include <string>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// The highest number that is accepted as a PID. PIDs of Linux are below 2^22.
inline constexpr int64_t kMaxPid = 4'999'999;

// Distinguishes a process from earlier and later ones with the same PID.
struct ProcessIdentity {
  uint64_t inode = 0;   // inode of the status file; 0 if this user may not open it
  uint64_t seenAt = 0;  // a time before the file was opened, in nanoseconds since boot
};

// The user of a process. A process without privileges cannot change these values.
struct ProcessUser {
  std::optional<uint64_t> realID;  // Uid: the first number; nullopt if the line is missing or malformed
  bool isRootOnly = false;         // Uid: the real, effective, saved and file-system IDs are all 0
  bool isContained = false;        // NSpid: the process is in a PID namespace below the one of this /proc
};

// Amounts are in KB. If a line is missing, a figure of the first group is unreadable, and a figure of the second group
// is absent.
struct ProcessStatus {
  ProcessIdentity identity;
  std::string name = "?";  // Name
  uint64_t threads = 0;    // Threads
  ProcessUser user;

  Figure addressSpace;            // VmSize
  Figure data, stack;             // VmData, VmStk: writable address space, not memory
  Figure resident, residentPeak;  // VmRSS, VmHWM
  Figure hugePages;               // HugetlbPages, which are not resident; 0 on a kernel without huge pages
  Figure pageTables;              // VmPTE

  // Closer to the memory that the process may use than VmSize, which includes address space that is only reserved.
  Figure size() const { return data + stack; }

  Figure anonymous, files, sharedMemory;  // RssAnon, RssFile, RssShmem: the parts of VmRSS
  Figure locked, pinned, swapped;         // VmLck, VmPin, VmSwap
  Figure transparentHugePages;            // THP_enabled: 0 never, 1 possible
};

// HVC_NOT_FOUND if the process does not exist or has no memory of its own: a kernel thread, a zombie, or a thread other
// than the first. If the file cannot be read for another reason, all missing figures are unreadable, and the result is
// HVC_OK.
[[nodiscard]] HVC_ReturnStatus ReadProcessStatus(HostFiles &files, int64_t pid, ProcessStatus &status);

// Reads Tgid: the PID of the process that a thread belongs to.
[[nodiscard]] HVC_ReturnStatus ReadProcessOfThread(HostFiles &files, int64_t thread, int64_t &pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_STATUS_H
