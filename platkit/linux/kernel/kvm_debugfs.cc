#include "platkit/linux/kernel/kvm_debugfs.h"

#include <algorithm>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/process_fd.h"
#include "platkit/linux/kernel/process_status.h"

namespace platkit {
namespace {

constexpr std::string_view kFolder = "sys/kernel/debug/kvm";

}  // namespace

bool KvmVms::Has(int64_t pid) const { return std::ranges::binary_search(vms, pid, {}, &KvmVm::pid); }

KvmVms ReadKvmVms(HostFiles &files) {
  KvmVms list = {.vms = {}, .isComplete = true};
  FolderReader folder(files, HostPath(kFolder));
  FolderReader::Entry entry;
  while (folder.Next(entry)) {
    uint64_t thread = 0;
    uint64_t descriptor = 0;
    TextScanner scanner(entry.name);
    if (!scanner.TakeNumber(thread) || !scanner.Take("-") || !scanner.TakeNumber(descriptor)) continue;
    int64_t pid = 0;
    if (ReadProcessOfThread(files, static_cast<int64_t>(thread), pid) == HVC_OK && MayBeKvmVm(files, pid, descriptor)) {
      list.vms.push_back({pid, std::string(entry.name)});
    } else {
      list.isComplete = false;
    }
  }
  std::ranges::sort(list.vms, {}, &KvmVm::pid);
  list.isComplete = list.isComplete && folder.status() == HVC_OK;
  return list;
}

KvmPages ReadKvmPages(HostFiles &files, const KvmVms &vms, int64_t pid) {
  KvmPages pages;
  for (const KvmVm &vm : vms.vms) {
    if (vm.pid != pid) continue;
    const auto count = [&](std::string_view file) {
      return ReadAmount(files, HostPath(kFolder, "/", vm.folder, file));
    };
    pages.small = pages.small + count("/pages_4k");
    pages.large = pages.large + count("/pages_2m");
    pages.gigantic = pages.gigantic + count("/pages_1g");
  }
  // A guest that has run has mapped pages, so 0 of all sizes means that the kernel does not count them.
  return pages.KB() == Figure(0) ? KvmPages() : pages;
}

}  // namespace platkit
