#include "platkit/linux/group_records.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "platkit/linux/printable.h"

namespace platkit {
namespace {

struct KindTraits {
  std::string_view tag;
  uint32_t flags;
};

// In the order of GroupKind.
constexpr KindTraits kKinds[] = {
    {"host", HVC_GROUP_PREDEFINED | HVC_GROUP_CONTAINER},
    {"kernel", HVC_GROUP_PREDEFINED | HVC_GROUP_KERNEL | HVC_GROUP_LEAF},
    {"cgroup", HVC_GROUP_CONTAINER},
    {"process", HVC_GROUP_USER_WORLD | HVC_GROUP_LEAF},
    {"vm", HVC_GROUP_VM | HVC_GROUP_USER_WORLD},
    {"vmm", HVC_GROUP_VMM_SUB_CONTAINER | HVC_GROUP_SUB_CONTAINER | HVC_GROUP_LEAF},
};

const KindTraits &TraitsOf(const Group &group) { return kKinds[static_cast<size_t>(group.kind)]; }

bool IsProcess(const Group &group) { return group.kind == GroupKind::kProcess || group.kind == GroupKind::kVm; }

uint64_t CellInKB(Figure bytes, uint64_t ifAbsent) { return (bytes / 1024).Cell(ifAbsent); }

// Memory of the process itself: what it holds beyond the guest's, and the page tables for it all.
Figure Overhead(const ProcessStatus &status, Figure guestMemory) {
  return status.Consumed() - guestMemory + status.pageTables;
}

Figure GuestMemory(const Group &vm, const ProcessStatus &status) { return vm.guestMemory.IfAbsent(status.size); }

}  // namespace

HVC_ReturnStatus GroupRecords::Name(Group &group, GroupNameRecord &record) {
  tree_.SeekVm(group);
  const size_t length = std::min(group.name.size(), sizeof record.name - 1);
  std::transform(group.name.begin(), group.name.begin() + static_cast<ptrdiff_t>(length), record.name, Printable);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::Tag(Group &group, GroupTagRecord &record) {
  tree_.SeekVm(group);
  TraitsOf(group).tag.copy(record.tag, sizeof record.tag);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::ParentID(Group &group, ParentGroupIDRecord &record) {
  record.parentGroupID = group.parentID;
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::Flags(Group &group, GroupFlagsRecord &record) {
  tree_.SeekVm(group);
  record.flags = TraitsOf(group).flags;
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::LeaderID(Group &group, GroupLeaderIDRecord &record) {
  if (!IsProcess(group)) return HVC_NOT_FOUND;
  record.leaderID = static_cast<uint32_t>(group.id);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::Members(Group &group, ParamList &list) {
  if (group.kind == GroupKind::kHost) {
    meminfo_.reset();
    group.recordsGiven = 0;
  }
  return tree_.List(group, list);
}

HVC_ReturnStatus GroupRecords::MemClients(Group &group, ParamList &list) {
  return IsProcess(group) ? list.Add(group.id) : HVC_OK;
}

// Linux knows neither shares of memory nor a limit of reservations.
HVC_ReturnStatus GroupRecords::Alloc(Group &group, GroupAllocRecord &record) {
  record.max = HVC_KB_NONE;
  record.minLimit = HVC_KB_NONE;
  if (group.kind != GroupKind::kControlGroup) return HVC_OK;
  Renew(group, kAlloc);
  const Figure max = Amount(group, GroupAmount::kMax);
  if (IsGone(group, max)) return HVC_NOT_FOUND;
  record.min = CellInKB(Amount(group, GroupAmount::kMin), 0);
  record.max = CellInKB(max, HVC_KB_NONE);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::Capacity(Group &group, GroupCapacityRecord &record) {
  if (group.kind != GroupKind::kHost && group.kind != GroupKind::kControlGroup) return HVC_OK;
  Renew(group, kCapacity);
  Figure own = Figure(0);
  if (group.kind == GroupKind::kControlGroup) {
    own = Amount(group, GroupAmount::kMin);
    if (IsGone(group, own)) return HVC_NOT_FOUND;
  } else {
    own = HostMemory().total * 1024;
  }
  const Figure reserved = ReservedByChildren(group);
  record.consumedResv = CellInKB(reserved, 0);
  record.availResv = CellInKB(own - reserved, 0);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::MemoryStats(Group &group, GroupMemoryStatsRecord &record) {
  tree_.SeekVm(group);
  record.bMax = HVC_KB_NONE;
  record.allocTgt = HVC_KB_NONE;
  switch (group.kind) {
    case GroupKind::kHost: return HostStats(record);
    case GroupKind::kKernel: return KernelStats(record);
    case GroupKind::kControlGroup: return ControlGroupStats(group, record);
    case GroupKind::kProcess:
    case GroupKind::kVm: return ProcessStats(group, record);
    case GroupKind::kVmm: return VmmStats(group, record);
  }
  return HVC_FAILURE;
}

HVC_ReturnStatus GroupRecords::HostStats(GroupMemoryStatsRecord &record) {
  Group *host = tree_.Find(kHostGroup);
  Renew(*host, kStats);
  const Meminfo &memory = HostMemory();
  record.memSize = memory.total.Cell(0);
  record.consumed = (memory.total - memory.free).Cell(0);
  record.touched = memory.active.Cell(0);
  record.ovhd = memory.kernel.Cell(0);
  record.sharedSaved = sharing_.SavedOnHost().Cell(0);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::KernelStats(GroupMemoryStatsRecord &record) {
  Renew(*tree_.Find(kHostGroup), kKernelStats);
  record.memSize = record.consumed = HostMemory().kernel.Cell(0);
  return HVC_OK;
}

// A group for which the memory controller is not enabled lacks its files. Its amounts exist all the same, and are not
// known; it reserves nothing and has no limit.
HVC_ReturnStatus GroupRecords::ControlGroupStats(Group &group, GroupMemoryStatsRecord &record) {
  Renew(group, kStats);
  Figure consumed = Amount(group, GroupAmount::kCurrent);
  if (IsGone(group, consumed)) return HVC_NOT_FOUND;
  const MemoryFiles version = tree_.hierarchy().memoryFiles;
  const GroupStat &stat = group.files->Stat(files_, version, group.folder);
  const Figure swap = version == MemoryFiles::kV1 ? stat.swap : Amount(group, GroupAmount::kSwap);
  const Figure kernel = version == MemoryFiles::kV1 ? Amount(group, GroupAmount::kKernel) : stat.kernel;
  const Figure peak = Amount(group, GroupAmount::kPeak);
  consumed = consumed.IfAbsent(Figure::Unreadable());
  record.consumed = CellInKB(consumed, 0);
  record.consumedPeak = CellInKB(peak, HVC_KB_NONE);
  record.memSize = CellInKB(consumed + swap, 0);
  // Without swap accounting, version 1 counts memory alone, and its peak is that of both.
  if (version == MemoryFiles::kV1) {
    record.memSizePeak = CellInKB(Amount(group, GroupAmount::kWithSwapPeak).IfAbsent(peak), HVC_KB_NONE);
  }
  record.touched = CellInKB(stat.active, HVC_KB_NONE);
  record.ovhd = CellInKB(kernel, HVC_KB_NONE);
  record.bMin = CellInKB(Amount(group, GroupAmount::kMin), 0);
  record.bMax = CellInKB(Amount(group, GroupAmount::kMax), HVC_KB_NONE);
  record.iMin = CellInKB(Amount(group, GroupAmount::kLow), 0);
  record.eMin = CellInKB(LowestMin(group), 0);
  record.allocTgt = CellInKB(Amount(group, GroupAmount::kHigh), HVC_KB_NONE);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::ProcessStats(Group &group, GroupMemoryStatsRecord &record) {
  Renew(group, kStats);
  const ProcessStatus *status = tree_.StatusOf(group);
  if (status == nullptr) return HVC_NOT_FOUND;
  const Figure saved = sharing_.SavedByProcess(group.id);
  // Kernels before 5.19 have no such file, nor has a process that is gone.
  if (saved.isAbsent() && !files_.Exists(HostPath("proc/", group.id))) return HVC_NOT_FOUND;
  record.memSize = status->size.Cell(0);
  record.memSizePeak = status->sizePeak.Cell(0);
  record.consumed = status->Consumed().Cell(0);
  record.consumedPeak = status->ConsumedPeak().Cell(0);
  record.touched = status->Consumed().Cell(0);
  record.ovhd = status->pageTables.Cell(0);
  record.sharedSaved = saved.Cell(0);
  if (group.kind != GroupKind::kVm) return HVC_OK;
  // A guest is as large as it was made; the process' own peak would be one of something else.
  if (!group.guestMemory.isAbsent()) record.memSize = record.memSizePeak = group.guestMemory.Cell(0);
  record.ovhd = Overhead(*status, GuestMemory(group, *status)).Cell(0);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::VmmStats(Group &group, GroupMemoryStatsRecord &record) {
  Group *vm = tree_.Find(group.parentID);
  if (vm == nullptr) return HVC_NOT_FOUND;
  Renew(*vm, kVmmStats);
  const ProcessStatus *status = tree_.StatusOf(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  record.memSize = record.consumed = Overhead(*status, GuestMemory(*vm, *status)).Cell(0);
  return HVC_OK;
}

void GroupRecords::Renew(Group &keeper, Given record) {
  if ((keeper.recordsGiven & record) != 0) {
    if (keeper.kind == GroupKind::kHost) meminfo_.reset();
    Drop(keeper);
    if (record == kCapacity) {
      for (const int64_t id : keeper.children) {
        if (Group *child = tree_.FindKnown(id); child != nullptr) Drop(*child);
      }
    }
  }
  keeper.recordsGiven |= record;
}

void GroupRecords::Drop(Group &group) {
  group.files.reset();
  group.status.reset();
  group.recordsGiven = 0;
}

const Meminfo &GroupRecords::HostMemory() {
  if (!meminfo_) meminfo_ = ReadMeminfo(files_);
  return *meminfo_;
}

Figure GroupRecords::Amount(Group &group, GroupAmount amount) {
  if (group.files == nullptr) group.files = std::make_unique<ControlGroupFiles>();
  return group.files->Amount(files_, tree_.hierarchy().memoryFiles, group.folder, amount);
}

Figure GroupRecords::ReservedByChildren(Group &group) {
  if (tree_.hierarchy().memoryFiles != MemoryFiles::kV2) return Figure(0);
  if (tree_.LearnFolders(group) != HVC_OK) return Figure::Unreadable();
  Figure sum(0);
  for (const int64_t id : group.children) {
    Group *child = id >= kFirstControlGroup ? tree_.Find(id) : nullptr;
    if (child != nullptr) sum = sum + Amount(*child, GroupAmount::kMin);
  }
  return sum;
}

// What the kernel protects of a group is bounded by the reservation of every group above it.
Figure GroupRecords::LowestMin(Group &group) {
  Figure lowest = Amount(group, GroupAmount::kMin);
  for (Group *above = tree_.Find(group.parentID); above != nullptr && above->kind == GroupKind::kControlGroup;
       above = tree_.Find(above->parentID)) {
    lowest = Lower(lowest, Amount(*above, GroupAmount::kMin));
  }
  return lowest;
}

// A file that every group has is missing if the group has vanished, or has no memory controller.
bool GroupRecords::IsGone(const Group &group, Figure required) {
  return required.isAbsent() && !files_.Exists(HostPath(group.folder));
}

}  // namespace platkit
