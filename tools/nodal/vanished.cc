#include "tools/nodal/vanished.h"

#include <algorithm>

#include "platkit/records.h"
#include "tools/nodal/instances.h"
#include "tools/nodal/part.h"

namespace nodal {
namespace {

using Places = std::vector<std::string>;

class Search {
 public:
  Search(Readings &readings, Tree &host) : readings_(readings), byPath_(readings.byPath()), host_(host) {}

  size_t Run() {
    for (auto &[path, reading] : byPath_) {
      if (reading.status != HVC_OK) continue;
      if (reading.node->name == "sched_groups_groupLeaderID") CheckLeader(reading);
      if (reading.node->name == "worldGroups_vmmLeaderID") CheckMonitor(reading);
    }
    for (auto &[path, reading] : byPath_) {
      if (!reading.asRecord && reading.status == HVC_OK) CheckList(path, reading);
    }
    if (gone_ > 0) RemoveStrays();
    return gone_;
  }

 private:
  // Calls `visit` for all that was read at and below the places, until it returns true; whether it did.
  template <typename Visit>
  bool AnyReading(const Places &places, Visit visit) {
    for (const std::string &place : places) {
      // What stands below a path need not follow it at once.
      const auto itself = byPath_.find(place);
      if (itself != byPath_.end() && visit(itself->second)) return true;
      for (auto i = byPath_.lower_bound(place + "/"); i != byPath_.end() && IsAtOrBelow(i->first, place); ++i) {
        if (visit(i->second)) return true;
      }
    }
    return false;
  }

  // Whether records were asked for, and none was there.
  bool IsWithoutRecords(const Places &places) {
    bool wereAskedFor = false;
    const bool anyIsThere = AnyReading(places, [&](const Reading &reading) {
      wereAskedFor = wereAskedFor || reading.asRecord;
      return reading.asRecord && reading.status != HVC_NOT_FOUND;
    });
    return wereAskedFor && !anyIsThere;
  }

  void TellOf(const Places &places) {
    if (AnyReading(places, [](const Reading &reading) { return reading.status != HVC_NOT_FOUND; })) return;
    AnyReading(places, [](Reading &reading) {
      reading.isToldOf = true;
      return false;
    });
  }

  void CountAsGone(const Places &places) {
    if (placesOfGone_.contains(places.front())) return;
    placesOfGone_.insert(places.begin(), places.end());
    ++gone_;
  }

  // A world that is gone takes the group that it led with it.
  void CheckLeader(const Reading &reading) {
    GroupFlagsRecord flags;
    GroupLeaderIDRecord leader;
    if (GetRecord(readings_, "sched_groups_groupFlags", reading.arguments, flags) != HVC_OK) return;
    if ((flags.flags & (HVC_GROUP_VM | HVC_GROUP_USER_WORLD)) == 0) return;
    if (GetRecord(readings_, reading.node->name, reading.arguments, leader) != HVC_OK) return;
    const Places client = PlacesOf("client", IntArgument(leader.leaderID), {}, {});
    if (!IsWithoutRecords(client)) return;
    if (GetRecord(host_, reading.node->name, reading.arguments, leader) == HVC_NOT_FOUND) {
      CountAsGone(PlacesOf("group", reading.arguments[0], {}, {}));
    } else {
      TellOf(client);
    }
  }

  void CheckMonitor(Reading &reading) {
    VmmLeaderIDRecord monitor;
    if (GetRecord(readings_, reading.node->name, reading.arguments, monitor) != HVC_OK) return;
    const Places client = PlacesOf("client", IntArgument(monitor.vmmLeaderID), {}, {});
    if (!IsWithoutRecords(client)) return;
    if (GetRecord(host_, reading.node->name, reading.arguments, monitor) == HVC_NOT_FOUND) {
      reading.status = HVC_NOT_FOUND;
    } else {
      TellOf(client);
    }
  }

  void CheckList(const std::string &path, Reading &list) {
    std::erase_if(list.entries, [&](const Argument &entry) {
      const Outer outer = {list.node->arguments.data(), list.arguments.size()};
      const Places places = PlacesOf(list.node->entry.what, entry, outer, list.arguments);
      if (places.empty()) return false;
      if (placesOfGone_.contains(places.front())) return true;
      if (IsWithoutRecords(places)) {
        if (!IsStillListed(path, list, entry)) {
          CountAsGone(places);
          return true;
        }
        TellOf(places);
      }
      if (list.node->name == "system_buddy") CheckMemNode(entry);
      return false;
    });
  }

  void CheckMemNode(const Argument &buddy) {
    const std::optional<int64_t> memNode = MemNodeOf(buddy.text);
    if (!memNode) return;
    const Places places = PlacesOf("memNode", IntArgument(*memNode), {}, {});
    if (IsWithoutRecords(places)) TellOf(places);
  }

  bool IsStillListed(const std::string &path, const Reading &list, const Argument &entry) {
    auto now = listedNow_.find(path);
    if (now == listedNow_.end()) {
      Arguments entries;
      if (host_.List(*list.node, list.arguments, entries) == HVC_NOT_FOUND) entries.clear();
      now = listedNow_.emplace(path, std::set<Argument>(entries.begin(), entries.end())).first;
    }
    return now->second.contains(entry);
  }

  // Removes what was read of those that are gone, then what no list leads to any more.
  void RemoveStrays() {
    const auto isOfGone = [this](const auto &entry) {
      for (size_t end = entry.first.size(); end != 0 && end != std::string::npos;
           end = entry.first.rfind('/', end - 1)) {
        if (placesOfGone_.contains(entry.first.substr(0, end))) return true;
      }
      return false;
    };
    std::erase_if(byPath_, isOfGone);
    Instances instances(readings_);
    std::vector<std::string> strays;
    for (const auto &[path, reading] : byPath_) {
      if (IsStray(instances, reading)) strays.push_back(path);
    }
    for (const std::string &path : strays)
      byPath_.erase(path);
  }

  static bool IsStray(Instances &instances, const Reading &reading) {
    Arguments outer;
    for (const Argument &argument : reading.arguments) {
      if (!instances.Contains(*reading.node, outer, argument)) return true;
      outer.push_back(argument);
    }
    return false;
  }

  Readings &readings_;
  std::map<std::string, Reading> &byPath_;
  Tree &host_;
  size_t gone_ = 0;
  std::set<std::string> placesOfGone_;
  std::map<std::string, std::set<Argument>> listedNow_;
};

}  // namespace

size_t LeaveOutVanished(Readings &readings, Tree &host) {
  readings.Close();
  return Search(readings, host).Run();
}

}  // namespace nodal
