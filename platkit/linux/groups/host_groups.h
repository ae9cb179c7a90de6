// The groups of a host, with the readers that fill the records.
#ifndef PLATKIT_LINUX_GROUPS_HOST_GROUPS_H
#define PLATKIT_LINUX_GROUPS_HOST_GROUPS_H

#include "platkit/linux/groups/group_limits.h"
#include "platkit/linux/groups/group_reader.h"
#include "platkit/linux/groups/group_tree.h"
#include "platkit/linux/groups/vm_groups.h"

namespace platkit {

struct HostGroups {
  explicit HostGroups(HostFiles &files)
      : reader(files), tree(files, reader), limits(reader, tree), vms(files, reader, tree) {}

  GroupReader reader;
  GroupTree tree;
  GroupLimits limits;
  VmGroups vms;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_HOST_GROUPS_H
