// /sys/module/kvm*: whether KVM is in use.
#ifndef PLATKIT_LINUX_KERNEL_KVM_MODULE_H
#define PLATKIT_LINUX_KERNEL_KVM_MODULE_H

#include "platkit/linux/files/host_files.h"

namespace platkit {

// Whether refcnt of kvm_intel, kvm_amd or kvm is above 0. If KVM is built into the kernel, there is no refcnt; the
// result is then whether /dev/kvm exists.
bool IsKvmInUse(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_KVM_MODULE_H
