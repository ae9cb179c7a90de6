#include "platkit/linux/groups/group_limits.h"

namespace platkit {

// Visits the group, if it is a control group, and the control groups above it.
template <typename Visitor>
void GroupLimits::VisitControlGroups(Group &group, Visitor visit) {
  for (Group *above = &group; above != nullptr; above = tree_.Find(above->parentID)) {
    if (above->kind == GroupKind::kControlGroup) visit(*above);
  }
}

Figure GroupLimits::Lowest(Group &group, CgroupAmount amount) {
  Figure lowest;
  VisitControlGroups(group, [&](Group &above) { lowest = Lower(lowest, reader_.Amount(above, amount)); });
  return lowest;
}

SwapLimit GroupLimits::Swap(Group &group) {
  SwapLimit limit;
  VisitControlGroups(group, [&](Group &above) {
    const Figure max = SwapMax(above);
    if (max.isAbsent() || max == Figure::Unlimited()) return;
    limit.total = Lower(limit.total, max);
    limit.free = Lower(limit.free, max - SwapUsed(above));
  });
  return limit;
}

// Version 1 limits the sum of memory and swap, so the limit of swap is that limit minus the limit of memory.
Figure GroupLimits::SwapMax(Group &group) {
  if (reader_.mount().memoryFiles != CgroupVersion::kV1) return reader_.Amount(group, CgroupAmount::kSwapMax);
  return reader_.Amount(group, CgroupAmount::kWithSwapMax) - reader_.Amount(group, CgroupAmount::kMax);
}

Figure GroupLimits::SwapUsed(Group &group) {
  return reader_.mount().memoryFiles == CgroupVersion::kV1 ? reader_.Stat(group).swap
                                                           : reader_.Amount(group, CgroupAmount::kSwap);
}

}  // namespace platkit
