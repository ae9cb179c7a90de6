// /proc/PID/fd: the open descriptors of a process.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_FD_H
#define PLATKIT_LINUX_KERNEL_PROCESS_FD_H

#include <cstddef>
#include <cstdint>

#include "platkit/linux/files/host_files.h"

namespace platkit {

struct KvmVmSearch {
  bool isFound = false;
  bool isComplete = true;  // false: `maxDescriptors` ended the search
  size_t descriptors = 0;  // the number of descriptors that were read
};

// Whether the descriptor of the process is an open KVM VM. Also true if this user may not read it.
bool MayBeKvmVm(HostFiles &files, int64_t pid, uint64_t descriptor);

// Searches the process for an open KVM VM, a descriptor of anon_inode:kvm-vm. Only the kernel gives a descriptor this
// name. Reads the links of at most `maxDescriptors` descriptors, in ascending order, and stops at the first VM. Finds
// nothing if this user may not read the links.
KvmVmSearch FindKvmVm(HostFiles &files, int64_t pid, size_t maxDescriptors);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_FD_H
