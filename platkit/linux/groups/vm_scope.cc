#include "platkit/linux/groups/vm_scope.h"

#include "platkit/linux/files/text_scanner.h"

namespace platkit {
namespace {

// Takes all folders with this suffix, and the next folder. Returns that folder.
std::string_view TakeFoldersWithSuffix(TextScanner &folders, std::string_view suffix) {
  std::string_view folder;
  do {
    folder = folders.TakeUntil('/');
  } while (folder.ends_with(suffix));
  return folder;
}

}  // namespace

std::string_view VmScopeOf(std::string_view group) {
  const auto upTo = [group](std::string_view folder) {
    return group.substr(0, static_cast<size_t>(folder.data() + folder.size() - group.data()));
  };
  TextScanner folders(group);
  folders.Take("/");
  const std::string_view top = folders.TakeUntil('/');
  if (top == "machine") {
    const std::string_view folder = TakeFoldersWithSuffix(folders, ".partition");
    return folder.ends_with(".libvirt-qemu") ? upTo(folder) : std::string_view();
  }
  if (!top.ends_with(".slice")) return {};
  const std::string_view scope = TakeFoldersWithSuffix(folders, ".slice");
  const bool isVms = scope.ends_with(".scope") && (scope.starts_with("machine-qemu\\x2d") || top == "qemu.slice");
  return isVms ? upTo(scope) : std::string_view();
}

}  // namespace platkit
