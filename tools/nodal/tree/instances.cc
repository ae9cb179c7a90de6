#include "tools/nodal/tree/instances.h"

#include <algorithm>
#include <charconv>

#include "platkit/memory_states.h"
#include "platkit/records.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

constexpr int64_t kTopGroup = 0;

// Configuration registers are read four bytes at a time.
constexpr int64_t kRegisterBytes = 4;
constexpr int64_t kConfigurationSpace = 4096;

// Returns the index of the argument of `node` that has the kind `what`. The arguments before it must have the first
// kinds of `outer`. Returns Node::kMaxArguments if there is no such argument.
size_t ArgumentIndex(std::string_view what, Outer outer, const Node &node) {
  const size_t arguments = std::max(node.listArguments(), node.recordArguments());
  for (size_t i = 0; i < arguments; ++i) {
    if (node.arguments[i].what == what) return i;
    if (i == outer.size() || node.arguments[i].what != outer[i].what) break;
  }
  return Node::kMaxArguments;
}

// Appends the arguments that are not in `seen`, and adds them to `seen`.
void AppendNew(const Arguments &more, std::set<Argument> &seen, Arguments &to) {
  for (const Argument &argument : more) {
    if (seen.insert(argument).second) to.push_back(argument);
  }
}

}  // namespace

const Node *ListOfInstances(const Node &node, size_t argument) {
  const std::string_view what = node.arguments[argument].what;
  const auto fits = [&](const Node &list) {
    if (!list.isList || list.entry.what != what || list.pathArguments > argument) return false;
    for (size_t i = 0; i < list.pathArguments; ++i) {
      if (list.arguments[i].what != node.arguments[i].what) return false;
    }
    return true;
  };
  const auto found = std::ranges::find_if(platkit::Nodes(), fits);
  return found == platkit::Nodes().end() ? nullptr : &*found;
}

std::vector<std::string> PathsOfInstance(std::string_view what, const Argument &instance, Outer outer,
                                         const Arguments &outerArguments) {
  std::vector<std::string> places;
  for (const Node &node : platkit::Nodes()) {
    const size_t argument = ArgumentIndex(what, outer, node);
    if (argument == Node::kMaxArguments) continue;
    Arguments arguments(outerArguments.begin(), outerArguments.begin() + static_cast<std::ptrdiff_t>(argument));
    arguments.push_back(instance);
    std::string place = PathPrefix(node, arguments);
    if (std::ranges::find(places, place) == places.end()) places.push_back(std::move(place));
  }
  return places;
}

std::optional<Argument> LeaderOf(Tree &tree, const Argument &group) {
  GroupFlagsRecord flags;
  GroupLeaderIDRecord leader;
  if (GetRecord(tree, nodes::sched_groups_groupFlags, {group}, flags) != HVC_OK) return std::nullopt;
  if ((flags.flags & (HVC_GROUP_VM | HVC_GROUP_USER_WORLD)) == 0) return std::nullopt;
  if (GetRecord(tree, nodes::sched_groups_groupLeaderID, {group}, leader) != HVC_OK) return std::nullopt;
  return IntArgument(leader.leaderID);
}

std::optional<Argument> MonitorOf(Tree &tree, const Argument &client) {
  VmmLeaderIDRecord monitor;
  if (GetRecord(tree, nodes::worldGroups_vmmLeaderID, {client}, monitor) != HVC_OK) return std::nullopt;
  return IntArgument(monitor.vmmLeaderID);
}

std::optional<int64_t> MemNodeOf(std::string_view buddy) {
  constexpr std::string_view kPrefix = "memmap";
  constexpr size_t kNumber = 7;
  if (!buddy.starts_with(kPrefix)) return std::nullopt;
  int64_t memNode = 0;
  const char *digits = buddy.data() + std::min(kNumber, buddy.size());
  std::from_chars(digits, buddy.data() + buddy.size(), memNode);
  return memNode;
}

const Instances::Found &Instances::Lookup(const Node &node, const Arguments &outer) {
  // Instances that do not depend on the outer arguments are looked up once.
  const Node *list = ListOfInstances(node, outer.size());
  const auto dependsOn = static_cast<std::ptrdiff_t>(list == nullptr ? 0 : list->pathArguments);
  const auto key = std::pair(node.arguments[outer.size()].what, Arguments(outer.begin(), outer.begin() + dependsOn));
  const auto known = found_.find(key);
  if (known != found_.end()) return known->second;
  Found found;
  AppendNew(Find(node, outer), found.all, found.inOrder);
  return found_.emplace(key, std::move(found)).first->second;
}

Arguments Instances::Find(const Node &node, const Arguments &outer) {
  const std::string_view what = node.arguments[outer.size()].what;
  if (const Node *list = ListOfInstances(node, outer.size())) {
    return ListEntries(*list, {outer.begin(), outer.begin() + list->pathArguments});
  }
  Arguments found;
  if (what == "group") return Groups();
  if (what == "client") return Clients();
  if (what == "memNode") return MemNodes();
  if (what == "numaNode") return NumaNodes();
  if (what == "cpu") return {IntArgument(0)};
  if (what == "size") return {IntArgument(kRegisterBytes)};
  if (what == "address") {
    for (int64_t address = 0; address < kConfigurationSpace; address += kRegisterBytes)
      found.push_back(IntArgument(address));
  } else if (what == "state") {
    std::ranges::transform(platkit::kMemoryStates, std::back_inserter(found), TextArgument);
  }
  return found;
}

Arguments Instances::ListEntries(const Node &list, const Arguments &arguments) {
  Arguments entries;
  const HVC_ReturnStatus status = tree_.List(list, arguments, entries);
  if (status == HVC_NOT_FOUND) return {};
  if (status != HVC_OK) throw Failure(PathOf(list, arguments), status);
  return entries;
}

// Parents come before their members. A group that occurs again, as in a cycle, is not followed again.
Arguments Instances::Groups() {
  const Node &members = nodes::sched_groups_members_groups;
  Arguments groups;
  std::set<Argument> seen;
  Arguments ahead;
  Arguments top;
  if (tree_.List(members, {IntArgument(kTopGroup)}, top) != HVC_NOT_FOUND) ahead.push_back(IntArgument(kTopGroup));
  while (!ahead.empty()) {
    const Argument group = ahead.back();
    ahead.pop_back();
    if (!seen.insert(group).second) continue;
    groups.push_back(group);
    const Arguments children = MembersOf(group);
    ahead.insert(ahead.end(), children.rbegin(), children.rend());
  }
  return groups;
}

// If the members of a group cannot be listed, the walk continues with the other groups.
Arguments Instances::MembersOf(const Argument &group) {
  const Node &members = nodes::sched_groups_members_groups;
  Arguments entries;
  const HVC_ReturnStatus status = tree_.List(members, {group}, entries);
  if (status == HVC_OK) return entries;
  if (status != HVC_NOT_FOUND) Complain(PathOf(members, {group}) + ": " + StatusText(status));
  return {};
}

// Returns the members and leaders of all groups, and the monitors of these clients.
Arguments Instances::Clients() {
  const Node &members = nodes::sched_groups_members_memClients;
  Arguments clients;
  std::set<Argument> seen;
  for (const Argument &group : Lookup(members, {}).inOrder) {
    if (const std::optional<Argument> leader = LeaderOf(tree_, group)) AppendNew({*leader}, seen, clients);
    AppendNew(ListEntries(members, {group}), seen, clients);
  }
  for (size_t i = 0; i < clients.size(); ++i) {
    if (const std::optional<Argument> monitor = MonitorOf(tree_, clients[i])) AppendNew({*monitor}, seen, clients);
  }
  return clients;
}

Arguments Instances::MemNodes() {
  std::set<int64_t> numbers;
  for (const Argument &buddy : ListEntries(nodes::system_buddy, {})) {
    if (const std::optional<int64_t> memNode = MemNodeOf(buddy.text)) numbers.insert(*memNode);
  }
  Arguments memNodes;
  std::ranges::transform(numbers, std::back_inserter(memNodes), IntArgument);
  return memNodes;
}

Arguments Instances::NumaNodes() {
  MemInfoRecord info;
  if (GetRecord(tree_, nodes::memory_memInfo, {}, info) != HVC_OK) return {};
  // A damaged record must not exhaust memory.
  constexpr uint32_t kMaxNodes = 4096;
  Arguments nodes;
  for (uint32_t i = 0; i < std::min(info.numNodes, kMaxNodes); ++i)
    nodes.push_back(IntArgument(i));
  return nodes;
}

}  // namespace nodal
