// /sys/kernel/debug/kvm: the VMs of KVM. Only root may list it.
#ifndef PLATKIT_LINUX_KERNEL_KVM_DEBUGFS_H
#define PLATKIT_LINUX_KERNEL_KVM_DEBUGFS_H

#include <cstdint>
#include <string>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

struct KvmVm {
  int64_t pid;         // the process that created the VM
  std::string folder;  // its folder in /sys/kernel/debug/kvm
};

struct KvmVms {
  std::vector<KvmVm> vms;   // ordered by PID
  bool isComplete = false;  // false: the folder cannot be listed, or the creator of a VM no longer holds the VM

  bool Has(int64_t pid) const;
};

// Each VM has a folder "<thread>-<descriptor>", named after the thread that created the VM. Finds the process of the
// thread, and checks that the descriptor still is a VM: the creator may have passed the VM on and ended, and another
// process may have its PID now.
KvmVms ReadKvmVms(HostFiles &files);

// The host's pages that KVM has mapped for the guests of a process, by size: pages_4k, pages_2m, pages_1g. KVM maps a
// page when the guest first uses it. It drops mappings now and then, although the guest keeps the memory. Absent if the
// process has no VM in the list, or if the kernel does not count pages; some kernels then show 0 pages of all sizes.
struct KvmPages {
  Figure small, large, gigantic;

  Figure KB() const { return small * 4 + large * 2048 + gigantic * 1048576; }
};

KvmPages ReadKvmPages(HostFiles &files, const KvmVms &vms, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_KVM_DEBUGFS_H
