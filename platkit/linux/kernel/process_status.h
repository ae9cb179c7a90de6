// A process, as its status file tells of it.
//
// All that the kernel has of a process is found by its PID, which is another's soon after the process has ended.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_STATUS_H
#define PLATKIT_LINUX_KERNEL_PROCESS_STATUS_H

#include <cstdint>
#include <string>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Which of those that had a PID a process is.
struct ProcessIdentity {
  uint64_t inode = 0;   // of its status file; 0 if that is not for this user
  uint64_t seenAt = 0;  // a time before the file was read, in nanoseconds since the host was started
};

// Amounts are in KB. Those that a process must have are unreadable where the file does not give them.
struct ProcessStatus {
  ProcessIdentity identity;
  std::string name = "?";
  uint64_t threads = 0;
  Figure size, sizePeak, resident, residentPeak, hugePages, pageTables;
  // Absent where the file does not give them.
  Figure anonymous, files, sharedMemory;  // the parts of the resident set
  Figure locked, pinned, swapped;
  Figure transparentHugePages;  // 0: the process never gets any, 1: it may

  // Pages of huge page pools are in nobody's resident set.
  Figure Consumed() const { return resident + hugePages; }
  // A lower bound: Linux keeps no peak of the huge pages.
  Figure ConsumedPeak() const { return residentPeak + hugePages; }

  // What a machine has of its guest in memory. Pages of files are its programs'.
  Figure GuestPart(Figure guestMemory) const {
    return Lower((anonymous + sharedMemory).IfAbsent(resident) + hugePages, guestMemory);
  }
  // What a machine holds besides, and the page tables for it all.
  Figure Overhead(Figure guestMemory) const { return Consumed() - GuestPart(guestMemory) + pageTables; }
};

// Reads the status of a process. What has no memory of its own is HVC_NOT_FOUND: a kernel thread, a zombie, a thread
// other than its process' first. A process whose status is not for this user is there, with nothing known of it.
[[nodiscard]] HVC_ReturnStatus ReadProcessStatus(HostFiles &files, int64_t pid, ProcessStatus &status);

// Whether the PID is that of the same process still: then what was read of the PID meanwhile is that process' own.
bool IsStill(HostFiles &files, int64_t pid, const ProcessIdentity &identity);

// The limit of a process' address space, in bytes; absent if the process is gone.
Figure ReadAddressSpaceLimit(HostFiles &files, int64_t pid);

// Pages that the kernel moved to where the process' first thread uses them; absent if this kernel does not count them.
Figure ReadNumaMoved(HostFiles &files, int64_t pid);

// The process that a thread belongs to.
[[nodiscard]] HVC_ReturnStatus ReadProcessOfThread(HostFiles &files, int64_t thread, int64_t &pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_STATUS_H
