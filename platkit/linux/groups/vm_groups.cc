#include "platkit/linux/groups/vm_groups.h"

#include <algorithm>
#include <utility>

#include "platkit/linux/files/folder_reader.h"

namespace platkit {
namespace {

// A VM's control group with more groups below it counts as shared, without a search.
constexpr size_t kMaxFolders = 64;

// A monitor maps all memory of its guest before the guest starts, so more than the process has mapped is not a guest's
// memory.
bool IsMapped(Figure size, const ProcessStatus &status) {
  return !size.isAbsent() && Lower(size, status.addressSpace) == size;
}

}  // namespace

Figure VmGroups::GuestSize(Group &vm, const ProcessStatus &status) {
  const QemuOptions &options = vm.vm->options;
  if (IsMapped(options.memory, status)) return Higher(options.memory, HotPlugged(vm));
  const Figure mapped = Mappings(vm).largest;
  const bool isDefault = IsMapped(options.defaultMemory, status) &&
                         Higher(options.defaultMemory, status.hugePages) == options.defaultMemory;
  return isDefault ? Higher(mapped, options.defaultMemory) : mapped;
}

GuestMemory VmGroups::Guest(Group &vm, const ProcessStatus &status) {
  GuestMemory guest = {.size = GuestSize(vm, status), .backing = vm.vm->backing, .mapped = {}};
  const bool needsCount = guest.backing == GuestBacking::kAnonymous && !vm.vm->options.isPopulated;
  if (needsCount) guest.mapped = reader_.GuestPages(vm).KB();
  return guest;
}

// The memory of a guest whose command line leaves room for memory devices, from the mappings; absent for other guests.
Figure VmGroups::HotPlugged(Group &vm) {
  const QemuOptions &options = vm.vm->options;
  const bool hasRoom = !options.maxMemory.isAbsent() && options.maxMemory - options.memory != Figure(0);
  if (!hasRoom || options.mapsOtherMemory) return {};
  const Figure blocks = Mappings(vm).blocks;
  return blocks.isAbsent() ? blocks : Lower(blocks, options.maxMemory);
}

const GuestMappings &VmGroups::Mappings(Group &vm) {
  return vm.vm->mappings.Get(files_.clock(),
                             [&] { return ReadGuestMappings(files_, vm.id, reader_.mount().memoryDevices); });
}

Group *VmGroups::OwnControlGroup(Group &process) {
  if (process.kind != GroupKind::kVm) return nullptr;
  Group *group = tree_.FindKnown(process.parentID);
  if (group == nullptr || group->kind != GroupKind::kControlGroup) return nullptr;
  const bool isOwn =
      process.vm->hasOwnControlGroup.GetMade(files_.clock(), [&] { return IsOwnControlGroup(process, *group); });
  return isOwn ? group : nullptr;
}

Fresh<bool> VmGroups::IsOwnControlGroup(const Group &vm, const Group &group) {
  Clock::Time readAt = files_.clock().Now();
  const bool isOwn = reader_.mount().memoryFiles != CgroupVersion::kNone && IsAlone(vm, group, readAt);
  return {isOwn, readAt};
}

// Groups whose members are known from a fresh listing are not read again; `readAt` is then lowered to the time of the
// listing.
bool VmGroups::IsAlone(const Group &vm, const Group &top, Clock::Time &readAt) {
  std::vector<const Group *> listed;
  std::vector<std::string> folders;
  const auto visit = [&](const Group &group) {
    if (group.processesRead.IsFresh(files_.clock()) && group.controlGroupsRead.IsFresh(files_.clock())) {
      readAt = std::min({readAt, group.processesRead.readAt(), group.controlGroupsRead.readAt()});
      listed.push_back(&group);
    } else {
      folders.push_back(group.folder);
    }
  };
  visit(top);
  while (!listed.empty()) {
    const Group &group = *listed.back();
    listed.pop_back();
    if (HasOtherMember(vm, group)) return false;
    for (const int64_t id : group.controlGroups) {
      if (const Group *child = tree_.FindKnown(id); child != nullptr) visit(*child);
    }
    if (listed.size() + folders.size() > kMaxFolders) return false;
  }
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    if (ListsOtherProcess(vm, folder)) return false;
    FolderReader entries(files_, HostPath(folder));
    for (FolderReader::Entry entry; entries.Next(entry);) {
      if (entry.isFolder) folders.push_back(folder + "/" + std::string(entry.name));
    }
    if (folders.size() > kMaxFolders) return false;
  }
  return true;
}

bool VmGroups::HasOtherMember(const Group &vm, const Group &group) {
  return std::ranges::any_of(group.processes,
                             [&](int64_t pid) { return pid != vm.id && tree_.FindKnown(pid) != nullptr; });
}

// True also if this user may not read the list, or if its path is too long.
bool VmGroups::ListsOtherProcess(const Group &vm, const std::string &folder) {
  std::vector<int64_t> pids;
  const HVC_ReturnStatus result = ReadCgroupPids(files_, folder, pids);
  const auto hasMemory = [&](int64_t pid) {
    ProcessStatus status;
    return pid != vm.id && ReadProcessStatus(files_, pid, status) == HVC_OK;
  };
  return std::ranges::any_of(pids, hasMemory) || result == HVC_NO_PERMISSION || result == HVC_NAME_TOO_LONG;
}

}  // namespace platkit
