#include "platkit/linux/groups/group_reader.h"

#include <utility>

#include "platkit/linux/groups/process_identity.h"
#include "platkit/linux/kernel/process_sched.h"

namespace platkit {
namespace {

template <typename Readings>
Readings &Allocated(std::unique_ptr<Readings> &readings) {
  if (readings == nullptr) readings = std::make_unique<Readings>();
  return *readings;
}

// Whether an amount can change only when the group's memory usage changes: the peaks and the kernel memory.
bool FollowsMemory(CgroupAmount amount) {
  return amount == CgroupAmount::kPeak || amount == CgroupAmount::kWithSwapPeak || amount == CgroupAmount::kSwapPeak ||
         amount == CgroupAmount::kKernel;
}

bool IsSetting(CgroupAmount amount) {
  return amount == CgroupAmount::kMin || amount == CgroupAmount::kLow || amount == CgroupAmount::kHigh ||
         amount == CgroupAmount::kMax || amount == CgroupAmount::kSwapMax || amount == CgroupAmount::kWithSwapMax ||
         amount == CgroupAmount::kZswapMax;
}

}  // namespace

const CgroupMount &GroupReader::mount() {
  if (!mount_) mount_ = FindCgroupMount(files_);
  return *mount_;
}

Figure GroupReader::Amount(Group &group, CgroupAmount amount) {
  CgroupReadings &readings = Allocated(group.cgroup);
  Fresh<Figure> &figure = readings.amounts[static_cast<size_t>(amount)];
  const auto read = [&] { return ReadCgroupAmount(files_, mount().memoryFiles, group.folder, amount); };
  if (!files_.isSampled()) return figure.Get(files_.clock(), read);
  if (FollowsMemory(amount)) return GetIfChanged(group, figure, read);
  if (IsSetting(amount)) return figure.GetYounger(files_.clock(), files_.settingsAge(), read);
  const Figure value = figure.Get(files_.clock(), read);
  if (amount == CgroupAmount::kCurrent && value != std::exchange(readings.current, value)) {
    readings.changedAt = files_.clock().Now();
  }
  return value;
}

// Reading memory.stat takes as long as reading ten other files.
const CgroupStat &GroupReader::Stat(Group &group) {
  Fresh<CgroupStat> &stat = Allocated(group.cgroup).stat;
  const auto read = [&] { return ReadCgroupStat(files_, mount().memoryFiles, group.folder); };
  return files_.isSampled() ? GetIfChanged(group, stat, read) : stat.Get(files_.clock(), read);
}

// Reads the value again only if the group's memory has changed, or a minute has passed. This saves most reads, because
// most groups of a host are idle.
template <typename T, typename Read>
T &GroupReader::GetIfChanged(Group &group, Fresh<T> &value, Read read) {
  Amount(group, CgroupAmount::kCurrent);
  return value.GetIfChanged(files_.clock(), std::chrono::minutes(1), group.cgroup->changedAt, [&] {
    const HostFiles::KeepNoMore seldom(files_);
    return read();
  });
}

Figure GroupReader::LimitHits(Group &group) {
  return Allocated(group.cgroup).limitHits.Get(files_.clock(), [&] {
    return ReadCgroupLimitHits(files_, mount().memoryFiles, group.folder);
  });
}

const MemoryPressure &GroupReader::Pressure(Group &group) {
  return Allocated(group.cgroup).pressure.Get(files_.clock(), [&] {
    if (mount().memoryFiles != CgroupVersion::kV2) return MemoryPressure();
    return ReadMemoryPressure(files_, HostPath(group.folder, "/memory.pressure"));
  });
}

const ProcessStatus *GroupReader::Status(Group &process) {
  std::optional<ProcessStatus> &status = Allocated(process.process).status.Get(files_.clock(), [&] {
    std::optional<ProcessStatus> read(std::in_place);
    const bool isRead = ReadProcessStatus(files_, process.id, *read) == HVC_OK;
    // The same inode number means the same process. Only a changed number needs another system call.
    const bool isSame = read->identity.inode == process.identity.inode || Confirm(process) == HVC_OK;
    if (!isRead || !isSame) read.reset();
    return read;
  });
  return status ? &*status : nullptr;
}

const ProcessKsm &GroupReader::Ksm(Group &process) {
  return Allocated(process.process).ksm.Get(files_.clock(), [&] { return ReadProcessKsm(files_, process.id); });
}

Figure GroupReader::NumaMovedPages(Group &process) {
  return Allocated(process.process).numaMovedPages.Get(files_.clock(), [&] {
    return ReadNumaMovedPages(files_, process.id);
  });
}

const KvmVms &GroupReader::kvmVms() {
  return kvmVms_.Get(files_.clock(), [&] { return ReadKvmVms(files_); });
}

const KvmPages &GroupReader::GuestPages(Group &vm) {
  return vm.vm->kvmPages.Get(files_.clock(), [&] { return ReadKvmPages(files_, kvmVms(), vm.id); });
}

HVC_ReturnStatus GroupReader::Confirm(Group &process) {
  if (process.confirmedReads == files_.reads()) return HVC_OK;
  if (!IsSameProcess(files_, process.id, process.identity)) return HVC_NOT_FOUND;
  process.confirmedReads = files_.reads();
  return HVC_OK;
}

}  // namespace platkit
