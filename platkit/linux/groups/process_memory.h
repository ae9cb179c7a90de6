// Splits the memory of a VM's process into the guest's part and overhead.
#ifndef PLATKIT_LINUX_GROUPS_PROCESS_MEMORY_H
#define PLATKIT_LINUX_GROUPS_PROCESS_MEMORY_H

#include "platkit/linux/groups/guest_backing.h"
#include "platkit/linux/kernel/process_status.h"

namespace platkit {

// All amounts are in KB.

// The memory of the process. VmRSS excludes huge pages of pools, so they are added.
inline Figure Consumed(const ProcessStatus &status) { return status.resident + status.hugePages; }

// The peak of the process's memory. It is unknown if the process has huge pages of pools: VmHWM excludes them, and
// Linux records no peak of them.
inline Figure ConsumedPeak(const ProcessStatus &status) {
  return status.hugePages == Figure(0) ? status.residentPeak : Figure::Unreadable();
}

// The known facts about a guest's memory.
struct GuestMemory {
  Figure size;  // absent if unknown
  GuestBacking backing = GuestBacking::kAnonymous;
  Figure mapped;  // the memory that KVM has mapped for the guest; absent if unknown
};

// The guest's part of a VM's process. It is exact for GuestBacking::kHugetlb, and for kSharedMemory unless the
// monitor has shared memory of its own. Otherwise all pages of the kind that the guest's memory has are an upper bound,
// because some are the monitor's. The guest's size is another upper bound.
//
// KVM's count is a lower bound, because KVM drops mappings now and then. The monitor's anonymous pages give another
// lower bound: they are at most the process's writable address space minus the guest's memory. If only the guest makes
// its memory resident, the higher lower bound is closer to the guest's part than the upper bound.
inline Figure GuestPart(const ProcessStatus &status, const GuestMemory &guest) {
  Figure pages = guest.backing == GuestBacking::kHugetlb ? Figure(0) : status.sharedMemory;
  if (guest.backing == GuestBacking::kAnonymous) pages = status.anonymous + status.sharedMemory;
  if (guest.backing == GuestBacking::kFiles) pages = status.resident;
  const Figure most = Lower(pages.IfAbsent(status.resident) + status.hugePages, guest.size);
  const bool isCounted = !guest.mapped.isAbsent() && guest.mapped != Figure::Unreadable();
  if (guest.backing != GuestBacking::kAnonymous || !isCounted) return most;
  const Figure monitors = status.size() - guest.size;
  return Lower(Higher(guest.mapped, status.anonymous - monitors + status.hugePages), most);
}

// The rest of the memory of a VM's process, plus all of the process's page tables.
inline Figure VmOverhead(const ProcessStatus &status, const GuestMemory &guest) {
  return Consumed(status) - GuestPart(status, guest) + status.pageTables;
}

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_PROCESS_MEMORY_H
