// The control groups that management tools create for one virtual machine each.
#ifndef PLATKIT_LINUX_GROUPS_VM_SCOPE_H
#define PLATKIT_LINUX_GROUPS_VM_SCOPE_H

#include <string_view>

namespace platkit {

// `group` is a path from the top of the hierarchy. If it is a control group that was created for one virtual machine,
// or is below one, returns the path of that control group, else an empty path. Such control groups are:
// - machine.slice/machine-qemu\x2d1\x2dweb.scope, also in other slices: libvirt with systemd
// - machine/qemu-1-web.libvirt-qemu, also in partitions: libvirt without systemd
// - qemu.slice/100.scope
//
// Only root can create groups at these paths. A user's own groups are below user@1000.service, and the groups of a
// container are below the container's scope, so neither can have such a path.
std::string_view VmScopeOf(std::string_view group);

inline bool IsInVmScope(std::string_view group) { return !VmScopeOf(group).empty(); }

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_VM_SCOPE_H
