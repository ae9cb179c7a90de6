// Finds the guest memory and the own control group of a VM.
#ifndef PLATKIT_LINUX_GROUPS_VM_GROUPS_H
#define PLATKIT_LINUX_GROUPS_VM_GROUPS_H

#include "platkit/linux/groups/group_tree.h"
#include "platkit/linux/groups/process_memory.h"

namespace platkit {

class VmGroups {
 public:
  VmGroups(HostFiles &files, GroupReader &reader, GroupTree &tree) : files_(files), reader_(reader), tree_(tree) {}

  // The memory of a VM's guest in KB. The command line gives it, unless it gives more than the process has mapped;
  // otherwise the largest mapping gives it, or QEMU's default. If the command line leaves room for more memory, the
  // mappings show memory that was plugged in later. Absent if nothing tells.
  Figure GuestSize(Group &vm, const ProcessStatus &status);

  // What is known of the guest's memory, for GuestPart and VmOverhead.
  GuestMemory Guest(Group &vm, const ProcessStatus &status);

  // The control group of the VM if it contains no other process with memory, so that its figures are the VM's. Null if
  // there is none. `process` may be a group of any kind; only a VM has an own control group.
  Group *OwnControlGroup(Group &process);

 private:
  Figure HotPlugged(Group &vm);
  const GuestMappings &Mappings(Group &vm);
  Fresh<bool> IsOwnControlGroup(const Group &vm, const Group &group);
  bool IsAlone(const Group &vm, const Group &top, Clock::Time &readAt);
  bool HasOtherMember(const Group &vm, const Group &group);
  bool ListsOtherProcess(const Group &vm, const std::string &folder);

  HostFiles &files_;
  GroupReader &reader_;
  GroupTree &tree_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_VM_GROUPS_H
