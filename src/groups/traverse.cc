#include "src/groups/traverse.h"

#include "platkit/warning.h"
#include "src/groups/group_queries.h"
#include "src/nodal/param_list.h"

namespace kestrel {
namespace {

// The maximum cost of a walk: 1 for each group in a list of members, and kVisitCost for each visit. This allows 16
// million visits, four times the maximum number of processes on Linux (4,194,304).
//
// The budget is for hand-edited snapshots, which can contain a cycle of groups. The visits of a cycle multiply with
// each level, so the walk could take hours. Four groups that each list all four as members take only 5.6 million
// visits.
constexpr uint64_t kBudget = uint64_t{1} << 30;
constexpr uint64_t kVisitCost = 64;

class Walk {
 public:
  Walk(bool csv, GroupCallback callback, void *context) : csv_(csv), callback_(callback), context_(context) {}

  HVC_ReturnStatus Run(int64_t groupID, uint32_t levels) {
    const HVC_ReturnStatus status = Visit(groupID, levels);
    if (!HasEnded()) return status;
    Warning("KestrelTraverseGroups: too many groups below %ld, or a cycle of groups: stopped after %u visits\n",
            groupID, visits_);
    return HVC_LIMIT_EXCEEDED;
  }

 private:
  bool HasEnded() const { return cost_ > kBudget; }
  HVC_ReturnStatus Visit(int64_t groupID, uint32_t levels);

  const bool csv_;
  const GroupCallback callback_;
  void *const context_;
  uint32_t visits_ = 0;
  uint64_t cost_ = 0;
};

HVC_ReturnStatus Walk::Visit(int64_t groupID, uint32_t levels) {
  if (HasEnded()) return HVC_LIMIT_EXCEEDED;
  ++visits_;
  cost_ += kVisitCost;
  ParamList children;
  HVC_ReturnStatus status = ListMemberGroups(
      groupID, {.caller = "KestrelTraverseGroups", .listStep = "NODAL_GetInstanceListAlloc", .vanishedIsSilent = true},
      children);
  if (status != HVC_OK) return status;

  const uint32_t count = NODAL_ParamListUsedCount(children.get());
  cost_ += count;
  status = callback_(groupID, count, csv_, context_);
  if (status != HVC_OK || levels == 1) return status;

  for (uint32_t i = 0; i < count && !HasEnded(); ++i) {
    int64_t child = 0;
    status = NODAL_ParamListGetInt64(children.get(), i, &child);
    if (status != HVC_OK) continue;
    // A failure at or below a child does not affect its siblings.
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
