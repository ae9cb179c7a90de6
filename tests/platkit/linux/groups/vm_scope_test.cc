#include "platkit/linux/groups/vm_scope.h"

#include <gtest/gtest.h>

namespace platkit {
namespace {

TEST(VmScope, ControlGroupsOfVms) {
  for (const char *group : {
           "/machine.slice/machine-qemu\\x2d1\\x2dweb.scope",
           "machine.slice/machine-qemu\\x2d1\\x2dweb.scope/libvirt/emulator",
           "/machine.slice/machine-production.slice/machine-qemu\\x2d1\\x2dweb.scope",
           "/vms.slice/machine-qemu\\x2d7\\x2ddb.scope/libvirt",
           "/machine/qemu-1-web.libvirt-qemu",
           "/machine/production.partition/qemu-1-web.libvirt-qemu/emulator",
           "/qemu.slice/100.scope",
       }) {
    EXPECT_TRUE(IsInVmScope(group)) << group;
  }
}

TEST(VmScope, TheGroupItself) {
  const std::string_view scope = "/machine.slice/machine-production.slice/machine-qemu\\x2d1\\x2dweb.scope";
  EXPECT_EQ(VmScopeOf(scope), scope);
  EXPECT_EQ(VmScopeOf(std::string(scope) + "/libvirt/emulator"), scope);
  EXPECT_EQ(VmScopeOf("/machine/qemu-1-web.libvirt-qemu/emulator"), "/machine/qemu-1-web.libvirt-qemu");
  EXPECT_EQ(VmScopeOf("qemu.slice/100.scope/"), "qemu.slice/100.scope");
  EXPECT_EQ(VmScopeOf("/machine.slice"), "");
}

TEST(VmScope, OtherControlGroups) {
  for (const char *group : {
           "",
           "/",
           "/machine.slice",
           "/machine.slice/",
           "/machine.slice/web.scope",
           "/machine.slice/machine-container.scope/machine-qemu\\x2d1\\x2dweb.scope",
           "/machine.slice/libpod-1234.scope/container/machine.slice/machine-qemu\\x2d1\\x2dweb.scope",
           "/machine.slice/machine-qemu\\x2d1\\x2dweb.service",
           "/user.slice/user-1000.slice/user@1000.service/machine.slice/machine-qemu\\x2d1\\x2dweb.scope",
           "/user.slice/user-1000.slice/session-2.scope",
           "/docker/1234/machine.slice/machine-qemu\\x2d1\\x2dweb.scope",
           "/machine-qemu\\x2d1\\x2dweb.scope",
           "/machine/x/qemu-1-web.libvirt-qemu",
           "/machines/qemu-1-web.libvirt-qemu",
           "/qemu.slice",
           "/qemu.slice/100.service/1.scope",
           "/x/qemu.slice/100.scope",
       }) {
    EXPECT_FALSE(IsInVmScope(group)) << group;
  }
}

}  // namespace
}  // namespace platkit
