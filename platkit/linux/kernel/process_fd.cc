#include "platkit/linux/kernel/process_fd.h"

#include "platkit/linux/files/folder_reader.h"

namespace platkit {

bool HoldsKvmVm(HostFiles &files, int64_t pid) {
  FolderReader descriptors(files, HostPath("proc/", pid, "/fd"));
  FolderReader::Entry entry;
  while (descriptors.Next(entry)) {
    char buffer[64];
    std::string_view target;
    const HVC_ReturnStatus status = files.ReadLink(HostPath("proc/", pid, "/fd/", entry.name), buffer, target);
    if (status == HVC_NO_PERMISSION) return false;  // the kernel permits all descriptors of a process or none
    if (status == HVC_OK && target == "anon_inode:kvm-vm") return true;
  }
  return false;
}

}  // namespace platkit
