#include "tools/nodal/snapshot/reference_check.h"

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "tools/nodal/tree/instances.h"

namespace nodal {
namespace {

using platkit::PathTarget;

// Treats lists that cannot be read as absent, because the check of the file has already reported them.
class SoundTree : public SourceTree {
 public:
  using SourceTree::SourceTree;

  HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override {
    return SourceTree::List(node, arguments, entries) == HVC_OK ? HVC_OK : HVC_NOT_FOUND;
  }
};

class ReferenceCheck {
 public:
  ReferenceCheck(const std::map<std::string, PathTarget> &entries, platkit::Source &source, Problems &problems)
      : entries_(entries), tree_(source), problems_(problems) {}

  void Run() {
    for (const auto &[path, target] : entries_) {
      CheckOwners(*target.node, target.arguments);
      if (!target.asRecord) CheckList(path, *target.node, target.arguments);
      if (target.node->id == nodes::sched_groups_groupLeaderID.id()) CheckLeader(path, target.arguments[0]);
      if (target.node->id == nodes::worldGroups_vmmLeaderID.id()) CheckMonitor(path, target.arguments[0]);
    }
    CheckHierarchy();
  }

 private:
  // Reports the first instance in a path to which nothing refers.
  void CheckOwners(const Node &node, const Arguments &arguments) {
    Arguments outer;
    for (const Argument &argument : arguments) {
      if (!instances_.Contains(node, outer, argument)) {
        ReportStray(node, outer, argument);
        return;
      }
      outer.push_back(argument);
    }
  }

  void ReportStray(const Node &node, const Arguments &outer, const Argument &argument) {
    Arguments whole = outer;
    whole.push_back(argument);
    const std::string_view what = node.arguments[outer.size()].what;
    if (!strays_.emplace(what, whole).second) return;
    const Node *list = ListOfInstances(node, outer.size());
    const std::string why = list != nullptr
                                ? "not listed in " + PathOf(*list, {outer.begin(), outer.begin() + list->pathArguments})
                            : what == "group" ? "not reachable from group 0"
                                              : "unknown instance";
    problems_.Report(PathPrefix(node, whole), std::string(what) + " " + ShownForm(argument) + ": " + why);
  }

  void CheckList(const std::string &path, const Node &list, const Arguments &arguments) {
    Arguments entries;
    if (tree_.List(list, arguments, entries) != HVC_OK) return;
    std::set<Argument> seen;
    for (const Argument &entry : entries) {
      if (!seen.insert(entry).second) problems_.Report(path, "lists " + Named(list.entry.what, entry) + " twice");
      CheckNamed(path, "lists", {list.arguments.data(), list.pathArguments}, arguments, list.entry.what, entry);
      if (list.id == nodes::system_buddy.id()) CheckMemNode(path, entry);
      if (list.id == nodes::sched_groups_members_groups.id()) parents_[entry.integer].push_back(arguments[0].integer);
    }
  }

  static std::string Named(std::string_view what, const Argument &argument) {
    return std::string(what) + " " + ShownForm(argument);
  }

  // Reports an instance to which the node at `path` refers, if the snapshot has no node of the instance.
  // `outerArguments` are the instances to which it belongs, and `outer` are their kinds.
  void CheckNamed(const std::string &path, const std::string &how, Outer outer, const Arguments &outerArguments,
                  std::string_view what, const Argument &instance) {
    const std::vector<std::string> paths = PathsOfInstance(what, instance, outer, outerArguments);
    if (paths.empty() || std::ranges::any_of(paths, [this](const auto &top) { return AnythingBelow(top); })) {
      return;
    }
    problems_.Report(path, how + " " + Named(what, instance) + ", which has no entry");
  }

  bool AnythingBelow(const std::string &path) const {
    if (entries_.contains(path)) return true;
    const auto below = entries_.lower_bound(path + "/");
    return below != entries_.end() && below->first.starts_with(path + "/");
  }

  void CheckMemNode(const std::string &path, const Argument &buddy) {
    const std::optional<int64_t> memNode = MemNodeOf(buddy.text);
    if (!memNode) return;
    CheckNamed(path, Named("buddy", buddy) + " serves", {}, {}, "memNode", IntArgument(*memNode));
  }

  void CheckLeader(const std::string &path, const Argument &group) {
    if (const auto leader = LeaderOf(tree_, group)) CheckNamed(path, "names", {}, {}, "client", *leader);
  }

  void CheckMonitor(const std::string &path, const Argument &client) {
    if (const auto monitor = MonitorOf(tree_, client)) CheckNamed(path, "names", {}, {}, "client", *monitor);
  }

  // Exactly one parent must list each group except group 0, and the group's record must name this parent.
  void CheckHierarchy() {
    for (const auto &[group, parents] : parents_) {
      const std::string path = PathOf(nodes::sched_groups_parentGroupID, {IntArgument(group)});
      if (group == 0) {
        problems_.Report(path, "group 0 is the top group, but group " + std::to_string(parents[0]) + " lists it");
        continue;
      }
      if (parents.size() > 1) {
        problems_.Report(path, "groups " + std::to_string(parents[0]) + " and " + std::to_string(parents[1]) +
                                   " both list group " + std::to_string(group));
      }
      ParentGroupIDRecord record;
      if (GetRecord(tree_, nodes::sched_groups_parentGroupID, {IntArgument(group)}, record) != HVC_OK) continue;
      const int64_t named = record.parentGroupID;
      if (std::ranges::find(parents, named) == parents.end()) {
        problems_.Report(path, "names group " + std::to_string(named) + ", but group " + std::to_string(parents[0]) +
                                   " lists group " + std::to_string(group));
      }
    }
  }

  const std::map<std::string, PathTarget> &entries_;
  SoundTree tree_;
  Instances instances_{tree_};
  Problems &problems_;
  std::set<std::pair<std::string_view, Arguments>> strays_;
  std::map<int64_t, std::vector<int64_t>> parents_;
};

}  // namespace

void CheckReferences(const CheckedNodes &nodes, platkit::Source &source, Problems &problems) {
  ReferenceCheck(nodes.byPath, source, problems).Run();
}

}  // namespace nodal
