#include "platkit/linux/groups/vm_scope.h"

#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

// Takes folders with this suffix. Returns the first one without it.
std::string_view TakeFoldersWithSuffix(TextScanner &folders, std::string_view suffix) {
  std::string_view folder;
  do {
    folder = folders.TakeUntil('/');
  } while (folder.ends_with(suffix));
  return folder;
}

}  // namespace

bool IsInVmScope(std::string_view group) {
  TextScanner folders(group);
  folders.Take("/");
  const std::string_view top = folders.TakeUntil('/');
  if (top == "machine") {
    return TakeFoldersWithSuffix(folders, ".partition").ends_with(".libvirt-qemu");
  }
  if (!top.ends_with(".slice")) return false;
  const std::string_view scope = TakeFoldersWithSuffix(folders, ".slice");
  return scope.ends_with(".scope") && (scope.starts_with("machine-qemu\\x2d") || top == "qemu.slice");
}

}  // namespace platkit
