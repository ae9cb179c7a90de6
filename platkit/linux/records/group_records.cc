#include "platkit/linux/records/group_records.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "platkit/linux/records/printable.h"

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

}  // namespace

const ProcessSharing &SharingOf(PageSharing &sharing, Group &process) {
  if (!process.sharing) process.sharing = sharing.OfProcess(process.id);
  return *process.sharing;
}

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
  return IsProcess(group) || group.kind == GroupKind::kVmm ? list.Add(group.id) : HVC_OK;
}

// Linux knows neither shares of memory nor a limit of reservations.
HVC_ReturnStatus GroupRecords::Alloc(Group &group, GroupAllocRecord &record) {
  tree_.SeekVm(group);
  record.max = HVC_KB_NONE;
  record.minLimit = HVC_KB_NONE;
  if (group.kind != GroupKind::kControlGroup) {
    const Limits limits = LimitsOf(group, group.kind == GroupKind::kVm ? kVmAllocRecord : kVmmAllocRecord);
    record.min = limits.min;
    record.max = limits.max;
    return HVC_OK;
  }
  Renew(group, kAllocRecord);
  const Figure max = tree_.Amount(group, GroupAmount::kMax);
  if (IsGone(group, max)) return HVC_NOT_FOUND;
  record.min = CellInKB(tree_.Amount(group, GroupAmount::kMin), 0);
  record.max = CellInKB(max, HVC_KB_NONE);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::Capacity(Group &group, GroupCapacityRecord &record) {
  if (group.kind != GroupKind::kHost && group.kind != GroupKind::kControlGroup) return HVC_OK;
  Renew(group, kCapacityRecord);
  Figure own = Figure(0);
  if (group.kind == GroupKind::kControlGroup) {
    own = tree_.Amount(group, GroupAmount::kMin);
    if (IsGone(group, own.IfAbsent(tree_.Amount(group, GroupAmount::kMax)))) return HVC_NOT_FOUND;
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
  Renew(*host, kStatsRecord);
  const Meminfo &memory = HostMemory();
  record.memSize = memory.total.Cell(0);
  record.consumed = (memory.total - memory.free).Cell(0);
  record.touched = memory.active.Cell(0);
  record.ovhd = memory.kernel.Cell(0);
  record.sharedSaved = sharing_.SavedOnHost().Cell(0);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::KernelStats(GroupMemoryStatsRecord &record) {
  Renew(*tree_.Find(kHostGroup), kKernelStatsRecord);
  record.memSize = record.consumed = HostMemory().kernel.Cell(0);
  return HVC_OK;
}

// A group for which the memory controller is not enabled lacks its files. Its amounts exist all the same, and are not
// known; it reserves nothing and has no limit.
HVC_ReturnStatus GroupRecords::ControlGroupStats(Group &group, GroupMemoryStatsRecord &record) {
  Renew(group, kStatsRecord);
  Figure consumed = tree_.Amount(group, GroupAmount::kCurrent);
  if (IsGone(group, consumed)) return HVC_NOT_FOUND;
  const MemoryFiles version = tree_.hierarchy().memoryFiles;
  const GroupStat &stat = tree_.StatOf(group);
  const Figure swap = version == MemoryFiles::kV1 ? stat.swap : tree_.Amount(group, GroupAmount::kSwap);
  const Figure kernel = version == MemoryFiles::kV1 ? tree_.Amount(group, GroupAmount::kKernel) : stat.kernel;
  const Figure peak = tree_.Amount(group, GroupAmount::kPeak);
  consumed = consumed.IfAbsent(Figure::Unreadable());
  record.consumed = CellInKB(consumed, 0);
  record.consumedPeak = CellInKB(peak, HVC_KB_NONE);
  record.memSize = CellInKB(consumed + swap, 0);
  // Without swap accounting, version 1 counts memory alone, and its peak is that of both.
  if (version == MemoryFiles::kV1) {
    record.memSizePeak = CellInKB(tree_.Amount(group, GroupAmount::kWithSwapPeak).IfAbsent(peak), HVC_KB_NONE);
  }
  record.touched = CellInKB(stat.active, HVC_KB_NONE);
  record.ovhd = CellInKB(kernel, HVC_KB_NONE);
  record.bMin = CellInKB(tree_.Amount(group, GroupAmount::kMin), 0);
  record.bMax = CellInKB(tree_.Amount(group, GroupAmount::kMax), HVC_KB_NONE);
  record.iMin = CellInKB(tree_.Amount(group, GroupAmount::kLow), 0);
  record.eMin = CellInKB(LowestMin(group), 0);
  record.allocTgt = CellInKB(tree_.Amount(group, GroupAmount::kHigh), HVC_KB_NONE);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::ProcessStats(Group &group, GroupMemoryStatsRecord &record) {
  Renew(group, kStatsRecord);
  const ProcessStatus *status = tree_.StatusOf(group);
  if (status == nullptr) return HVC_NOT_FOUND;
  const Figure saved = SharingOf(sharing_, group).Saved();
  record.memSize = status->size.Cell(0);
  record.memSizePeak = status->sizePeak.Cell(0);
  record.consumed = status->Consumed().Cell(0);
  record.consumedPeak = status->ConsumedPeak().Cell(0);
  record.touched = status->Consumed().Cell(0);
  record.ovhd = status->pageTables.Cell(0);
  record.sharedSaved = saved.Cell(0);
  if (group.kind != GroupKind::kVm) return tree_.Confirm(group);
  // A guest is as large as it was made; the process' own peak would be one of something else.
  const Figure guestMemory = tree_.GuestMemory(group);
  if (!guestMemory.isAbsent()) record.memSize = record.memSizePeak = guestMemory.Cell(0);
  record.ovhd = status->Overhead(guestMemory).Cell(0);
  const Limits limits = LimitsOf(group, kVmStatsRecord);
  record.bMin = limits.min;
  record.bMax = limits.max;
  return tree_.Confirm(group);
}

HVC_ReturnStatus GroupRecords::VmmStats(Group &group, GroupMemoryStatsRecord &record) {
  Group *vm = tree_.Find(group.parentID);
  if (vm == nullptr) return HVC_NOT_FOUND;
  Renew(*vm, kVmmStatsRecord);
  const ProcessStatus *status = tree_.StatusOf(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  record.memSize = record.consumed = status->Overhead(tree_.GuestMemory(*vm)).Cell(0);
  const Limits limits = LimitsOf(group, kVmmStatsRecord);
  record.bMin = limits.min;
  record.bMax = limits.max;
  return tree_.Confirm(*vm);
}

void GroupRecords::Renew(Group &keeper, GivenRecord record) {
  if ((keeper.recordsGiven & record) != 0) {
    if (keeper.kind == GroupKind::kHost) meminfo_.reset();
    if (record == kCapacityRecord) {
      for (const int64_t id : keeper.children) {
        if (Group *child = tree_.FindKnown(id); child != nullptr) child->Drop();
      }
    }
  }
  keeper.Renew(record);
}

const Meminfo &GroupRecords::HostMemory() {
  if (!meminfo_) meminfo_ = ReadMeminfo(files_);
  return *meminfo_;
}

// A machine with a control group of its own has the limits of that; nothing else limits a process or reserves for it.
GroupRecords::Limits GroupRecords::LimitsOf(Group &group, GivenRecord record) {
  Group *process = group.kind == GroupKind::kVmm ? tree_.FindKnown(group.parentID) : &group;
  Group *own = process != nullptr && process->kind == GroupKind::kVm ? tree_.OwnControlGroup(*process) : nullptr;
  if (own == nullptr) return {};
  Renew(*own, record);
  return {.min = CellInKB(tree_.Amount(*own, GroupAmount::kMin), 0),
          .max = CellInKB(tree_.Amount(*own, GroupAmount::kMax), HVC_KB_NONE)};
}

Figure GroupRecords::ReservedByChildren(Group &group) {
  if (tree_.hierarchy().memoryFiles != MemoryFiles::kV2) return Figure(0);
  if (tree_.LearnFolders(group) != HVC_OK) return Figure::Unreadable();
  Figure sum(0);
  for (const int64_t id : group.children) {
    Group *child = id >= kFirstControlGroup ? tree_.Find(id) : nullptr;
    if (child != nullptr) sum = sum + tree_.Amount(*child, GroupAmount::kMin);
  }
  return sum;
}

// What the kernel protects of a group is bounded by the reservation of every group above it.
Figure GroupRecords::LowestMin(Group &group) {
  Figure lowest = tree_.Amount(group, GroupAmount::kMin);
  for (Group *above = tree_.Find(group.parentID); above != nullptr && above->kind == GroupKind::kControlGroup;
       above = tree_.Find(above->parentID)) {
    lowest = Lower(lowest, tree_.Amount(*above, GroupAmount::kMin));
  }
  return lowest;
}

// A file that every group has is missing if the group has vanished, or has no memory controller.
bool GroupRecords::IsGone(const Group &group, Figure required) {
  return required.isAbsent() && !files_.Exists(HostPath(group.folder));
}

}  // namespace platkit
