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

}  // namespace

// Finds a group and determines whether it is a process or a VM. Null if it does not exist.
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

// Linux has neither memory shares nor a limit on reservations.
HVC_ReturnStatus GroupRecords::Alloc(int64_t id, GroupAllocRecord &record) {
  Group *group = FindOfKnownKind(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  record.max = HVC_KB_NONE;
  record.minLimit = HVC_KB_NONE;
  if (group->kind != GroupKind::kControlGroup) {
    const Limits limits = LimitsOf(*group);
    record.min = limits.min;
    record.max = limits.max;
    return HVC_OK;
  }
  const Figure max = reader_.Amount(*group, CgroupAmount::kMax);
  if (IsGone(*group, max)) return HVC_NOT_FOUND;
  record.min = CellInKB(reader_.Amount(*group, CgroupAmount::kMin), 0);
  record.max = CellInKB(max, HVC_KB_NONE);
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

HVC_ReturnStatus GroupRecords::MemoryStats(int64_t id, GroupMemoryStatsRecord &record) {
  Group *group = FindOfKnownKind(id);
  if (group == nullptr) return HVC_NOT_FOUND;
  record.bMax = HVC_KB_NONE;
  record.allocTgt = HVC_KB_NONE;
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
  record.touched = memory.active.Cell(0);
  record.ovhd = memory.kernel.Cell(0);
  record.sharedSaved = sharing_.SavedOnHost().Cell(0);
}

void GroupRecords::KernelStats(GroupMemoryStatsRecord &record) {
  record.memSize = record.consumed = host_.meminfo().kernel.Cell(0);
}

// A group for which the memory controller is not enabled lacks its files. Its amounts are unavailable; it has no
// reservation and no limit.
HVC_ReturnStatus GroupRecords::ControlGroupStats(Group &group, GroupMemoryStatsRecord &record) {
  Figure consumed = reader_.Amount(group, CgroupAmount::kCurrent);
  if (IsGone(group, consumed)) return HVC_NOT_FOUND;
  const CgroupVersion version = reader_.mount().memoryFiles;
  const CgroupStat &stat = reader_.Stat(group);
  const Figure swap = version == CgroupVersion::kV1 ? stat.swap : reader_.Amount(group, CgroupAmount::kSwap);
  const Figure kernel = version == CgroupVersion::kV1 ? reader_.Amount(group, CgroupAmount::kKernel) : stat.kernel;
  const Figure peak = reader_.Amount(group, CgroupAmount::kPeak);
  consumed = consumed.IfAbsent(Figure::Unreadable());
  record.consumed = CellInKB(consumed, 0);
  record.consumedPeak = CellInKB(peak, HVC_KB_NONE);
  record.memSize = CellInKB(consumed + swap, 0);
  // Without swap accounting, version 1 has no peak of memory and swap; the peak of memory is then the same.
  if (version == CgroupVersion::kV1) {
    record.memSizePeak = CellInKB(reader_.Amount(group, CgroupAmount::kWithSwapPeak).IfAbsent(peak), HVC_KB_NONE);
  }
  record.touched = CellInKB(stat.active, HVC_KB_NONE);
  record.ovhd = CellInKB(kernel, HVC_KB_NONE);
  record.bMin = CellInKB(reader_.Amount(group, CgroupAmount::kMin), 0);
  record.bMax = CellInKB(reader_.Amount(group, CgroupAmount::kMax), HVC_KB_NONE);
  record.iMin = CellInKB(reader_.Amount(group, CgroupAmount::kLow), 0);
  record.eMin = CellInKB(LowestMin(group), 0);
  record.allocTgt = CellInKB(reader_.Amount(group, CgroupAmount::kHigh), HVC_KB_NONE);
  return HVC_OK;
}

HVC_ReturnStatus GroupRecords::ProcessStats(Group &group, GroupMemoryStatsRecord &record) {
  const ProcessStatus *status = reader_.Status(group);
  if (status == nullptr) return HVC_NOT_FOUND;
  record.memSize = status->size.Cell(0);
  record.memSizePeak = status->sizePeak.Cell(0);
  record.consumed = Consumed(*status).Cell(0);
  record.consumedPeak = ConsumedPeak(*status).Cell(0);
  record.touched = Consumed(*status).Cell(0);
  record.ovhd = status->pageTables.Cell(0);
  record.sharedSaved = sharing_.OfProcess(group).saved.Cell(0);
  if (group.kind != GroupKind::kVm) return reader_.Confirm(group);
  // The guest's memory is constant, so its peak is the same; a peak of the process would include other memory.
  const Figure guestMemory = vms_.GuestMemory(group, *status);
  if (!guestMemory.isAbsent()) record.memSize = record.memSizePeak = guestMemory.Cell(0);
  record.ovhd = VmOverhead(*status, guestMemory).Cell(0);
  const Limits limits = LimitsOf(group);
  record.bMin = limits.min;
  record.bMax = limits.max;
  return reader_.Confirm(group);
}

HVC_ReturnStatus GroupRecords::VmmStats(Group &group, GroupMemoryStatsRecord &record) {
  Group *vm = tree_.Find(group.parentID);
  if (vm == nullptr) return HVC_NOT_FOUND;
  const ProcessStatus *status = reader_.Status(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  record.memSize = record.consumed = VmOverhead(*status, vms_.GuestMemory(*vm, *status)).Cell(0);
  const Limits limits = LimitsOf(group);
  record.bMin = limits.min;
  record.bMax = limits.max;
  return reader_.Confirm(*vm);
}

// The limits of a VM's own control group hold for the VM and its VMM. Other processes have none.
GroupRecords::Limits GroupRecords::LimitsOf(Group &group) {
  Group *process = group.kind == GroupKind::kVmm ? tree_.FindKnown(group.parentID) : &group;
  Group *own = process == nullptr ? nullptr : vms_.OwnControlGroup(*process);
  if (own == nullptr) return {};
  return {.min = CellInKB(reader_.Amount(*own, CgroupAmount::kMin), 0),
          .max = CellInKB(reader_.Amount(*own, CgroupAmount::kMax), HVC_KB_NONE)};
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

// The kernel protects at most the reservation of each ancestor.
Figure GroupRecords::LowestMin(Group &group) {
  Figure lowest = reader_.Amount(group, CgroupAmount::kMin);
  for (Group *above = tree_.Find(group.parentID); above != nullptr && above->kind == GroupKind::kControlGroup;
       above = tree_.Find(above->parentID)) {
    lowest = Lower(lowest, reader_.Amount(*above, CgroupAmount::kMin));
  }
  return lowest;
}

// Whether the group has vanished. `required` comes from a file that every group with a memory controller has.
bool GroupRecords::IsGone(const Group &group, Figure required) {
  return required.isAbsent() && !files_.Exists(HostPath(group.folder));
}

}  // namespace platkit
