#include "tools/nodal/capture/vanished.h"

#include <algorithm>

#include "tools/nodal/tree/instances.h"
#include "tools/nodal/tree/path_filter.h"

namespace nodal {
namespace {

using Paths = std::vector<std::string>;  // the paths at or below which an instance has its nodes

class VanishedSearch {
 public:
  VanishedSearch(CachingTree &tree, Tree &host) : tree_(tree), answers_(tree.answers()), host_(host) {}

  size_t Run() {
    for (auto &[path, answer] : answers_) {
      if (answer.status != HVC_OK) continue;
      if (answer.node->id == nodes::sched_groups_groupLeaderID.id()) CheckLeader(answer);
      if (answer.node->id == nodes::worldGroups_vmmLeaderID.id()) CheckMonitor(answer);
    }
    for (auto &[path, answer] : answers_) {
      if (!answer.asRecord && answer.status == HVC_OK) CheckList(path, answer);
    }
    if (gone_ > 0) RemoveStrays();
    return gone_;
  }

 private:
  // Calls `visit` for the answers at and below the paths until one call returns true. Returns whether one did.
  template <typename Visit>
  bool AnyAnswer(const Paths &paths, Visit visit) {
    for (const std::string &top : paths) {
      // Other paths can sort between a path and the paths below it, because '.' sorts before '/'.
      const auto itself = answers_.find(top);
      if (itself != answers_.end() && visit(itself->second)) return true;
      for (auto i = answers_.lower_bound(top + "/"); i != answers_.end() && IsAtOrBelow(i->first, top); ++i) {
        if (visit(i->second)) return true;
      }
    }
    return false;
  }

  // Whether records at or below the paths were read, and every read returned "not found".
  bool HasNoRecords(const Paths &paths) {
    bool wereRead = false;
    const bool anyIsThere = AnyAnswer(paths, [&](const Answer &answer) {
      wereRead = wereRead || answer.asRecord;
      return answer.asRecord && answer.status != HVC_NOT_FOUND;
    });
    return wereRead && !anyIsThere;
  }

  void ReportMissing(const Paths &paths) {
    if (AnyAnswer(paths, [](const Answer &answer) { return answer.status != HVC_NOT_FOUND; })) return;
    AnyAnswer(paths, [](Answer &answer) {
      answer.isReportedMissing = true;
      return false;
    });
  }

  void MarkGone(const Paths &paths) {
    if (goneTops_.contains(paths.front())) return;
    goneTops_.insert(paths.begin(), paths.end());
    ++gone_;
  }

  // A group vanishes with the world that leads it.
  void CheckLeader(const Answer &answer) {
    const Argument &group = answer.arguments[0];
    const std::optional<Argument> leader = LeaderOf(tree_, group);
    if (!leader) return;
    const Paths client = PathsOfInstance("client", *leader, {}, {});
    if (!HasNoRecords(client)) return;
    GroupLeaderIDRecord now;
    if (GetRecord(host_, nodes::sched_groups_groupLeaderID, {group}, now) == HVC_NOT_FOUND) {
      MarkGone(PathsOfInstance("group", group, {}, {}));
    } else {
      ReportMissing(client);
    }
  }

  void CheckMonitor(Answer &answer) {
    const std::optional<Argument> monitor = MonitorOf(tree_, answer.arguments[0]);
    if (!monitor) return;
    const Paths client = PathsOfInstance("client", *monitor, {}, {});
    if (!HasNoRecords(client)) return;
    VmmLeaderIDRecord now;
    if (GetRecord(host_, nodes::worldGroups_vmmLeaderID, answer.arguments, now) == HVC_NOT_FOUND) {
      answer.status = HVC_NOT_FOUND;
    } else {
      ReportMissing(client);
    }
  }

  void CheckList(const std::string &path, Answer &list) {
    std::erase_if(list.entries, [&](const Argument &entry) {
      const Outer outer = {list.node->arguments.data(), list.arguments.size()};
      const Paths paths = PathsOfInstance(list.node->entry.what, entry, outer, list.arguments);
      if (paths.empty()) return false;
      if (goneTops_.contains(paths.front())) return true;
      if (HasNoRecords(paths)) {
        if (!IsStillListed(path, list, entry)) {
          MarkGone(paths);
          return true;
        }
        ReportMissing(paths);
      }
      if (list.node->id == nodes::system_buddy.id()) CheckMemNode(entry);
      return false;
    });
  }

  void CheckMemNode(const Argument &buddy) {
    const std::optional<int64_t> memNode = MemNodeOf(buddy.text);
    if (!memNode) return;
    const Paths paths = PathsOfInstance("memNode", IntArgument(*memNode), {}, {});
    if (HasNoRecords(paths)) ReportMissing(paths);
  }

  bool IsStillListed(const std::string &path, const Answer &list, const Argument &entry) {
    auto now = listedNow_.find(path);
    if (now == listedNow_.end()) {
      Arguments entries;
      if (host_.List(*list.node, list.arguments, entries) == HVC_NOT_FOUND) entries.clear();
      now = listedNow_.emplace(path, std::set<Argument>(entries.begin(), entries.end())).first;
    }
    return now->second.contains(entry);
  }

  // Removes the answers of instances that are gone, then the answers of instances to which no other answer refers any
  // more.
  void RemoveStrays() {
    const auto isGone = [this](const auto &entry) {
      for (size_t end = entry.first.size(); end != 0 && end != std::string::npos;
           end = entry.first.rfind('/', end - 1)) {
        if (goneTops_.contains(entry.first.substr(0, end))) return true;
      }
      return false;
    };
    std::erase_if(answers_, isGone);
    Instances instances(tree_);
    std::vector<std::string> strays;
    for (const auto &[path, answer] : answers_) {
      if (IsStray(instances, answer)) strays.push_back(path);
    }
    for (const std::string &path : strays)
      answers_.erase(path);
  }

  static bool IsStray(Instances &instances, const Answer &answer) {
    Arguments outer;
    for (const Argument &argument : answer.arguments) {
      if (!instances.Contains(*answer.node, outer, argument)) return true;
      outer.push_back(argument);
    }
    return false;
  }

  CachingTree &tree_;
  std::map<std::string, Answer> &answers_;
  Tree &host_;
  size_t gone_ = 0;
  std::set<std::string> goneTops_;
  std::map<std::string, std::set<Argument>> listedNow_;
};

}  // namespace

size_t OmitVanished(CachingTree &tree, Tree &host) {
  tree.Freeze();
  return VanishedSearch(tree, host).Run();
}

}  // namespace nodal
