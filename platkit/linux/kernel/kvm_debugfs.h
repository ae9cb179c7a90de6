// /sys/kernel/debug/kvm: the VMs of KVM. Only root may list it.
#ifndef PLATKIT_LINUX_KERNEL_KVM_DEBUGFS_H
#define PLATKIT_LINUX_KERNEL_KVM_DEBUGFS_H

#include <cstdint>
#include <vector>

#include "platkit/linux/files/host_files.h"

namespace platkit {

struct KvmOwners {
  std::vector<int64_t> pids;  // the processes that created a VM, ascending
  bool isComplete = false;    // false: the folder cannot be listed, or a thread that created a VM has ended
};

// Each VM has a folder "<thread>-<descriptor>". Reads the status of each thread for its process.
KvmOwners ReadKvmOwners(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_KVM_DEBUGFS_H
