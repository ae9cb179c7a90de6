// Finds the guest memory and the own control group of a VM.
#ifndef PLATKIT_LINUX_GROUPS_VM_GROUPS_H
#define PLATKIT_LINUX_GROUPS_VM_GROUPS_H

#include <cstdint>
#include <string>
#include <vector>

#include "platkit/linux/groups/group_tree.h"
#include "platkit/linux/groups/process_memory.h"

namespace platkit {

class VmGroups {
 public:
  VmGroups(HostFiles &files, GroupReader &reader, GroupTree &tree) : files_(files), reader_(reader), tree_(tree) {}

  // The size of the guest's memory in KB. If the process has mapped at least the size on the command line, it is that
  // size, or the size of the mappings if memory was plugged in later. The mappings count only if the command line
  // leaves room for more memory and no device has large mappings of its own. If the process has mapped less, it is the
  // largest mapping, or QEMU's default if that is in effect and larger. Absent if unknown.
  Figure GuestSize(Group &vm, const ProcessStatus &status);

  // The known facts about the guest's memory, for GuestPart and VmOverhead.
  GuestMemory Guest(Group &vm, const ProcessStatus &status);

  // The VM's memory that is not its guest's, in KB: the monitor's memory. If the VM has a control group of its own, the
  // memory of the group's helper processes and of the kernel is included.
  Figure Overhead(Group &vm, const ProcessStatus &status);

  // Returns the control group whose figures are the VM's, or null if there is none. It is the group that a management
  // tool created for the VM, unless this group contains another VM. Otherwise, it is the VM's control group if this
  // group contains no other process with memory. `process` may be a group of any kind, but only a VM has a control
  // group of its own.
  Group *OwnControlGroup(Group &process);

 private:
  // The other processes in a VM's control group.
  struct Others {
    int64_t vm;
    size_t limit;
    std::vector<int64_t> pids = {};

    // Adds a process unless it is the VM. Returns false if there are more than `limit` processes.
    bool Add(int64_t pid) {
      if (pid != vm) pids.push_back(pid);
      return pids.size() <= limit;
    }
  };

  Figure HotPlugged(Group &vm);
  const GuestMappings &Mappings(Group &vm);
  Figure Charged(Group &own);
  Fresh<int64_t> FindOwnControlGroup(const Group &vm);
  const Group *ControlGroupOf(const Group &group);
  const Group *ScopeOf(const Group &vm);
  bool IsAlone(const Group &vm, const Group &top, Clock::Time &readAt);
  bool HasNoOtherVm(const Group &vm, const Group &top, Clock::Time &readAt);
  bool FindOthers(const Group &top, Others &others, Clock::Time &readAt);
  bool IsListed(const Group &group) const;
  bool AddListed(const Group &group, Others &others, std::vector<const Group *> &groups);
  bool AddUnlisted(const std::string &folder, Others &others, std::vector<std::string> &folders);

  HostFiles &files_;
  GroupReader &reader_;
  GroupTree &tree_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_VM_GROUPS_H
