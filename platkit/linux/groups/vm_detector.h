// Detects the processes that run a virtual machine.
#ifndef PLATKIT_LINUX_GROUPS_VM_DETECTOR_H
#define PLATKIT_LINUX_GROUPS_VM_DETECTOR_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/kernel/kvm_debugfs.h"
#include "platkit/linux/kernel/qemu_cmdline.h"

namespace platkit {

// A process runs a VM if
// - its program is QEMU by its name, or
// - KVM's list of VMs names one of its threads, or
// - that list cannot be read or is incomplete, and the process has an open descriptor of a KVM VM.
//
// The last check reads a link per descriptor, so it is limited to processes with several threads, and runs only while
// KVM is in use.
class VmDetector {
 public:
  explicit VmDetector(HostFiles &files) : files_(files) {}

  // Returns the VM's command line; nullopt if the process runs no VM. `name` is the process' own (see ProcessStatus).
  std::optional<QemuOptions> Detect(int64_t pid, std::string_view name, uint64_t threads);

 private:
  bool OwnsKvmVm(int64_t pid, uint64_t threads);

  HostFiles &files_;
  Fresh<KvmOwners> kvmOwners_;
  Fresh<bool> isKvmInUse_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_VM_DETECTOR_H
