// What the memory of a process is used for: how much of a VM's process is its guest's, and how much is overhead.
#ifndef PLATKIT_LINUX_GROUPS_PROCESS_MEMORY_H
#define PLATKIT_LINUX_GROUPS_PROCESS_MEMORY_H

#include "platkit/linux/kernel/process_status.h"

namespace platkit {

// All in KB.

// The memory that the process has. Huge pages of pools are not resident, so they are added.
inline Figure Consumed(const ProcessStatus &status) { return status.resident + status.hugePages; }

// A lower bound of its peak: Linux keeps no peak of huge pages.
inline Figure ConsumedPeak(const ProcessStatus &status) { return status.residentPeak + status.hugePages; }

// The guest's part of a VM's process. Pages of files belong to the programs of the process.
inline Figure GuestPart(const ProcessStatus &status, Figure guestMemory) {
  return Lower((status.anonymous + status.sharedMemory).IfAbsent(status.resident) + status.hugePages, guestMemory);
}

// The rest of a VM's process, and the page tables for all of it.
inline Figure VmOverhead(const ProcessStatus &status, Figure guestMemory) {
  return Consumed(status) - GuestPart(status, guestMemory) + status.pageTables;
}

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_PROCESS_MEMORY_H
