// Reads the files of groups, and reuses values while they are fresh.
#ifndef PLATKIT_LINUX_GROUPS_GROUP_READER_H
#define PLATKIT_LINUX_GROUPS_GROUP_READER_H

#include <optional>

#include "platkit/linux/groups/group.h"
#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/kvm_debugfs.h"

namespace platkit {

// On a sampled host (HostFiles::isSampled), memory.stat, the peaks and the kernel memory of a control group are read
// again only if the group's memory has changed, or a minute has passed.
class GroupReader {
 public:
  explicit GroupReader(HostFiles &files) : files_(files) {}

  // The mount that contains the control groups. It is looked up once.
  const CgroupMount &mount();

  // For a control group; see ReadCgroupAmount, ReadCgroupStat and ReadCgroupLimitHits.
  Figure Amount(Group &group, CgroupAmount amount);
  const CgroupStat &Stat(Group &group);
  Figure LimitHits(Group &group);

  // The figures are absent on version 1.
  const MemoryPressure &Pressure(Group &group);

  // For a process or a VM. The status is null if the process has ended.
  const ProcessStatus *Status(Group &process);
  const ProcessKsm &Ksm(Group &process);
  Figure NumaMovedPages(Group &process);

  // For a VM. All figures are absent unless this user may read KVM's list.
  const KvmPages &GuestPages(Group &vm);

  // KVM's list of VMs.
  const KvmVms &kvmVms();

  // Checks that the process has not ended. If it has, returns HVC_NOT_FOUND: values that were read for its PID or its
  // control group may belong to another process. Looks at the process only if a file was read since the last check.
  [[nodiscard]] HVC_ReturnStatus Confirm(Group &process);

 private:
  template <typename T, typename Read>
  T &GetIfChanged(Group &group, Fresh<T> &value, Read read);

  HostFiles &files_;
  std::optional<CgroupMount> mount_;
  Fresh<KvmVms> kvmVms_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GROUP_READER_H
