#include "platkit/linux/groups/group_tree.h"

#include <algorithm>
#include <utility>

#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/process_maps.h"

namespace platkit {
namespace {

// The folders that are looked through for other processes of a process' control group.
constexpr size_t kMostFoldersOfOne = 64;

// Whether the processes of a control group's folder are shown with those of a folder above it.
bool IsThreaded(HostFiles &files, const std::string &folder) {
  char buffer[32];
  std::string_view type;
  return files.ReadShort(HostPath(folder, "/cgroup.type"), buffer, type) == HVC_OK && type == "threaded\n";
}

// Whether a folder lists a process with memory of its own, other than `pid`, or may list one.
bool ListsAnother(HostFiles &files, const std::string &folder, int64_t pid) {
  LineReader lines(files, HostPath(folder, "/cgroup.procs"));
  for (std::string_view line; lines.Next(line);) {
    uint64_t other = 0;
    ProcessStatus status;
    if (!ParseNumber(line, other) || other == 0 || other >= kKernelGroup) continue;
    const auto otherPid = static_cast<int64_t>(other);
    if (otherPid != pid && ReadProcessStatus(files, otherPid, status) == HVC_OK) return true;
  }
  return lines.status() == HVC_NO_PERMISSION;
}

}  // namespace

void Group::Drop() {
  files.reset();
  status.reset();
  sharing.reset();
  numaMoved.reset();
  recordsGiven = 0;
}

GroupTree::GroupTree(HostFiles &files) : files_(files), vmFinder_(files) {
  groups_.emplace(kHostGroup, Group{.kind = GroupKind::kHost, .id = kHostGroup, .parentID = -1, .name = "host"});
  groups_.emplace(kKernelGroup,
                  Group{.kind = GroupKind::kKernel, .id = kKernelGroup, .parentID = kHostGroup, .name = "kernel"});
}

const Hierarchy &GroupTree::hierarchy() {
  if (!hierarchy_) {
    hierarchy_ = FindHierarchy(files_);
    Host().folder = hierarchy_->top;
  }
  return *hierarchy_;
}

Group *GroupTree::FindKnown(int64_t id) {
  const auto found = groups_.find(id);
  return found == groups_.end() ? nullptr : &found->second;
}

Group *GroupTree::Find(int64_t id) {
  if (Group *known = FindKnown(id); known != nullptr) return known;
  if (id > 0 && id < kKernelGroup) return FindProcess(id);
  if (id >= kFirstControlGroup && id < kFirstControlGroup + kMostControlGroups) return FindControlGroup(id);
  if (id <= kFirstVmmGroup || id >= kFirstVmmGroup + kKernelGroup) return nullptr;
  Group *process = Find(id - kFirstVmmGroup);
  if (process != nullptr) SeekVm(*process);
  return FindKnown(id);
}

Group *GroupTree::FindProcess(int64_t pid) {
  ProcessStatus status;
  if (ReadProcessStatus(files_, pid, status) != HVC_OK) return nullptr;
  const Hierarchy &groups = hierarchy();
  Group *parent = ParentOf(groups.exists ? FolderOfProcess(files_, groups, pid) : std::string());
  AddProcess(parent == nullptr ? Host() : *parent, pid, std::move(status));
  return FindKnown(pid);
}

// A process may have a control group that cannot be seen; it then belongs to the host as a whole. Where the threads of
// a process are in several groups, it belongs to the one above these that lists it.
Group *GroupTree::ParentOf(std::string_view folder) {
  Group *group = FindFolder(folder);
  while (group != nullptr && group->kind == GroupKind::kControlGroup && hierarchy().v1Options.empty() &&
         IsThreaded(files_, group->folder)) {
    group = FindKnown(group->parentID);
  }
  return group;
}

// The group whose folder is at `folder` below the hierarchy's top, or null.
Group *GroupTree::FindFolder(std::string_view folder) {
  Group *group = &Host();
  while (group != nullptr && !folder.empty()) {
    if (LearnFolders(*group) != HVC_OK) return nullptr;
    const std::string_view name = folder.substr(0, folder.find('/'));
    folder.remove_prefix(std::min(name.size() + 1, folder.size()));
    Group *next = nullptr;
    for (const int64_t id : group->children) {
      Group *child = FindKnown(id);
      if (child != nullptr && child->kind == GroupKind::kControlGroup && child->name == name) next = child;
    }
    group = next;
  }
  return group;
}

// Learns the whole tree of control groups, until the group turns up.
Group *GroupTree::FindControlGroup(int64_t id) {
  std::vector<int64_t> unvisited = {kHostGroup};
  while (!unvisited.empty()) {
    Group *group = FindKnown(unvisited.back());
    unvisited.pop_back();
    if (group == nullptr || LearnFolders(*group) != HVC_OK) continue;
    if (Group *found = FindKnown(id); found != nullptr) return found;
    for (const int64_t child : group->children) {
      if (child >= kFirstControlGroup) unvisited.push_back(child);
    }
  }
  return nullptr;
}

HVC_ReturnStatus GroupTree::List(Group &group, ParamList &list) {
  SeekVm(group);
  switch (group.kind) {
    case GroupKind::kHost:
      vmFinder_.Forget();
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

HVC_ReturnStatus GroupTree::ListContainer(Group &group, ParamList &list) {
  if (const HVC_ReturnStatus status = ReadFolders(group); status == HVC_NOT_FOUND) return status;
  for (const int64_t pid : ReadPids(group)) {
    ProcessStatus status;
    if (ReadProcessStatus(files_, pid, status) == HVC_OK) AddProcess(group, pid, std::move(status));
  }
  group.processesKnown = true;
  list.Expect(list.params().size() + group.children.size());
  for (const int64_t child : group.children) {
    if (const HVC_ReturnStatus status = list.Add(child); status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus GroupTree::LearnFolders(Group &group) { return group.foldersKnown ? HVC_OK : ReadFolders(group); }

HVC_ReturnStatus GroupTree::ReadFolders(Group &group) {
  struct Found {
    std::string name;
    uint64_t inode;
  };
  ForgetChildren(group);
  if (!hierarchy().exists) return HVC_OK;
  std::vector<Found> found;
  FolderReader folder(files_, HostPath(group.folder));
  if (!folder.HasNoFolders()) {
    for (FolderReader::Entry entry; folder.Next(entry);) {
      if (entry.isFolder) found.push_back({std::string(entry.name), entry.inode});
    }
  }
  // A hierarchy whose top cannot be found, as in a saved root without one, leaves a host without control groups.
  if (folder.status() != HVC_OK && group.kind != GroupKind::kHost) return folder.status();
  std::sort(found.begin(), found.end(), [](const Found &a, const Found &b) { return a.name < b.name; });
  for (Found &child : found) {
    const int64_t id = FreeControlGroupID(child.inode);
    if (id < 0) continue;
    std::string path = group.folder + "/" + child.name;
    groups_.emplace(id, Group{.kind = GroupKind::kControlGroup,
                              .id = id,
                              .parentID = group.id,
                              .name = std::move(child.name),
                              .folder = std::move(path)});
    group.children.push_back(id);
  }
  group.foldersKnown = true;
  return HVC_OK;
}

// Inode numbers may be the same modulo the range: the later group takes the next free identifier. -1: none is free.
int64_t GroupTree::FreeControlGroupID(uint64_t inode) const {
  const auto first = static_cast<int64_t>(inode % static_cast<uint64_t>(kMostControlGroups));
  for (int64_t i = 0; i < kMostControlGroups; ++i) {
    const int64_t id = kFirstControlGroup + (first + i) % kMostControlGroups;
    if (!groups_.contains(id)) return id;
  }
  return -1;
}

// Without control groups, all processes are the host's.
std::vector<int64_t> GroupTree::ReadPids(const Group &group) {
  std::vector<int64_t> pids;
  const auto take = [&pids](std::string_view text) {
    uint64_t pid = 0;
    if (ParseNumber(text, pid) && pid > 0 && pid < kKernelGroup) pids.push_back(static_cast<int64_t>(pid));
  };
  if (hierarchy().exists) {
    LineReader lines(files_, HostPath(group.folder, "/cgroup.procs"));
    for (std::string_view line; lines.Next(line);)
      take(line);
  } else {
    FolderReader folder(files_, HostPath("proc"));
    for (FolderReader::Entry entry; folder.Next(entry);)
      take(entry.name);
  }
  std::sort(pids.begin(), pids.end());
  pids.erase(std::unique(pids.begin(), pids.end()), pids.end());
  return pids;
}

void GroupTree::AddProcess(Group &parent, int64_t pid, ProcessStatus &&status) {
  // The process may have moved since another group's listing showed it.
  if (Group *known = FindKnown(pid); known != nullptr) {
    if (Group *old = FindKnown(known->parentID); old != nullptr) std::erase(old->children, pid);
    ForgetChildren(*known);
  }
  Group process = {.kind = GroupKind::kProcess, .id = pid, .parentID = parent.id, .name = status.name};
  process.identity = status.identity;
  process.status = std::make_unique<ProcessStatus>(std::move(status));
  groups_.insert_or_assign(pid, std::move(process));
  parent.children.push_back(pid);
}

void GroupTree::SeekVm(Group &group) {
  if (group.kind != GroupKind::kProcess || group.vmSought) return;
  const ProcessStatus *status = StatusOf(group);
  if (status == nullptr) return;
  group.vmSought = true;
  std::optional<VirtualMachine> machine = vmFinder_.Find(group.id, *status);
  if (!machine || Confirm(group) != HVC_OK) return;
  group.kind = GroupKind::kVm;
  if (!machine->name.empty()) group.name = std::move(machine->name);
  group.guestMemory = machine->guestMemory;
  group.mostMemory = machine->mostMemory;
  const int64_t vmmID = kFirstVmmGroup + group.id;
  group.children.push_back(vmmID);
  groups_.emplace(vmmID, Group{.kind = GroupKind::kVmm, .id = vmmID, .parentID = group.id, .name = "vmm"});
}

const ProcessStatus *GroupTree::StatusOf(Group &group) {
  if (group.status == nullptr) {
    auto status = std::make_unique<ProcessStatus>();
    if (ReadProcessStatus(files_, group.id, *status) != HVC_OK || Confirm(group) != HVC_OK) return nullptr;
    group.status = std::move(status);
  }
  return group.status.get();
}

HVC_ReturnStatus GroupTree::Confirm(const Group &process) {
  return IsStill(files_, process.id, process.identity) ? HVC_OK : HVC_NOT_FOUND;
}

Figure GroupTree::Amount(Group &group, GroupAmount amount) {
  if (group.files == nullptr) group.files = std::make_unique<ControlGroupFiles>();
  return group.files->Amount(files_, hierarchy().memoryFiles, group.folder, amount);
}

const GroupStat &GroupTree::StatOf(Group &group) {
  if (group.files == nullptr) group.files = std::make_unique<ControlGroupFiles>();
  return group.files->Stat(files_, hierarchy().memoryFiles, group.folder);
}

Figure GroupTree::GuestMemory(Group &vm) {
  if (vm.guestMemory.isAbsent() && !vm.mappingsSought) {
    vm.mappingsSought = true;
    vm.guestMemory = LargestMemoryMapping(files_, vm.id, hierarchy().memoryDevices);
  }
  return vm.guestMemory;
}

Group *GroupTree::OwnControlGroup(Group &process) {
  Group *group = FindKnown(process.parentID);
  if (group == nullptr || group->kind != GroupKind::kControlGroup) return nullptr;
  if (!process.hasOwnControlGroup) {
    process.hasOwnControlGroup = hierarchy().memoryFiles != MemoryFiles::kNone && IsAlone(process, *group);
  }
  return *process.hasOwnControlGroup ? group : nullptr;
}

// Goes by what listings showed, and reads the folders that none has listed. A tree of many folders is given up: a
// process that keeps so many groups is in none of its own.
bool GroupTree::IsAlone(const Group &process, const Group &top) {
  std::vector<std::string> unread;
  std::vector<const Group *> listed;
  const auto visit = [&](const Group &group) {
    if (group.processesKnown) {
      listed.push_back(&group);
    } else {
      unread.push_back(group.folder);
    }
  };
  visit(top);
  while (!listed.empty()) {
    const Group &group = *listed.back();
    listed.pop_back();
    for (const int64_t id : group.children) {
      const Group *child = FindKnown(id);
      if (child == nullptr || id == process.id) continue;
      if (child->kind != GroupKind::kControlGroup) return false;
      visit(*child);
    }
    if (listed.size() + unread.size() > kMostFoldersOfOne) return false;
  }
  while (!unread.empty()) {
    const std::string folder = std::move(unread.back());
    unread.pop_back();
    if (ListsAnother(files_, folder, process.id)) return false;
    FolderReader entries(files_, HostPath(folder));
    for (FolderReader::Entry entry; entries.Next(entry);) {
      if (entry.isFolder) unread.push_back(folder + "/" + std::string(entry.name));
    }
    if (unread.size() > kMostFoldersOfOne) return false;
  }
  return true;
}

void GroupTree::ForgetChildren(Group &group) {
  std::vector<int64_t> unvisited = std::exchange(group.children, {});
  group.foldersKnown = false;
  group.processesKnown = false;
  while (!unvisited.empty()) {
    const auto found = groups_.find(unvisited.back());
    unvisited.pop_back();
    if (found == groups_.end()) continue;
    const std::vector<int64_t> &below = found->second.children;
    unvisited.insert(unvisited.end(), below.begin(), below.end());
    groups_.erase(found);
  }
}

}  // namespace platkit
