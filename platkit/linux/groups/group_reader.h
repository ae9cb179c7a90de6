// Reads the files of groups. What was read is reused while it is fresh.
#ifndef PLATKIT_LINUX_GROUPS_GROUP_READER_H
#define PLATKIT_LINUX_GROUPS_GROUP_READER_H

#include <optional>

#include "platkit/linux/groups/group.h"
#include "platkit/linux/kernel/cgroup_mount.h"

namespace platkit {

class GroupReader {
 public:
  explicit GroupReader(HostFiles &files) : files_(files) {}

  // The mount that control groups are read from. It is looked up once.
  const CgroupMount &mount();

  // Of a control group; see ReadCgroupAmount and ReadCgroupStat.
  Figure Amount(Group &group, CgroupAmount amount);
  const CgroupStat &Stat(Group &group);

  // Of a process or a VM. The status is null if the process has ended.
  const ProcessStatus *Status(Group &process);
  const ProcessKsm &Ksm(Group &process);
  Figure NumaMovedPages(Group &process);

  // HVC_NOT_FOUND if the process has ended. What was read of its PID may then be another process'.
  [[nodiscard]] HVC_ReturnStatus Confirm(const Group &process);

 private:
  HostFiles &files_;
  std::optional<CgroupMount> mount_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GROUP_READER_H
