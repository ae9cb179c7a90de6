#include "platkit/linux/kernel/kvm_debugfs.h"

#include <algorithm>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/process_fd.h"
#include "platkit/linux/kernel/process_status.h"

namespace platkit {

KvmOwners ReadKvmOwners(HostFiles &files) {
  KvmOwners owners = {.pids = {}, .isComplete = true};
  FolderReader folder(files, HostPath("sys/kernel/debug/kvm"));
  FolderReader::Entry entry;
  while (folder.Next(entry)) {
    uint64_t thread = 0;
    uint64_t descriptor = 0;
    TextScanner scanner(entry.name);
    if (!scanner.TakeNumber(thread) || !scanner.Take("-") || !scanner.TakeNumber(descriptor)) continue;
    int64_t pid = 0;
    if (ReadProcessOfThread(files, static_cast<int64_t>(thread), pid) == HVC_OK && MayBeKvmVm(files, pid, descriptor)) {
      owners.pids.push_back(pid);
    } else {
      owners.isComplete = false;
    }
  }
  std::sort(owners.pids.begin(), owners.pids.end());
  owners.isComplete = owners.isComplete && folder.status() == HVC_OK;
  return owners;
}

}  // namespace platkit
