// How many virtual machines the host runs.
#ifndef PLATKIT_LINUX_GROUPS_VM_COUNTER_H
#define PLATKIT_LINUX_GROUPS_VM_COUNTER_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/groups/group_tree.h"
#include "platkit/linux/groups/vm_detector.h"
#include "platkit/records.h"
#include "platkit/status.h"

namespace platkit {

class MachineCounter {
 public:
  MachineCounter(HostFiles &files, GroupTree &tree) : files_(files), tree_(tree) {}

  // Looks at each process. What the tree of groups knows of one already is not read again.
  [[nodiscard]] HVC_ReturnStatus Count(NumVMsRecord &record);

 private:
  bool IsMachine(int64_t pid, VirtualMachineFinder &finder);

  HostFiles &files_;
  GroupTree &tree_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_VM_COUNTER_H
