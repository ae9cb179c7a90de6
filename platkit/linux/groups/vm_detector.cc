#include "platkit/linux/groups/vm_detector.h"

#include <algorithm>
#include <string>

#include "platkit/linux/files/printable.h"
#include "platkit/linux/groups/vm_scope.h"
#include "platkit/linux/kernel/kvm_module.h"
#include "platkit/linux/kernel/process_exe.h"
#include "platkit/linux/kernel/process_fd.h"
#include "platkit/records.h"

namespace platkit {
namespace {

constexpr size_t kMaxName = sizeof GroupNameRecord{}.name - 1;

// The kernel truncates names to 15 characters, so the name only selects the processes that are examined.
bool MayBeQemu(std::string_view processName) { return processName.starts_with("qemu") || processName == "kvm"; }

// A container may run its processes as root, but it has a PID namespace of its own.
bool IsRunByRoot(const ProcessUser &user) { return user.isRootOnly && !user.isContained; }

// Marks the guest's name as a claim of the user, and drops the maximum memory size. Truncates a long name to make room
// for the mark.
void MarkClaims(const VmDetector::Candidate &process, QemuOptions &options) {
  const std::string user = process.user.realID ? std::to_string(*process.user.realID) : "?";
  const std::string mark = " (uid " + user + ")";
  const std::string_view name = options.name.empty() ? process.name : std::string_view(options.name);
  options.name = PrintableName(name, kMaxName - mark.size()) + mark;
  options.maxMemory = Figure();
}

}  // namespace

// Does not read the command line of a process without other evidence of a VM, because any user can make it long and
// slow to read.
VmDetector::Result VmDetector::Detect(const Candidate &process) {
  Result result;
  const bool isManaged = MayBeQemu(process.name) && (IsInVmGroup(process.pid) || IsRootsQemu(process));
  if (!isManaged && !OwnsKvmVm(process, result.isUnknown)) return result;
  QemuOptions options = ReadQemuCommandLine(files_, process.pid);
  if (isManaged && !options.isQemu && !OwnsKvmVm(process, result.isUnknown)) return result;
  if (!isManaged && !IsRunByRoot(process.user) && !IsInVmGroup(process.pid)) MarkClaims(process, options);
  result.options = std::move(options);
  return result;
}

bool VmDetector::IsInVmGroup(int64_t pid) { return IsInVmScope(ReadFullCgroupOfProcess(files_, reader_.mount(), pid)); }

// By linking to a program that becomes root, such as sudo, a user can give a process of root any name and command line.
// Therefore, this checks the file of the program.
bool VmDetector::IsRootsQemu(const Candidate &process) {
  return IsRunByRoot(process.user) && IsQemuProgram(ReadProgramName(files_, process.pid));
}

bool VmDetector::OwnsKvmVm(const Candidate &process, bool &isUnknown) {
  const KvmVms &list = reader_.kvmVms();
  if (list.Has(process.pid)) return true;
  if (list.isComplete || process.threads <= 1) return false;
  return isKvmInUse_.Get(files_.clock(), [this] { return IsKvmInUse(files_); }) && HoldsKvmVm(process.pid, isUnknown);
}

bool VmDetector::HoldsKvmVm(int64_t pid, bool &isUnknown) {
  size_t &left = descriptorsLeft_.Get(files_.clock(), [this] { return limits_.inAll; });
  const size_t limit = std::min(left, limits_.perProcess);
  const KvmVmSearch search = FindKvmVm(files_, pid, limit);
  left -= search.descriptors;
  isUnknown = !search.isComplete && limit < limits_.perProcess;
  return search.isFound;
}

}  // namespace platkit
