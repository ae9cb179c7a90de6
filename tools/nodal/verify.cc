// nodal verify: everything that can be wrong with a snapshot, in the file and in what it says.
#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <vector>

#include "platkit/snapshot/snapshot_file.h"
#include "platkit/snapshot/snapshot_source.h"
#include "tools/nodal/commands.h"
#include "tools/nodal/instances.h"
#include "tools/nodal/output.h"
#include "tools/nodal/text.h"

namespace nodal {
namespace {

using platkit::PathTarget;
using platkit::snapshot::SnapshotFile;
using platkit::snapshot::Value;
using platkit::snapshot::ValueType;
namespace snapshot = platkit::snapshot;

class Problems {
 public:
  void Report(std::string_view where, std::string_view what) {
    ++count_;
    Print(Printable(where) + ": " + Printable(what) + "\n");
  }
  size_t count() const { return count_; }

 private:
  size_t count_ = 0;
};

bool IsTime(std::string_view text) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00Z";
  if (text.empty()) return true;
  return std::ranges::equal(text, kForm,
                            [](char c, char form) { return form == '0' ? c >= '0' && c <= '9' : c == form; });
}

// The file: its records, their order, their values, its index. Collects what is sound, by path.
class FileCheck {
 public:
  struct Found {
    std::map<std::string, PathTarget> sound;
    std::set<std::string> failures;  // those of them that could not be read
  };

  FileCheck(SnapshotFile &file, Problems &problems) : file_(file), problems_(problems) {}

  Found Run() {
    SnapshotFile::Cursor cursor(file_);
    HVC_ReturnStatus status;
    while ((status = cursor.Next()) == HVC_OK) {
      ++entries_;
      CheckEntry(cursor);
    }
    if (status != HVC_NOT_FOUND) {
      problems_.Report("entry " + std::to_string(entries_ + 1), "it does not end where the records end");
    } else if (file_.CountUsedSlots() != entries_ + std::size(snapshot::kReservedKeys)) {
      const size_t records = entries_ + std::size(snapshot::kReservedKeys);
      problems_.Report("index", Plural(file_.CountUsedSlots(), "slot") + " in use for " + Plural(records, "record"));
    }
    CheckIndexOf(snapshot::kVersionKey, snapshot::kContentsBytes);
    CheckIndexOf(snapshot::kIndexCheckKey, snapshot::kIndexCheckPosition);
    if (!file_.TablesAreWhole()) problems_.Report("index", "a hash table is damaged");
    if (!IsTime(file_.header().time)) problems_.Report("time", "not of the form 2026-03-14T09:26:53Z");
    return std::move(found_);
  }

 private:
  void CheckEntry(const SnapshotFile::Cursor &cursor) {
    const std::string key(cursor.key());
    if (snapshot::IsReservedKey(key) || (entries_ > 1 && key == previous_)) {
      problems_.Report(key, "it is there twice");
    } else {
      if (entries_ > 1 && key < previous_) problems_.Report(key, "not in the order of the keys");
      CheckIndexOf(key, cursor.position());
    }
    previous_ = key;
    Value value;
    if (cursor.Read(value) != HVC_OK) {
      problems_.Report(key, "the value is damaged");
    } else {
      CheckValue(key, value);
    }
  }

  void CheckIndexOf(std::string_view key, uint32_t position) {
    if (!file_.IndexLeadsTo(key, position)) problems_.Report(key, "the index does not lead to it");
  }

  void CheckValue(const std::string &key, const Value &value) {
    if (snapshot::IsHeaderKey(key)) return;  // read when the file was opened
    if (snapshot::IsFailureKey(key)) return CheckFailure(key, value);
    PathTarget target = platkit::ParsePath(key);
    if (target.node == nullptr) {
      problems_.Report(key, "no such node in the catalogue");
    } else if (const std::string wrong =
                   target.asRecord ? WrongRecord(*target.node, value) : WrongList(*target.node, value);
               !wrong.empty()) {
      problems_.Report(key, wrong);
    } else {
      found_.sound.emplace(key, std::move(target));
    }
  }

  void CheckFailure(const std::string &key, const Value &value) {
    const std::string path = key.substr(snapshot::kFailurePrefix.size());
    PathTarget target = platkit::ParsePath(path);
    Value read;
    if (target.node == nullptr) {
      problems_.Report(key, "no such node in the catalogue");
    } else if (value.type != ValueType::kRecord || value.payload.size() != sizeof(HVC_ReturnStatus) ||
               std::ranges::count(value.payload, std::byte{0}) == sizeof(HVC_ReturnStatus)) {
      problems_.Report(key, "not a failure's status");
    } else if (file_.Find(path, read) != HVC_NOT_FOUND) {
      problems_.Report(key, "what could not be read is there");
    } else {
      found_.failures.emplace(path);
      found_.sound.emplace(path, std::move(target));
    }
  }

  static std::string WrongRecord(const Node &node, const Value &value) {
    if (value.type != ValueType::kRecord) return "not a record";
    if (value.payload.size() == node.record->size) return "";
    return Plural(value.payload.size(), "byte") + ", not " + std::to_string(node.record->size);
  }

  static std::string WrongList(const Node &node, const Value &value) {
    if (node.entry.kind == ParamKind::kInt) {
      if (value.type != ValueType::kIntegers) return "not a list of integers";
      return value.payload.size() % sizeof(int64_t) == 0 ? "" : "the last integer is cut";
    }
    if (value.type != ValueType::kTexts) return "not a list of texts";
    return value.payload.empty() || value.text().back() == '\0' ? "" : "the last text is cut";
  }

  SnapshotFile &file_;
  Problems &problems_;
  uint64_t entries_ = 0;
  std::string previous_;
  Found found_;
};

// Reads what the file's check found sound; what it did not has been reported.
class SoundTree : public SourceTree {
 public:
  using SourceTree::SourceTree;

  HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override {
    return SourceTree::List(node, arguments, entries) == HVC_OK ? HVC_OK : HVC_NOT_FOUND;
  }
};

// What the snapshot says: that what is named is there, and what is there is named.
class ReferenceCheck {
 public:
  ReferenceCheck(const std::map<std::string, PathTarget> &entries, platkit::Source &source, Problems &problems)
      : entries_(entries), tree_(source), problems_(problems) {}

  void Run() {
    for (const auto &[path, target] : entries_) {
      CheckOwners(*target.node, target.arguments);
      if (!target.asRecord) CheckList(path, *target.node, target.arguments);
      if (target.node->name == "sched_groups_groupLeaderID") CheckLeader(path, target.arguments);
      if (target.node->name == "worldGroups_vmmLeaderID") CheckMonitor(path, target.arguments);
    }
    CheckHierarchy();
  }

 private:
  // Every instance on the way to an entry is one that the tree knows of.
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
                            : what == "group" ? "not reached from group 0"
                                              : "no such instance is known";
    problems_.Report(InstancePath(node, whole), std::string(what) + " " + ShownForm(argument) + ": " + why);
  }

  void CheckList(const std::string &path, const Node &list, const Arguments &arguments) {
    Arguments entries;
    if (tree_.List(list, arguments, entries) != HVC_OK) return;
    std::set<Argument> seen;
    for (const Argument &entry : entries) {
      if (!seen.insert(entry).second) problems_.Report(path, Named(list.entry.what, entry) + " is listed twice");
      CheckNamed(path, "lists", {list.arguments.data(), list.pathArguments}, arguments, list.entry.what, entry);
      if (list.name == "system_buddy") CheckMemNode(path, entry);
      if (list.name == "sched_groups_members_groups") parents_[entry.integer].push_back(arguments[0].integer);
    }
  }

  static std::string Named(std::string_view what, const Argument &argument) {
    return std::string(what) + " " + ShownForm(argument);
  }

  // Something is stored for an instance that is named at `path`. `outer` says what the arguments before it are.
  void CheckNamed(const std::string &path, const std::string &how, Outer outer, const Arguments &outerArguments,
                  std::string_view what, const Argument &instance) {
    const std::vector<std::string> places = PlacesOf(what, instance, outer, outerArguments);
    if (places.empty() || std::ranges::any_of(places, [this](const auto &place) { return AnythingBelow(place); })) {
      return;
    }
    problems_.Report(path, how + " " + Named(what, instance) + ", of which there is nothing");
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

  // Groups that are neither a VM nor a user world have no leader, whatever stands there.
  void CheckLeader(const std::string &path, const Arguments &group) {
    GroupFlagsRecord flags;
    GroupLeaderIDRecord leader;
    if (GetRecord(tree_, "sched_groups_groupFlags", group, flags) != HVC_OK) return;
    if ((flags.flags & (HVC_GROUP_VM | HVC_GROUP_USER_WORLD)) == 0) return;
    if (GetRecord(tree_, "sched_groups_groupLeaderID", group, leader) != HVC_OK) return;
    CheckNamed(path, "names", {}, {}, "client", IntArgument(leader.leaderID));
  }

  void CheckMonitor(const std::string &path, const Arguments &client) {
    VmmLeaderIDRecord monitor;
    if (GetRecord(tree_, "worldGroups_vmmLeaderID", client, monitor) != HVC_OK) return;
    CheckNamed(path, "names", {}, {}, "client", IntArgument(monitor.vmmLeaderID));
  }

  // Every group but the first has one parent, and names it.
  void CheckHierarchy() {
    const Node &parentNode = *platkit::FindNode("sched_groups_parentGroupID");
    for (const auto &[group, parents] : parents_) {
      const std::string path = PathOf(parentNode, {IntArgument(group)});
      if (group == 0) {
        problems_.Report(path, "group 0 is the first, but group " + std::to_string(parents[0]) + " lists it");
        continue;
      }
      if (parents.size() > 1) {
        problems_.Report(path, "groups " + std::to_string(parents[0]) + " and " + std::to_string(parents[1]) +
                                   " both list group " + std::to_string(group));
      }
      ParentGroupIDRecord record;
      if (GetRecord(tree_, parentNode.name, {IntArgument(group)}, record) != HVC_OK) continue;
      const int64_t named = record.parentGroupID;
      if (std::ranges::find(parents, named) == parents.end()) {
        problems_.Report(path, "it is " + std::to_string(named) + ", but group " + std::to_string(parents[0]) +
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

bool Verify(const std::string &path) {
  SnapshotFile file;
  HVC_ReturnStatus status = file.Open(path.c_str());
  if (status != HVC_OK) throw Failure(path, status);
  std::unique_ptr<platkit::Source> source;
  status = platkit::OpenSnapshot(path.c_str(), source);
  if (status != HVC_OK) throw Failure(path, status);

  Problems problems;
  const FileCheck::Found found = FileCheck(file, problems).Run();
  ReferenceCheck(found.sound, *source, problems).Run();
  const auto isRecord = [&](const auto &entry) {
    return entry.second.asRecord && !found.failures.contains(entry.first);
  };
  const auto records = static_cast<size_t>(std::ranges::count_if(found.sound, isRecord));
  const size_t lists = found.sound.size() - found.failures.size() - records;
  std::string summary = Plural(records, "record") + ", " + Plural(lists, "list") + ", ";
  if (!found.failures.empty()) summary += Plural(found.failures.size(), "failure") + ", ";
  Print(Printable(path) + ": " + summary +
        (problems.count() == 0 ? "no problems" : Plural(problems.count(), "problem")) + "\n");
  return problems.count() == 0;
}

}  // namespace nodal
