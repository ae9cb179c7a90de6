#include "src/groups/traverse.h"

#include <bit>

#include "platkit/warning.h"
#include "src/groups/group_queries.h"
#include "src/nodal/param_list.h"

namespace kestrel {
namespace {

// Tells a tree from groups that name each other, or one group many times: there the visits multiply with every level,
// and nobody would see the end. It takes the same memory whatever the host.
class TreeCheck {
 public:
  // Whether the walk may visit that group.
  bool Admits(int64_t groupID) {
    if (visits_ == kMostVisits || names_ > kMostNames) return false;
    if (visits_ >= kUnquestioned) {
      // A tree has each group once. Where groups come again and again, one that was marked does so too; the mark moves
      // on in case it stands on one that comes no more.
      if (std::has_single_bit(visits_)) {
        mark_ = groupID;
      } else if (groupID == mark_) {
        return false;
      }
    }
    ++visits_;
    return true;
  }

  // A group names so many members, which may be visited or not.
  void Count(uint32_t members) { names_ += members; }

  uint32_t visits() const { return visits_; }

 private:
  // Small circles are gone through: a walk has few levels, so that they end by themselves.
  static constexpr uint32_t kUnquestioned = 1 << 20;
  // No host has as many groups: a Linux kernel has at most half as many processes, and 65,535 control groups with
  // memory of their own. Long lists cost time and memory before their members are visited, hence the other bound.
  static constexpr uint32_t kMostVisits = 1 << 23;
  static constexpr uint64_t kMostNames = 1 << 27;

  uint32_t visits_ = 0;
  uint64_t names_ = 0;
  int64_t mark_ = 0;
};

class Walk {
 public:
  Walk(bool csv, GroupCallback callback, void *context) : csv_(csv), callback_(callback), context_(context) {}

  HVC_ReturnStatus Run(int64_t groupID, uint32_t levels) {
    const HVC_ReturnStatus status = Visit(groupID, levels);
    if (!ended_) return status;
    Warning(
        "KestrelTraverseGroups: there are too many groups below %ld, or they name each other: ended after %u visits\n",
        groupID, check_.visits());
    return HVC_LIMIT_EXCEEDED;
  }

 private:
  HVC_ReturnStatus Visit(int64_t groupID, uint32_t levels);

  const bool csv_;
  const GroupCallback callback_;
  void *const context_;
  TreeCheck check_;
  bool ended_ = false;
};

HVC_ReturnStatus Walk::Visit(int64_t groupID, uint32_t levels) {
  ended_ = ended_ || !check_.Admits(groupID);
  if (ended_) return HVC_LIMIT_EXCEEDED;

  ParamList children;
  HVC_ReturnStatus status = ListMemberGroups(
      groupID, {.caller = "KestrelTraverseGroups", .listStep = "NODAL_GetInstanceListAlloc", .vanishedIsSilent = true},
      children);
  if (status != HVC_OK) return status;

  const uint32_t count = NODAL_ParamListUsedCount(children.get());
  check_.Count(count);
  status = callback_(groupID, count, csv_, context_);
  if (status != HVC_OK || levels == 1) return status;

  for (uint32_t i = 0; i < count && !ended_; ++i) {
    int64_t child = 0;
    status = NODAL_ParamListGetInt64(children.get(), i, &child);
    if (status != HVC_OK) continue;
    // A group that vanished, or that its callback refused, is no reason to leave out its siblings.
    static_cast<void>(Visit(child, levels - 1));
  }
  return status;
}

}  // namespace

HVC_ReturnStatus KestrelTraverseGroups(int64_t groupID, uint32_t levels, bool csv, GroupCallback callback,
                                       void *context) {
  return Walk(csv, callback, context).Run(groupID, levels);
}

}  // namespace kestrel
