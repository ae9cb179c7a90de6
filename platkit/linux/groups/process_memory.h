// Splits the memory of a VM's process into the guest's part and overhead.
#ifndef PLATKIT_LINUX_GROUPS_PROCESS_MEMORY_H
#define PLATKIT_LINUX_GROUPS_PROCESS_MEMORY_H

#include "platkit/linux/kernel/process_status.h"

namespace platkit {

// All in KB.

// The memory of the process. VmRSS excludes huge pages of pools, so they are added.
inline Figure Consumed(const ProcessStatus &status) { return status.resident + status.hugePages; }

// A lower bound of the peak, because Linux records no peak of huge pages.
inline Figure ConsumedPeak(const ProcessStatus &status) { return status.residentPeak + status.hugePages; }

// The guest's part of a VM's process. Pages of files belong to the VMM.
inline Figure GuestPart(const ProcessStatus &status, Figure guestMemory) {
  return Lower((status.anonymous + status.sharedMemory).IfAbsent(status.resident) + status.hugePages, guestMemory);
}

// The rest of a VM's process, and the page tables for all of it.
inline Figure VmOverhead(const ProcessStatus &status, Figure guestMemory) {
  return Consumed(status) - GuestPart(status, guestMemory) + status.pageTables;
}

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_PROCESS_MEMORY_H
