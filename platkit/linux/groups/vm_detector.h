// Detects the processes that run a virtual machine.
#ifndef PLATKIT_LINUX_GROUPS_VM_DETECTOR_H
#define PLATKIT_LINUX_GROUPS_VM_DETECTOR_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/groups/group_reader.h"
#include "platkit/linux/kernel/process_status.h"
#include "platkit/linux/kernel/qemu_cmdline.h"

namespace platkit {

// Anybody can start a process with the name and the command line of QEMU. So a process runs a VM only if
// - KVM's list of VMs names one of its threads, or
// - that list cannot be read or is incomplete, and the process has an open descriptor of a KVM VM, or
// - it is managed QEMU: it has the name and the command line of QEMU, and either is in a control group for VMs, or is
//   run by root alone and its program is QEMU.
//
// The command line is trusted if the process is in a control group for VMs or run by root alone. Otherwise, its options
// are only claims of a user: the user's number is appended to the guest's name, as in "web (uid 1000)", and the maximum
// memory size is ignored.
class VmDetector {
 public:
  // The maximum numbers of descriptors to search for a VM.
  struct Limits {
    size_t perProcess = 256;  // a monitor opens its VM early, so the VM is among the lowest
    size_t inAll = 65536;     // within kFreshTime
  };

  VmDetector(HostFiles &files, GroupReader &reader, Limits limits) : files_(files), reader_(reader), limits_(limits) {}

  // Values from the status of the process.
  struct Candidate {
    int64_t pid;
    std::string_view name;
    uint64_t threads;
    ProcessUser user;
  };

  struct Result {
    std::optional<QemuOptions> options = {};  // nullopt: the process is not known to run a VM
    bool isUnknown = false;                   // Limits::inAll ended the search of its descriptors
  };

  Result Detect(const Candidate &process);

 private:
  bool IsInVmGroup(int64_t pid);
  bool IsRootsQemu(const Candidate &process);
  bool OwnsKvmVm(const Candidate &process, bool &isUnknown);
  bool HoldsKvmVm(int64_t pid, bool &isUnknown);

  HostFiles &files_;
  GroupReader &reader_;
  Limits limits_;
  Fresh<bool> isKvmInUse_;
  Fresh<size_t> descriptorsLeft_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_VM_DETECTOR_H
