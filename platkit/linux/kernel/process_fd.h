// /proc/PID/fd: the open descriptors of a process.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_FD_H
#define PLATKIT_LINUX_KERNEL_PROCESS_FD_H

#include <cstdint>

#include "platkit/linux/files/host_files.h"

namespace platkit {

// Whether the process has a KVM VM open: a descriptor of anon_inode:kvm-vm. Reads a link for each descriptor. False if
// this user may not read them.
bool HoldsKvmVm(HostFiles &files, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_FD_H
