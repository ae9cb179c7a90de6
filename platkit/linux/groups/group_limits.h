// The limits that apply to a group: its own, and those of the control groups above it.
#ifndef PLATKIT_LINUX_GROUPS_GROUP_LIMITS_H
#define PLATKIT_LINUX_GROUPS_GROUP_LIMITS_H

#include "platkit/linux/groups/group_tree.h"

namespace platkit {

// In bytes. Unlimited if no control group limits swap.
struct SwapLimit {
  Figure total = Figure::Unlimited();  // the maximum size of the group in swap space
  Figure free = Figure::Unlimited();   // how much more it may swap out
};

class GroupLimits {
 public:
  GroupLimits(GroupReader &reader, GroupTree &tree) : reader_(reader), tree_(tree) {}

  // The lowest value of this amount in all control groups above the group, and in the group itself if it is a control
  // group. Absent if none of them has the amount.
  Figure Lowest(Group &group, CgroupAmount amount);

  SwapLimit Swap(Group &group);

 private:
  template <typename Visitor>
  void VisitControlGroups(Group &group, Visitor visit);
  Figure SwapMax(Group &group);
  Figure SwapUsed(Group &group);

  GroupReader &reader_;
  GroupTree &tree_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GROUP_LIMITS_H
