// The tree of scheduler groups: finds groups by their identifiers and lists their members.
#ifndef PLATKIT_LINUX_GROUPS_GROUP_TREE_H
#define PLATKIT_LINUX_GROUPS_GROUP_TREE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platkit/linux/groups/group.h"
#include "platkit/linux/groups/group_reader.h"
#include "platkit/linux/groups/vm_detector.h"
#include "platkit/param_list.h"

namespace platkit {

// Once found, a group stays known by its identifier until a listing of its parent no longer contains it. Its figures
// are read on request; see GroupReader.
class GroupTree {
 public:
  GroupTree(HostFiles &files, GroupReader &reader, VmDetector::Limits limits = {});

  // Finds a group by its identifier. Searches the host if no listing has returned the group yet. Returns null if it
  // does not exist. The pointer is valid until a group above it is listed.
  Group *Find(int64_t id);

  // As Find(), but without reading the host.
  Group *FindKnown(int64_t id);

  // Appends the identifiers of the group's members: control groups by name, then processes by PID. The kernel group is
  // the first member of the host, and the VMM is the only member of a VM. Fails if members cannot be read:
  // HVC_NO_PERMISSION, or HVC_NAME_TOO_LONG for a control group whose path is too long.
  [[nodiscard]] HVC_ReturnStatus List(Group &group, ParamList &list);

  // Finds the members of the host or of a control group.
  [[nodiscard]] HVC_ReturnStatus FindMembers(Group &group);

  // Finds the control groups right below a group.
  [[nodiscard]] HVC_ReturnStatus FindControlGroupsBelow(Group &group);

  // Turns a process that runs a VM into a group of kind kVm with a VMM below it. Checks each process once per listing.
  void DetectVm(Group &group);

  // Returns 1 if the process runs a VM, else 0. Unreadable if its status cannot be read, or if not all of its
  // descriptors could be searched; see VmDetector.
  Figure CountVm(int64_t pid);

  // Counts the VMs of the host. Checks every process. `count` is unreadable if a process could not be checked.
  [[nodiscard]] HVC_ReturnStatus CountVms(Figure &count);

 private:
  struct Subfolder {
    std::string name;
    uint64_t inode;
  };
  class UnlistedGroups;

  Group *FindProcess(int64_t pid);
  Group *FindControlGroup(int64_t id);
  Group *FindFolder(std::string_view folder);
  Group *FindParent(std::string_view folder);
  const std::string &FolderOf(const Group &group);

  HVC_ReturnStatus ListContainer(Group &group, ParamList &list);
  HVC_ReturnStatus ReadControlGroups(Group &group);
  HVC_ReturnStatus ReadSubfolders(Group &group, std::vector<Subfolder> &found);
  int64_t AddControlGroup(Group &parent, Subfolder &&subfolder, UnlistedGroups &added);
  int64_t FreeControlGroupID(uint64_t inode) const;

  HVC_ReturnStatus ReadProcesses(Group &group);
  HVC_ReturnStatus ReadPids(Group &group, std::vector<int64_t> &pids);
  void AddProcess(Group &parent, int64_t pid, ProcessStatus &&status, Clock::Time readAt);

  void MakeVm(Group &group, QemuOptions &&options);
  void Forget(int64_t top) noexcept;
  Group *TakeMember(Group &group) noexcept;
  Group &Host() { return groups_.at(kHostGroup); }

  HostFiles &files_;
  GroupReader &reader_;
  VmDetector vmDetector_;
  std::unordered_map<int64_t, Group> groups_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GROUP_TREE_H
