#include "platkit/linux/records/group_records.h"

#include <algorithm>
#include <string_view>

#include "platkit/linux/files/printable.h"
#include "platkit/linux/groups/process_memory.h"

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

// The percentage of the time in which at least one task was not waiting for memory. 100 if the kernel does not measure
// it.
uint8_t PercentNotStalled(const MemoryPressure &pressure) {
  return (Figure(100) - pressure.full.IfAbsent(Figure(0))).Cell8(100);
}

}  // namespace

// Finds a group and determines whether it is a process or a VM. Returns null if it does not exist.
Group *GroupRecords::FindOfKnownKind(int64_t id) {
  Group *group = tree_.Find(id);
  if (group != nullptr) tree_.DetectVm(*group);
  return group;
}

HVC_ReturnStatus GroupRecords::Name(int64_t id, GroupNameRecord &record) {
  const Group *group = FindOfKnownKind(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  PrintableName(group->name, sizeof record.name - 1).copy(record.name, sizeof record.name);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::Tag(int64_t id, GroupTagRecord &record) {
  const Group *group = FindOfKnownKind(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  TraitsOf(*group).tag.copy(record.tag, sizeof record.tag);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::ParentID(int64_t id, ParentGroupIDRecord &record) {
  const Group *group = tree_.Find(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  record.parentGroupID = group->parentID;
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::Flags(int64_t id, GroupFlagsRecord &record) {
  const Group *group = FindOfKnownKind(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  record.flags = TraitsOf(*group).flags;
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::LeaderID(int64_t id, GroupLeaderIDRecord &record) {
  const Group *group = tree_.Find(id);
  if (group == nullptr || !IsProcess(*group)) return HVC_NOT_FOUND;
  record.leaderID = static_cast<uint32_t>(group->id);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::Members(int64_t id, ParamList &list) {
  Group *group = tree_.Find(id);
  return group == nullptr ? HVC_NOT_FOUND : tree_.List(*group, list);
}

HVC_ReturnStatus GroupRecords::MemClients(int64_t id, ParamList &list) {
  const Group *group = tree_.Find(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  return IsProcess(*group) || group->kind == GroupKind::kVmm ? list.Add(group->id) : HVC_OK;
}

HVC_ReturnStatus GroupRecords::NumVMs(NumVMsRecord &record) {
  Figure count;
  const HVC_ReturnStatus status = tree_.CountVms(count);
  record.numVMs = count.Cell32(0);
  return status;
}

// Linux has neither memory shares nor a limit on reservations. The record of a control group has the group's own
// settings. The records of a VM and its VMM have the limit that applies to them, wherever it is set, and the
// reservation of the VM's own control group.
HVC_ReturnStatus GroupRecords::Alloc(int64_t id, GroupAllocRecord &record) {
  Group *group = FindOfKnownKind(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  record.max = HVC_KB_NONE;
  record.minLimit = HVC_KB_NONE;
  if (group->kind == GroupKind::kControlGroup) {
    const Figure max = reader_.Amount(*group, CgroupAmount::kMax);
    if (IsGone(*group, max)) return HVC_NOT_FOUND;
    record.min = CellInKB(reader_.Amount(*group, CgroupAmount::kMin), 0);
    record.max = CellInKB(max, HVC_KB_NONE);
  } else if (Group *vm = VmOf(*group); vm != nullptr) {
    if (Group *own = vms_.OwnControlGroup(*vm); own != nullptr) {
      record.min = CellInKB(reader_.Amount(*own, CgroupAmount::kMin), 0);
    }
    record.max = CellInKB(limits_.Lowest(*vm, CgroupAmount::kMax), HVC_KB_NONE);
  }
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::Capacity(int64_t id, GroupCapacityRecord &record) {
  Group *group = tree_.Find(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  if (group->kind != GroupKind::kHost && group->kind != GroupKind::kControlGroup) return HVC_OK;
  Figure own = Figure(0);
  if (group->kind == GroupKind::kControlGroup) {
    own = reader_.Amount(*group, CgroupAmount::kMin);
    if (IsGone(*group, own.IfAbsent(reader_.Amount(*group, CgroupAmount::kMax)))) return HVC_NOT_FOUND;
  } else {
    own = host_.meminfo().total * 1024;
  }
  const Figure reserved = ReservedByChildren(*group);
  record.consumedResv = CellInKB(reserved, 0);
  record.availResv = CellInKB(own - reserved, 0);
  return HVC_OK;
}

// `touched` is unavailable: on Linux, every way to measure it has side effects.
HVC_ReturnStatus GroupRecords::MemoryStats(int64_t id, GroupMemoryStatsRecord &record) {
  Group *group = FindOfKnownKind(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  record.bMax = HVC_KB_NONE;
  record.allocTgt = HVC_KB_NONE;
  record.touched = HVC_KB_NONE;
  record.throttlePct = PercentNotStalled({});
  switch (group->kind) {
    case GroupKind::kHost: HostStats(record); break;
    case GroupKind::kKernel: KernelStats(record); break;
    case GroupKind::kControlGroup: return ControlGroupStats(*group, record);
    case GroupKind::kProcess:
    case GroupKind::kVm: return ProcessStats(*group, record);
    case GroupKind::kVmm: return VmmStats(*group, record);
  }
  return HVC_OK;
}

void GroupRecords::HostStats(GroupMemoryStatsRecord &record) {
  const Meminfo &memory = host_.meminfo();
  record.memSize = memory.total.Cell(0);
  record.consumed = (memory.total - memory.free).Cell(0);
  record.ovhd = memory.kernel.Cell(0);
  record.sharedSaved = sharing_.SavedOnHost().Cell(0);
  record.throttlePct = PercentNotStalled(host_.pressure());
  // The kernel keeps no peaks of the host. The host's memory does not grow, so its peak is its size.
  record.memSizePeak = record.memSize;
  record.consumedPeak = HVC_KB_NONE;
}

// All memory in use that no other member of the host consumes, so that the members add up to the host: memory of the
// kernel, huge pages of pools that no process outside of control groups uses, and files that were cached before their
// group was created. Without a memory controller, nothing is charged.
void GroupRecords::KernelStats(GroupMemoryStatsRecord &record) {
  const Meminfo &memory = host_.meminfo();
  const bool isCharged = reader_.mount().memoryFiles != CgroupVersion::kNone;
  const Figure members = isCharged ? ConsumedByMembers(*tree_.Find(kHostGroup)) : Figure();
  record.memSize = memory.kernel.Cell(0);
  record.consumed = (isCharged ? memory.total - memory.free - members : memory.kernel).Cell(0);
  record.memSizePeak = record.consumedPeak = HVC_KB_NONE;
}

// The memory that the host's control groups and its processes outside of them consume, in KB.
Figure GroupRecords::ConsumedByMembers(Group &host) {
  if (tree_.FindMembers(host) != HVC_OK) return Figure::Unreadable();
  Figure sum(0);
  for (const int64_t id : host.controlGroups) {
    Group *group = tree_.FindKnown(id);
    if (group == nullptr) continue;
    const Figure consumed = reader_.Amount(*group, CgroupAmount::kCurrent);
    if (!IsGone(*group, consumed)) sum = sum + consumed.IfAbsent(Figure::Unreadable()) / 1024;
  }
  for (const int64_t id : host.processes) {
    Group *process = tree_.FindKnown(id);
    const ProcessStatus *status = process == nullptr ? nullptr : reader_.Status(*process);
    if (status != nullptr) sum = sum + Consumed(*status);
  }
  return sum;
}

// If the memory controller is not enabled for a group, the controller's files are missing. The amounts of the group are
// then unavailable, and it has neither a reservation nor a limit.
HVC_ReturnStatus GroupRecords::ControlGroupStats(Group &group, GroupMemoryStatsRecord &record) {
  Figure consumed = reader_.Amount(group, CgroupAmount::kCurrent);
  if (IsGone(group, consumed)) return HVC_NOT_FOUND;
  const CgroupVersion version = reader_.mount().memoryFiles;
  const CgroupStat &stat = reader_.Stat(group);
  const Figure swap = version == CgroupVersion::kV1 ? stat.swap : reader_.Amount(group, CgroupAmount::kSwap);
  const Figure kernel = version == CgroupVersion::kV1 ? reader_.Amount(group, CgroupAmount::kKernel) : stat.kernel;
  consumed = consumed.IfAbsent(Figure::Unreadable());
  const Figure peak = Higher(reader_.Amount(group, CgroupAmount::kPeak).IfAbsent(Figure::Unreadable()), consumed);
  record.consumed = CellInKB(consumed, 0);
  record.consumedPeak = CellInKB(peak, 0);
  record.memSize = CellInKB(consumed + swap, 0);
  record.memSizePeak = CellInKB(Higher(SizePeak(group, peak), consumed + swap), 0);
  record.ovhd = CellInKB(kernel, HVC_KB_NONE);
  record.bMin = record.rMinPeak = CellInKB(reader_.Amount(group, CgroupAmount::kMin), 0);
  record.rMinChildPeak = CellInKB(ReservedByChildren(group), 0);
  record.bMax = CellInKB(reader_.Amount(group, CgroupAmount::kMax), HVC_KB_NONE);
  record.iMin = CellInKB(reader_.Amount(group, CgroupAmount::kLow), 0);
  record.throttlePct = PercentNotStalled(reader_.Pressure(group));
  record.sharedSaved = sharing_.OfControlGroup().Cell(0);
  FillLimits(group, group, record);
  return HVC_OK;
}

// The peak of memory plus swap space. Version 2 has separate peaks of the two, whose sum is an upper bound. Without
// swap accounting, it is `peak`, the peak of memory alone.
Figure GroupRecords::SizePeak(Group &group, Figure peak) {
  if (reader_.mount().memoryFiles == CgroupVersion::kV1) {
    return reader_.Amount(group, CgroupAmount::kWithSwapPeak).IfAbsent(peak);
  }
  if (reader_.Amount(group, CgroupAmount::kSwap).isAbsent()) return peak;
  return peak + reader_.Amount(group, CgroupAmount::kSwapPeak).IfAbsent(Figure::Unreadable());
}

// The kernel protects at most the lowest reservation of a group and the control groups above it, and throttles the
// group at their lowest limit. For a VM, `limited` is the VM itself, whose process may
// be in a subgroup with lower limits, and `reserved` is its own control group (see OwnControlGroup).
void GroupRecords::FillLimits(Group &limited, Group &reserved, GroupMemoryStatsRecord &record) {
  const Figure high = limits_.Lowest(limited, CgroupAmount::kHigh);
  record.allocTgt = CellInKB(Lower(high, limits_.Lowest(limited, CgroupAmount::kMax)), HVC_KB_NONE);
  record.eMin = record.eMinPeak = CellInKB(limits_.Lowest(reserved, CgroupAmount::kMin), 0);
}

HVC_ReturnStatus GroupRecords::ProcessStats(Group &group, GroupMemoryStatsRecord &record) {
  const ProcessStatus *status = reader_.Status(group);
  if (status == nullptr) return HVC_NOT_FOUND;
  record.memSize = status->size().Cell(0);
  record.memSizePeak = HVC_KB_NONE;
  record.consumed = Consumed(*status).Cell(0);
  record.consumedPeak = ConsumedPeak(*status).Cell(0);
  record.ovhd = status->pageTables.Cell(0);
  record.sharedSaved = sharing_.OfProcess(group).saved.Cell(0);
  if (group.kind != GroupKind::kVm) return reader_.Confirm(group);
  // The size of the guest's memory is also its peak: a peak of the process would include other memory.
  const Figure guestSize = vms_.GuestSize(group, *status);
  if (!guestSize.isAbsent()) record.memSize = record.memSizePeak = guestSize.Cell(0);
  record.ovhd = vms_.Overhead(group, *status).Cell(0);
  record.bMax = CellInKB(limits_.Lowest(group, CgroupAmount::kMax), HVC_KB_NONE);
  if (Group *own = vms_.OwnControlGroup(group); own != nullptr) {
    record.bMin = record.rMinPeak = CellInKB(reader_.Amount(*own, CgroupAmount::kMin), 0);
    FillLimits(group, *own, record);
    record.throttlePct = PercentNotStalled(reader_.Pressure(*own));
  } else {
    record.allocTgt = record.bMax;
  }
  return reader_.Confirm(group);
}

HVC_ReturnStatus GroupRecords::VmmStats(Group &group, GroupMemoryStatsRecord &record) {
  Group *vm = tree_.Find(group.parentID);
  if (vm == nullptr) return HVC_NOT_FOUND;
  const ProcessStatus *status = reader_.Status(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  record.memSize = record.consumed = vms_.Overhead(*vm, *status).Cell(0);
  record.memSizePeak = record.consumedPeak = HVC_KB_NONE;
  record.bMax = record.allocTgt = CellInKB(limits_.Lowest(*vm, CgroupAmount::kMax), HVC_KB_NONE);
  return reader_.Confirm(*vm);
}

// Returns the group if it is a VM, or the VM of a VMM. Returns null for other groups.
Group *GroupRecords::VmOf(Group &group) {
  if (group.kind == GroupKind::kVmm) return tree_.FindKnown(group.parentID);
  return group.kind == GroupKind::kVm ? &group : nullptr;
}

Figure GroupRecords::ReservedByChildren(Group &group) {
  if (reader_.mount().memoryFiles != CgroupVersion::kV2) return Figure(0);
  if (tree_.FindControlGroupsBelow(group) != HVC_OK) return Figure::Unreadable();
  Figure sum(0);
  for (const int64_t id : group.controlGroups) {
    if (Group *child = tree_.FindKnown(id); child != nullptr) sum = sum + reader_.Amount(*child, CgroupAmount::kMin);
  }
  return sum;
}

// Whether the group has vanished. `required` comes from a file that every group with a memory controller has.
bool GroupRecords::IsGone(const Group &group, Figure required) {
  return required.isAbsent() && !files_.Exists(HostPath(group.folder));
}

}  // namespace platkit
