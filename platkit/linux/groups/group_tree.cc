#include "platkit/linux/groups/group_tree.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

bool IsControlGroupID(int64_t id) { return id >= kFirstControlGroup && id < kFirstControlGroup + kMaxControlGroups; }

// PIDs are the names of folders in /proc that are numbers.
HVC_ReturnStatus ListProc(HostFiles &files, std::vector<int64_t> &pids) {
  FolderReader folder(files, HostPath("proc"));
  for (FolderReader::Entry entry; folder.Next(entry);) {
    uint64_t pid = 0;
    if (ParseNumber(entry.name, pid) && pid > 0 && pid <= kMaxPid) pids.push_back(static_cast<int64_t>(pid));
  }
  std::sort(pids.begin(), pids.end());
  return folder.status();
}

// Reserves memory, so that inserting one identifier cannot fail.
void MakeRoomForOne(std::vector<int64_t> &ids) {
  if (ids.size() == ids.capacity()) ids.reserve(std::max<size_t>(4, 2 * ids.size()));
}

}  // namespace

GroupTree::GroupTree(HostFiles &files, GroupReader &reader, VmDetector::Limits limits)
    : files_(files), reader_(reader), vmDetector_(files, reader, limits) {
  groups_.emplace(kHostGroup, Group{.kind = GroupKind::kHost, .id = kHostGroup, .name = "host", .parentID = -1});
  groups_.emplace(kKernelGroup,
                  Group{.kind = GroupKind::kKernel, .id = kKernelGroup, .name = "kernel", .parentID = kHostGroup});
}

Group *GroupTree::FindKnown(int64_t id) {
  const auto found = groups_.find(id);
  return found == groups_.end() ? nullptr : &found->second;
}

Group *GroupTree::Find(int64_t id) {
  if (Group *known = FindKnown(id); known != nullptr) return known;
  if (id > 0 && id <= kMaxPid) return FindProcess(id);
  if (IsControlGroupID(id)) return FindControlGroup(id);
  if (id <= kFirstVmmGroup || id > kFirstVmmGroup + kMaxPid) return nullptr;
  Group *process = Find(id - kFirstVmmGroup);
  if (process != nullptr) DetectVm(*process);
  return FindKnown(id);
}

Group *GroupTree::FindProcess(int64_t pid) {
  ProcessStatus status;
  const Clock::Time now = files_.clock().Now();
  if (ReadProcessStatus(files_, pid, status) != HVC_OK) return nullptr;
  const CgroupMount &mount = reader_.mount();
  Group *parent = FindParent(mount.exists ? ReadCgroupOfProcess(files_, mount, pid) : std::string());
  AddProcess(parent == nullptr ? Host() : *parent, pid, std::move(status), now);
  return FindKnown(pid);
}

// Returns the group in which a process of the control group `folder` is listed, or null if that control group is not
// visible. A process with threads in several groups is listed by the group above these.
Group *GroupTree::FindParent(std::string_view folder) {
  Group *group = FindFolder(folder);
  while (group != nullptr && group->kind == GroupKind::kControlGroup && reader_.mount().v1Options.empty() &&
         IsThreadedCgroup(files_, group->folder)) {
    group = FindKnown(group->parentID);
  }
  return group;
}

// The group of a folder relative to the mount's top, or null.
Group *GroupTree::FindFolder(std::string_view folder) {
  Group *group = &Host();
  for (TextScanner names(folder); group != nullptr && !names.AtEnd();) {
    if (FindControlGroupsBelow(*group) != HVC_OK) return nullptr;
    const std::string_view name = names.TakeUntil('/');
    Group *next = nullptr;
    for (const int64_t id : group->controlGroups) {
      if (Group *child = FindKnown(id); child != nullptr && child->name == name) next = child;
    }
    group = next;
  }
  return group;
}

// Searches the tree of control groups until it finds the group.
Group *GroupTree::FindControlGroup(int64_t id) {
  std::vector<int64_t> unvisited = {kHostGroup};
  while (!unvisited.empty()) {
    Group *group = FindKnown(unvisited.back());
    unvisited.pop_back();
    if (group == nullptr || FindControlGroupsBelow(*group) != HVC_OK) continue;
    if (Group *found = FindKnown(id); found != nullptr) return found;
    unvisited.insert(unvisited.end(), group->controlGroups.begin(), group->controlGroups.end());
  }
  return nullptr;
}

const std::string &GroupTree::FolderOf(const Group &group) {
  return group.kind == GroupKind::kHost ? reader_.mount().top : group.folder;
}

HVC_ReturnStatus GroupTree::List(Group &group, ParamList &list) {
  DetectVm(group);
  switch (group.kind) {
    case GroupKind::kHost:
      if (const HVC_ReturnStatus status = list.Add(kKernelGroup); status != HVC_OK) return status;
      return ListContainer(group, list);
    case GroupKind::kControlGroup: return ListContainer(group, list);
    case GroupKind::kVm: return list.Add(kFirstVmmGroup + group.id);
    case GroupKind::kKernel:
    case GroupKind::kProcess:
    case GroupKind::kVmm: return HVC_OK;
  }
  return HVC_FAILURE;
}

// Fails if some members cannot be read, because an incomplete list would hide them.
HVC_ReturnStatus GroupTree::ListContainer(Group &group, ParamList &list) {
  if (const HVC_ReturnStatus status = FindMembers(group); status != HVC_OK) return status;
  list.Expect(list.params().size() + group.controlGroups.size() + group.processes.size());
  for (const std::vector<int64_t> &members : {std::cref(group.controlGroups), std::cref(group.processes)}) {
    for (const int64_t id : members) {
      if (const HVC_ReturnStatus status = list.Add(id); status != HVC_OK) return status;
    }
  }
  return HVC_OK;
}

HVC_ReturnStatus GroupTree::FindMembers(Group &group) {
  if (const HVC_ReturnStatus status = FindControlGroupsBelow(group); status != HVC_OK) return status;
  return group.processesRead.GetYounger(files_.clock(), files_.settingsAge(), [&] { return ReadProcesses(group); });
}

HVC_ReturnStatus GroupTree::FindControlGroupsBelow(Group &group) {
  return group.controlGroupsRead.GetYounger(files_.clock(), files_.settingsAge(),
                                            [&] { return ReadControlGroups(group); });
}

// New groups that the list of their parent does not contain yet. If memory runs out before it does, the destructor
// forgets these groups: otherwise, they would keep their identifiers, but no listing would find them.
class GroupTree::UnlistedGroups {
 public:
  explicit UnlistedGroups(GroupTree &tree) : tree_(tree) {}
  UnlistedGroups(const UnlistedGroups &) = delete;
  UnlistedGroups &operator=(const UnlistedGroups &) = delete;
  ~UnlistedGroups() {
    for (const int64_t id : ids_)
      tree_.Forget(id);
  }

  void MakeRoomForOne() { platkit::MakeRoomForOne(ids_); }
  void Add(int64_t id) { ids_.push_back(id); }
  void HaveBeenListed() { ids_.clear(); }

 private:
  GroupTree &tree_;
  std::vector<int64_t> ids_;
};

// Control groups that still exist keep the values read for them. If the folder cannot be read, all are forgotten.
HVC_ReturnStatus GroupTree::ReadControlGroups(Group &group) {
  std::vector<Subfolder> found;
  const HVC_ReturnStatus status = ReadSubfolders(group, found);
  std::vector<int64_t> listed;
  listed.reserve(found.size());
  const auto isGone = [&](int64_t id) {
    const Group *known = FindKnown(id);
    if (known == nullptr) return true;
    const auto same = std::ranges::lower_bound(found, known->name, {}, &Subfolder::name);
    if (same != found.end() && same->name == known->name && same->inode == known->inode) return false;
    Forget(id);
    return true;
  };
  std::erase_if(group.controlGroups, isGone);
  UnlistedGroups added(*this);
  auto next = group.controlGroups.begin();
  for (Subfolder &subfolder : found) {
    const bool isKnown = next != group.controlGroups.end() && FindKnown(*next)->name == subfolder.name;
    const int64_t id = isKnown ? *next++ : AddControlGroup(group, std::move(subfolder), added);
    if (id >= 0) listed.push_back(id);
  }
  group.controlGroups = std::move(listed);
  added.HaveBeenListed();
  return status;
}

// Lists the subfolders of a group's folder, sorted by name.
HVC_ReturnStatus GroupTree::ReadSubfolders(Group &group, std::vector<Subfolder> &found) {
  if (!reader_.mount().exists) return HVC_OK;
  FolderReader folder(files_, HostPath(FolderOf(group)));
  if (!folder.HasNoFolders()) {
    for (FolderReader::Entry entry; folder.Next(entry);) {
      if (entry.isFolder) found.push_back({std::string(entry.name), entry.inode});
    }
  }
  std::ranges::sort(found, {}, &Subfolder::name);
  // If the mount's top does not exist, as in an incomplete saved root, the host has no control groups.
  if (group.kind == GroupKind::kHost && folder.status() == HVC_NOT_FOUND) return HVC_OK;
  if (folder.status() != HVC_OK) found.clear();
  return folder.status();
}

// Returns the identifier of the new group, or -1 if none is free.
int64_t GroupTree::AddControlGroup(Group &parent, Subfolder &&subfolder, UnlistedGroups &added) {
  const int64_t id = FreeControlGroupID(subfolder.inode);
  if (id < 0) return -1;
  std::string folder = FolderOf(parent) + "/" + subfolder.name;
  added.MakeRoomForOne();
  groups_.emplace(id, Group{.kind = GroupKind::kControlGroup,
                            .id = id,
                            .name = std::move(subfolder.name),
                            .folder = std::move(folder),
                            .inode = subfolder.inode,
                            .parentID = parent.id});
  added.Add(id);
  return id;
}

// Derives the identifier from the inode number. If another group has this identifier, returns the next free one, or -1
// if none is free.
int64_t GroupTree::FreeControlGroupID(uint64_t inode) const {
  const auto first = static_cast<int64_t>(inode % static_cast<uint64_t>(kMaxControlGroups));
  for (int64_t i = 0; i < kMaxControlGroups; ++i) {
    const int64_t id = kFirstControlGroup + (first + i) % kMaxControlGroups;
    if (!groups_.contains(id)) return id;
  }
  return -1;
}

HVC_ReturnStatus GroupTree::ReadProcesses(Group &group) {
  std::vector<int64_t> pids;
  const HVC_ReturnStatus result = ReadPids(group, pids);
  for (const int64_t pid : std::exchange(group.processes, {}))
    Forget(pid);
  for (const int64_t pid : pids) {
    ProcessStatus status;
    const Clock::Time now = files_.clock().Now();
    if (ReadProcessStatus(files_, pid, status) == HVC_OK) AddProcess(group, pid, std::move(status), now);
  }
  return result;
}

// Without control groups, all processes belong to the host.
HVC_ReturnStatus GroupTree::ReadPids(Group &group, std::vector<int64_t> &pids) {
  const bool isByGroup = reader_.mount().exists;
  const HVC_ReturnStatus status = isByGroup ? ReadCgroupPids(files_, FolderOf(group), pids) : ListProc(files_, pids);
  if (status == HVC_OK || status == HVC_NOT_FOUND) return HVC_OK;
  // The kernel refuses to list the processes of a threaded group: the group above it lists them.
  return isByGroup && IsThreadedCgroup(files_, FolderOf(group)) ? HVC_OK : status;
}

void GroupTree::AddProcess(Group &parent, int64_t pid, ProcessStatus &&status, Clock::Time readAt) {
  // The process may have moved here from a group that was listed earlier.
  if (const Group *known = FindKnown(pid); known != nullptr) {
    if (Group *old = FindKnown(known->parentID); old != nullptr) std::erase(old->processes, pid);
    Forget(pid);
  }
  Group process = {.kind = GroupKind::kProcess, .id = pid, .name = status.name, .parentID = parent.id};
  process.identity = status.identity;
  process.threads = status.threads;
  process.user = status.user;
  process.process = std::make_unique<ProcessReadings>();
  process.process->status = {std::move(status), readAt};
  MakeRoomForOne(parent.processes);
  groups_.emplace(pid, std::move(process));
  parent.processes.insert(std::ranges::upper_bound(parent.processes, pid), pid);
}

void GroupTree::DetectVm(Group &group) {
  if (group.kind != GroupKind::kProcess || group.isKindKnown) return;
  auto [options, isUnknown] =
      vmDetector_.Detect({.pid = group.id, .name = group.name, .threads = group.threads, .user = group.user});
  if (options && reader_.Confirm(group) == HVC_OK) MakeVm(group, *std::move(options));
  group.mayBeVm = isUnknown;
  group.isKindKnown = true;
}

// The group changes last, so that it is still a process if memory runs out.
void GroupTree::MakeVm(Group &group, QemuOptions &&options) {
  auto facts = std::make_unique<VmFacts>();
  std::string name = options.name.empty() ? group.name : options.name;
  static const CgroupMount kNone;
  facts->backing = BackingOf(options, group.user.isContained ? kNone : reader_.mount());
  facts->options = std::move(options);
  const int64_t vmmID = kFirstVmmGroup + group.id;
  groups_.emplace(vmmID, Group{.kind = GroupKind::kVmm, .id = vmmID, .name = "vmm", .parentID = group.id});
  group.kind = GroupKind::kVm;
  group.vm = std::move(facts);
  group.name = std::move(name);
}

HVC_ReturnStatus GroupTree::CountVms(Figure &count) {
  std::vector<int64_t> pids;
  const HVC_ReturnStatus status = ListProc(files_, pids);
  count = Figure(0);
  for (const int64_t pid : pids)
    count = count + CountVm(pid);
  return status;
}

Figure GroupTree::CountVm(int64_t pid) {
  bool isVm = false;
  bool mayBeVm = false;
  if (Group *known = FindKnown(pid); known != nullptr) {
    DetectVm(*known);
    isVm = known->kind == GroupKind::kVm;
    mayBeVm = known->mayBeVm || known->identity.inode == 0;
  } else if (ProcessStatus status; ReadProcessStatus(files_, pid, status) == HVC_OK) {
    const VmDetector::Result result =
        vmDetector_.Detect({.pid = pid, .name = status.name, .threads = status.threads, .user = status.user});
    isVm = result.options.has_value();
    mayBeVm = result.isUnknown || status.identity.inode == 0;
  }
  return mayBeVm && !isVm ? Figure::Unreadable() : Figure(isVm ? 1 : 0);
}

// Forgets a group and all below it. It allocates nothing and therefore never fails: each group's own lists contain the
// groups that are left to visit.
void GroupTree::Forget(int64_t top) noexcept {
  for (Group *group = FindKnown(top); group != nullptr;) {
    if (Group *member = TakeMember(*group); member != nullptr) {
      group = member;
      continue;
    }
    const int64_t id = group->id;
    const int64_t parentID = group->parentID;
    if (group->kind == GroupKind::kControlGroup) files_.Forget(group->folder);
    groups_.erase(id);
    group = id == top ? nullptr : FindKnown(parentID);
  }
}

// Removes the last known member from the group's lists and returns it; null if there is none.
Group *GroupTree::TakeMember(Group &group) noexcept {
  for (std::vector<int64_t> *members : {&group.processes, &group.controlGroups}) {
    while (!members->empty()) {
      Group *member = FindKnown(members->back());
      members->pop_back();
      if (member != nullptr && member->parentID == group.id) return member;
    }
  }
  return group.kind == GroupKind::kVm ? FindKnown(kFirstVmmGroup + group.id) : nullptr;
}

}  // namespace platkit
