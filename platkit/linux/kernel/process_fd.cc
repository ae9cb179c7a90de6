#include "platkit/linux/kernel/process_fd.h"

#include "platkit/linux/files/folder_reader.h"

namespace platkit {
namespace {

constexpr std::string_view kKvmVm = "anon_inode:kvm-vm";

}  // namespace

bool MayBeKvmVm(HostFiles &files, int64_t pid, uint64_t descriptor) {
  char buffer[64];
  std::string_view target;
  const auto number = static_cast<int64_t>(descriptor);
  const HVC_ReturnStatus status = files.ReadLink(HostPath("proc/", pid, "/fd/", number), buffer, target);
  return status == HVC_NO_PERMISSION || (status == HVC_OK && target == kKvmVm);
}

KvmVmSearch FindKvmVm(HostFiles &files, int64_t pid, size_t maxDescriptors) {
  KvmVmSearch search;
  FolderReader descriptors(files, HostPath("proc/", pid, "/fd"));
  FolderReader::Entry entry;
  while (!search.isFound && descriptors.Next(entry)) {
    search.isComplete = search.descriptors < maxDescriptors;
    if (!search.isComplete) break;
    ++search.descriptors;
    char buffer[64];
    std::string_view target;
    const HVC_ReturnStatus status = files.ReadLink(HostPath("proc/", pid, "/fd/", entry.name), buffer, target);
    if (status == HVC_NO_PERMISSION) break;  // the kernel permits all descriptors of a process or none
    search.isFound = status == HVC_OK && target == kKvmVm;
  }
  return search;
}

}  // namespace platkit
