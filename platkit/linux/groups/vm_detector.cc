#include "platkit/linux/groups/vm_detector.h"

#include <algorithm>

#include "platkit/linux/kernel/kvm_module.h"
#include "platkit/linux/kernel/process_fd.h"

namespace platkit {
namespace {

// The kernel truncates names to 15 characters, so the name only selects the processes whose command line is read.
bool MayBeQemu(std::string_view processName) { return processName.starts_with("qemu") || processName == "kvm"; }

}  // namespace

std::optional<QemuOptions> VmDetector::Detect(int64_t pid, std::string_view name, uint64_t threads) {
  const bool mayBeQemu = MayBeQemu(name);
  if (!mayBeQemu && !OwnsKvmVm(pid, threads)) return std::nullopt;
  const QemuOptions options = ReadQemuCommandLine(files_, pid);
  if (mayBeQemu && !options.isQemu && !OwnsKvmVm(pid, threads)) return std::nullopt;
  return options;
}

bool VmDetector::OwnsKvmVm(int64_t pid, uint64_t threads) {
  const KvmOwners &owners = kvmOwners_.Get(files_.clock(), [this] { return ReadKvmOwners(files_); });
  if (std::binary_search(owners.pids.begin(), owners.pids.end(), pid)) return true;
  if (owners.isComplete || threads <= 1) return false;
  return isKvmInUse_.Get(files_.clock(), [this] { return IsKvmInUse(files_); }) && HoldsKvmVm(files_, pid);
}

}  // namespace platkit
