// The names of a group's flags.
#ifndef PLATKIT_GROUP_FLAGS_H
#define PLATKIT_GROUP_FLAGS_H

#include <cstdint>

#include "platkit/records.h"

namespace platkit {

struct GroupFlagName {
  uint32_t flag;
  const char *name;
};

inline constexpr GroupFlagName kGroupFlagNames[] = {
    {HVC_GROUP_PREDEFINED, "pre"},
    {HVC_GROUP_LEAF, "lf"},
    {HVC_GROUP_VM, "vm"},
    {HVC_GROUP_USER_WORLD, "uw"},
    {HVC_GROUP_SYSTEM_WORLD, "sys"},
    {HVC_GROUP_TEST_WORLD, "tw"},
    {HVC_GROUP_PROTECTED, "pr"},
    {HVC_GROUP_SELF_DESTRUCT, "sd"},
    {HVC_GROUP_NON_PERSISTENT, "np"},
    {HVC_GROUP_KERNEL, "ke"},
    {HVC_GROUP_USER_CREATED, "ug"},
    {HVC_GROUP_CONTAINER, "co"},
    {HVC_GROUP_SUB_CONTAINER, "sc"},
    {HVC_GROUP_VMM_SUB_CONTAINER, "vmm"},
    {HVC_GROUP_UW_SUB_CONTAINER, "usr"},
};

}  // namespace platkit

#endif  // PLATKIT_GROUP_FLAGS_H
