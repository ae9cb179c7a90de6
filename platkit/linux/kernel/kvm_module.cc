#include "platkit/linux/kernel/kvm_module.h"

#include <string_view>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

bool IsKvmInUse(HostFiles &files) {
  bool isModule = false;
  bool inUse = false;
  for (const std::string_view module : {"kvm_intel", "kvm_amd", "kvm"}) {
    const Figure users = ReadAmount(files, HostPath("sys/module/", module, "/refcnt"));
    isModule = isModule || !users.isAbsent();
    inUse = inUse || users.Cell(0) > 0;
  }
  return isModule ? inUse : files.Exists(HostPath("dev/kvm"));
}

}  // namespace platkit
