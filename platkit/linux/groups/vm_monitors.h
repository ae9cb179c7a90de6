// Figures that the monitors of virtual machines report: the balloon, the guest's own view of its memory, and
// migrations.
//
// The monitors are not queried, because a monitor that does not answer would block the report. The figures come from
// the file that nodal-guests(1) writes, and from the status files of libvirt.
#ifndef PLATKIT_LINUX_GROUPS_VM_MONITORS_H
#define PLATKIT_LINUX_GROUPS_VM_MONITORS_H

#include <vector>

#include "platkit/linux/groups/vm_groups.h"
#include "platkit/linux/kernel/guests_file.h"

namespace platkit {

// Amounts are in KB. Unreadable figures are unknown.
struct Balloon {
  Figure isActive;  // 1 if the guest has a balloon driver, else 0
  Figure size;
  Figure target;
};

// In KB, as reported by the guest. If the guest does not report a figure, or reports an impossible one, `total` is
// absent and `needed` is unreadable.
struct GuestUse {
  Figure total;   // memory that the guest's kernel manages
  Figure needed;  // the part of it that the guest cannot free without swapping
};

class VmMonitors {
 public:
  VmMonitors(HostFiles &files, VmGroups &vms) : files_(files), vms_(vms) {}

  // All figures are 0 for a VM without a balloon device.
  Balloon BalloonOf(Group &vm);

  GuestUse UseOf(Group &vm, const ProcessStatus &status);

  // The memory that a migration, a save or a dump in progress has written, in KB; 0 if there is none.
  Figure CheckpointOf(Group &vm);

 private:
  const GuestFigures &FiguresOf(const Group &vm);
  const LibvirtStatus &StatusOf(Group &vm);

  HostFiles &files_;
  VmGroups &vms_;
  Fresh<std::vector<GuestFigures>> guests_;
  Fresh<bool> hasLibvirt_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_VM_MONITORS_H
