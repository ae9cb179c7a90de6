// A process, as its status file tells of it.
#ifndef PLATKIT_LINUX_PROCESS_H
#define PLATKIT_LINUX_PROCESS_H

#include <cstdint>
#include <string>

#include "platkit/linux/figure.h"
#include "platkit/linux/host_files.h"

namespace platkit {

// Amounts are in KB. Those that a process must have are unreadable where the file does not give them.
struct ProcessStatus {
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

// The limit of a process' address space, in bytes; absent if the process is gone.
Figure ReadAddressSpaceLimit(HostFiles &files, int64_t pid);

// Pages that the kernel moved to where the process' first thread uses them; absent if this kernel does not count them.
Figure ReadNumaMoved(HostFiles &files, int64_t pid);

// The process that a thread belongs to.
[[nodiscard]] HVC_ReturnStatus ReadProcessOfThread(HostFiles &files, int64_t thread, int64_t &pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_PROCESS_H
