#include "platkit/linux/groups/group_reader.h"

#include "platkit/linux/groups/process_identity.h"
#include "platkit/linux/kernel/process_sched.h"

namespace platkit {
namespace {

template <typename Readings>
Readings &Allocated(std::unique_ptr<Readings> &readings) {
  if (readings == nullptr) readings = std::make_unique<Readings>();
  return *readings;
}

}  // namespace

const CgroupMount &GroupReader::mount() {
  if (!mount_) mount_ = FindCgroupMount(files_);
  return *mount_;
}

Figure GroupReader::Amount(Group &group, CgroupAmount amount) {
  return Allocated(group.cgroup).amounts[static_cast<size_t>(amount)].Get(files_.clock(), [&] {
    return ReadCgroupAmount(files_, mount().memoryFiles, group.folder, amount);
  });
}

const CgroupStat &GroupReader::Stat(Group &group) {
  return Allocated(group.cgroup).stat.Get(files_.clock(), [&] {
    return ReadCgroupStat(files_, mount().memoryFiles, group.folder);
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
    // The same inode number means the same process; only a changed one needs another system call.
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

HVC_ReturnStatus GroupReader::Confirm(const Group &process) {
  return IsSameProcess(files_, process.id, process.identity) ? HVC_OK : HVC_NOT_FOUND;
}

}  // namespace platkit
