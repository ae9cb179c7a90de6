// Which processes run a virtual machine, and what their command lines say of it.
#ifndef PLATKIT_LINUX_GROUPS_VM_DETECTOR_H
#define PLATKIT_LINUX_GROUPS_VM_DETECTOR_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"
#include "platkit/linux/kernel/process_status.h"

namespace platkit {

struct VirtualMachine {
  std::string name;    // empty: the command line gives none
  Figure guestMemory;  // in KB; absent: the command line gives none
  Figure mostMemory;   // what it may grow to, in KB; absent: it stays as it is
};

// Takes the words of a command line, each ended by a NUL. The last word of an option that is given twice counts.
VirtualMachine ParseCommandLine(std::string_view commandLine);

// A process runs a virtual machine if it is QEMU by its program's name, if KVM lists a machine of one of its threads,
// or, where that list is not for this user or does not tell, if it holds a KVM machine open. The last costs a look at
// each of its descriptors, and is done only for processes of several threads while KVM is in use.
class VirtualMachineFinder {
 public:
  explicit VirtualMachineFinder(HostFiles &files) : files_(files) {}

  // Nothing if the process runs none.
  std::optional<VirtualMachine> Find(int64_t pid, const ProcessStatus &status);

  // Looks at KVM anew the next time.
  void Forget() { kvmOwners_ = {}, allOwnersKnown_.reset(), kvmInUse_.reset(); }

 private:
  bool OwnsKvmMachine(int64_t pid, const ProcessStatus &status);
  bool HoldsKvmMachine(int64_t pid);
  bool ReadKvmOwners();
  bool IsKvmInUse();

  HostFiles &files_;
  std::vector<int64_t> kvmOwners_;      // sorted
  std::optional<bool> allOwnersKnown_;  // empty: KVM's list has not been read
  std::optional<bool> kvmInUse_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_VM_DETECTOR_H
