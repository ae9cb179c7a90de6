#include "platkit/linux/groups/vm_groups.h"

#include <algorithm>
#include <utility>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/groups/vm_scope.h"

namespace platkit {
namespace {

// A VM's control group with more groups or other processes than this counts as shared by several VMs.
constexpr size_t kMaxFolders = 64;
constexpr size_t kMaxHelpers = 64;

// A monitor maps all memory of its guest before the guest starts, so a size above the address space of the process
// cannot be right.
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

// The size of the guest's memory according to the mappings, if the command line leaves room for memory devices; absent
// otherwise.
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

Figure VmGroups::Overhead(Group &vm, const ProcessStatus &status) {
  const GuestMemory guest = Guest(vm, status);
  const Figure ofProcess = VmOverhead(status, guest);
  Group *own = OwnControlGroup(vm);
  const Figure charged = own == nullptr ? Figure() : Charged(*own);
  if (charged.isAbsent() || charged == Figure::Unreadable()) return ofProcess;
  return Higher(ofProcess, charged - (GuestPart(status, guest) - status.hugePages));
}

// The memory that is charged to a VM's own control group, in KB. The cache of the VM's disks and compressed memory are
// subtracted, because they belong neither to the guest nor to the overhead. Huge pages of pools are subtracted, too,
// because the kernel does not charge them by default. Absent if memory.stat lacks the figures of the cache.
Figure VmGroups::Charged(Group &own) {
  const CgroupStat &stat = reader_.Stat(own);
  if (stat.unmapped.isAbsent()) return {};
  return (reader_.Amount(own, CgroupAmount::kCurrent) - stat.unmapped - stat.zswap - stat.hugePages) / 1024;
}

Group *VmGroups::OwnControlGroup(Group &process) {
  if (process.kind != GroupKind::kVm || reader_.mount().memoryFiles == CgroupVersion::kNone) return nullptr;
  const int64_t id = process.vm->ownControlGroup.GetMade(files_.clock(), [&] { return FindOwnControlGroup(process); });
  return id == kHostGroup ? nullptr : tree_.FindKnown(id);
}

Fresh<int64_t> VmGroups::FindOwnControlGroup(const Group &vm) {
  Clock::Time readAt = files_.clock().Now();
  int64_t own = kHostGroup;
  if (const Group *scope = ScopeOf(vm); scope != nullptr && HasNoOtherVm(vm, *scope, readAt)) {
    own = scope->id;
  } else if (const Group *parent = ControlGroupOf(vm); parent != nullptr && IsAlone(vm, *parent, readAt)) {
    own = parent->id;
  }
  return {own, readAt};
}

// The control group above, or null.
const Group *VmGroups::ControlGroupOf(const Group &group) {
  const Group *parent = tree_.FindKnown(group.parentID);
  return parent == nullptr || parent->kind != GroupKind::kControlGroup ? nullptr : parent;
}

// The control group that a management tool created for the VM, or null.
const Group *VmGroups::ScopeOf(const Group &vm) {
  const Group *group = ControlGroupOf(vm);
  if (group == nullptr) return nullptr;
  const std::string path = FullCgroupOfFolder(reader_.mount(), group->folder);
  const std::string_view scope = VmScopeOf(path);
  if (scope.empty()) return nullptr;
  for (size_t length = path.size(); group != nullptr && length > scope.size(); group = ControlGroupOf(*group))
    length -= group->name.size() + 1;
  return group;
}

bool VmGroups::IsAlone(const Group &vm, const Group &top, Clock::Time &readAt) {
  Others others = {.vm = vm.id, .limit = 0};
  return FindOthers(top, others, readAt);
}

// Whether no other process of the group runs a VM; the others are then helpers of this VM.
bool VmGroups::HasNoOtherVm(const Group &vm, const Group &top, Clock::Time &readAt) {
  Others others = {.vm = vm.id, .limit = kMaxHelpers};
  return FindOthers(top, others, readAt) &&
         std::ranges::all_of(others.pids, [&](int64_t pid) { return tree_.CountVm(pid) == Figure(0); });
}

// Finds the other processes with memory in a group and the groups below it. Returns false if there are too many
// processes or groups, or if some are hidden from this user. Groups whose members are known from a fresh listing are
// not read again; `readAt` is then lowered to the time of the listing.
bool VmGroups::FindOthers(const Group &top, Others &others, Clock::Time &readAt) {
  std::vector<const Group *> groups = {&top};
  std::vector<std::string> folders;
  for (size_t visited = 0; !groups.empty(); ++visited) {
    const Group &group = *groups.back();
    groups.pop_back();
    if (!IsListed(group)) {
      folders.push_back(group.folder);
    } else if (AddListed(group, others, groups)) {
      readAt = std::min({readAt, group.processesRead.readAt(), group.controlGroupsRead.readAt()});
    } else {
      return false;
    }
    if (visited + groups.size() > kMaxFolders) return false;
  }
  for (size_t visited = 0; !folders.empty(); ++visited) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    if (!AddUnlisted(folder, others, folders) || visited + folders.size() > kMaxFolders) return false;
  }
  return true;
}

bool VmGroups::IsListed(const Group &group) const {
  return group.processesRead.IsFresh(files_.clock()) && group.controlGroupsRead.IsFresh(files_.clock());
}

// Returns false if the listing failed, or if there are too many other processes.
bool VmGroups::AddListed(const Group &group, Others &others, std::vector<const Group *> &groups) {
  const HVC_ReturnStatus *processes = group.processesRead.IfFresh(files_.clock());
  const HVC_ReturnStatus *folders = group.controlGroupsRead.IfFresh(files_.clock());
  if (processes == nullptr || folders == nullptr || *processes != HVC_OK || *folders != HVC_OK) return false;
  for (const int64_t id : group.controlGroups) {
    if (const Group *child = tree_.FindKnown(id); child != nullptr) groups.push_back(child);
  }
  return std::ranges::all_of(group.processes,
                             [&](int64_t pid) { return tree_.FindKnown(pid) == nullptr || others.Add(pid); });
}

// Returns false if this user may not read the folder or its list, if a path is too long, or if there are too many other
// processes.
bool VmGroups::AddUnlisted(const std::string &folder, Others &others, std::vector<std::string> &folders) {
  const auto isHidden = [](HVC_ReturnStatus status) {
    return status == HVC_NO_PERMISSION || status == HVC_NAME_TOO_LONG;
  };
  const auto add = [&](int64_t pid) {
    ProcessStatus status;
    return pid == others.vm || ReadProcessStatus(files_, pid, status) != HVC_OK || others.Add(pid);
  };
  std::vector<int64_t> pids;
  if (isHidden(ReadCgroupPids(files_, folder, pids)) || !std::ranges::all_of(pids, add)) return false;
  FolderReader entries(files_, HostPath(folder));
  for (FolderReader::Entry entry; entries.Next(entry);) {
    if (entry.isFolder) folders.push_back(folder + "/" + std::string(entry.name));
  }
  return !isHidden(entries.status());
}

}  // namespace platkit
