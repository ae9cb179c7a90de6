// /sys/kernel/debug/kvm: the VMs of KVM. Only root may list it.
#ifndef PLATKIT_LINUX_KERNEL_KVM_DEBUGFS_H
#define PLATKIT_LINUX_KERNEL_KVM_DEBUGFS_H

#include <cstdint>
#include <vector>

#include "platkit/linux/files/host_files.h"

namespace platkit {

struct KvmOwners {
  std::vector<int64_t> pids;  // the processes that created a VM, ascending
  bool isComplete = false;    // false: the folder cannot be listed, or the creator of a VM does not hold it any more
};

// Each VM has a folder "<thread>-<descriptor>", named after its creator. Reads the status of each thread for its
// process, and the link of the descriptor: the creator may have passed the VM on, and another process may have got its
// PID.
KvmOwners ReadKvmOwners(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_KVM_DEBUGFS_H
