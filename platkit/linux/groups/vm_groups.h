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

  // The memory of a VM's guest in KB. The command line gives it, unless it gives more than the process has mapped;
  // otherwise the largest mapping gives it, or QEMU's default. If the command line leaves room for more memory, the
  // mappings show memory that was plugged in later. Absent if unknown.
  Figure GuestSize(Group &vm, const ProcessStatus &status);

  // What is known of the guest's memory, for GuestPart and VmOverhead.
  GuestMemory Guest(Group &vm, const ProcessStatus &status);

  // The VM's memory that is not its guest's, in KB: the monitor's, and in an own control group also that of helper
  // processes and of the kernel.
  Figure Overhead(Group &vm, const ProcessStatus &status);

  // The control group whose figures are the VM's: the one that a management tool created for it, unless that contains
  // another VM; else its control group if it contains no other process with memory. Null if there is none. `process`
  // may be a group of any kind; only a VM has an own control group.
  Group *OwnControlGroup(Group &process);

 private:
  // The other processes in a VM's control group.
  struct Others {
    int64_t vm;
    size_t limit;
    std::vector<int64_t> pids = {};

    // False if there are more than `limit`. Does not add the VM.
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
