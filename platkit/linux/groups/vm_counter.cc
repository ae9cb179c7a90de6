#include "platkit/linux/groups/vm_counter.h"

#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/process_status.h"

namespace platkit {

bool MachineCounter::IsMachine(int64_t pid, VirtualMachineFinder &finder) {
  if (Group *known = tree_.FindKnown(pid); known != nullptr) {
    tree_.SeekVm(*known);
    return known->kind == GroupKind::kVm;
  }
  ProcessStatus status;
  return ReadProcessStatus(files_, pid, status) == HVC_OK && finder.Find(pid, status).has_value();
}

HVC_ReturnStatus MachineCounter::Count(NumVMsRecord &record) {
  VirtualMachineFinder finder(files_);
  FolderReader processes(files_, HostPath("proc"));
  for (FolderReader::Entry entry; processes.Next(entry);) {
    uint64_t pid = 0;
    if (!ParseNumber(entry.name, pid) || pid == 0 || pid >= static_cast<uint64_t>(kKernelGroup)) continue;
    if (IsMachine(static_cast<int64_t>(pid), finder)) ++record.numVMs;
  }
  return processes.status();
}

}  // namespace platkit
