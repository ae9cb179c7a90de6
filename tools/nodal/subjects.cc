#include "tools/nodal/subjects.h"

#include <algorithm>
#include <set>

namespace nodal {
namespace {

constexpr std::string_view kPoolNode = "memory_lpage_nodeList_vmPools";
constexpr std::string_view kSharingPoolNode = "memory_lpage_nodeList_psharePool";

// The nodes of a virtual machine that are told of its monitor's client; all others are told of its own.
constexpr std::string_view kOfMonitor[] = {"sched_memClients_swapInfo", "memory_lpage_vmLPage"};

MetricFamily FamilyOfGroup(uint32_t flags) {
  const bool isWorld = (flags & HVC_GROUP_USER_WORLD) != 0 && (flags & HVC_GROUP_VM) == 0;
  return isWorld ? MetricFamily::world : MetricFamily::group;
}

}  // namespace

std::optional<Place> PlaceOf(const Node &node, const Subject &subject) {
  // The pool of page sharing has a node of its own, with a record of the same form.
  const bool isSharingPool = node.name == kPoolNode && !subject.instances.contains("pool");
  const Node &own = isSharingPool ? *platkit::FindNode(kSharingPoolNode) : node;
  const bool isOfMonitor = std::ranges::find(kOfMonitor, own.name) != std::end(kOfMonitor);
  Place place = {.node = &own, .arguments = {}};
  for (size_t i = 0; i < own.recordArguments(); ++i) {
    const std::string_view what = own.arguments[i].what;
    const auto instance = subject.instances.find(what == "client" && isOfMonitor ? "monitor" : what);
    if (instance == subject.instances.end()) return std::nullopt;
    place.arguments.push_back(instance->second);
  }
  return place;
}

const std::vector<Subject> &Subjects::Of(MetricFamily family) {
  const auto known = found_.find(family);
  if (known != found_.end()) return known->second;
  std::vector<Subject> &subjects = found_[family];
  std::set<std::string> seen;
  for (Subject &subject : Find(family)) {
    if (seen.insert(subject.labels.text()).second) subjects.push_back(std::move(subject));
  }
  return subjects;
}

std::vector<Subject> Subjects::Find(MetricFamily family) {
  switch (family) {
    case MetricFamily::group:
    case MetricFamily::vm:
    case MetricFamily::world: return Groups(family);
    case MetricFamily::pool: return Pools();
    case MetricFamily::buddy: return Buddies();
    case MetricFamily::heap: return Heaps();
    case MetricFamily::volume: return Volumes();
    case MetricFamily::region: return Regions();
    case MetricFamily::host:
    case MetricFamily::reading: break;
  }
  return {Subject()};
}

std::vector<Subject> Subjects::Groups(MetricFamily family) {
  std::vector<Subject> subjects;
  for (const Argument &group : InstancesFor("sched_groups_groupName")) {
    GroupFlagsRecord flags = {};
    if (GetRecord(readings_, "sched_groups_groupFlags", {group}, flags) == HVC_NOT_FOUND) continue;
    const bool isVm = (flags.flags & HVC_GROUP_VM) != 0;
    if (family == MetricFamily::vm ? !isVm : FamilyOfGroup(flags.flags) != family) continue;
    GroupNameRecord name = {};
    static_cast<void>(GetRecord(readings_, "sched_groups_groupName", {group}, name));
    Subject subject = {.labels = {}, .instances = {{"group", group}}};
    subject.labels.Add("group", std::to_string(group.integer));
    subject.labels.Add(family == MetricFamily::vm ? "vm" : "name", TextOf(name.name));
    if (family != MetricFamily::group) AddClients(subject);
    subjects.push_back(std::move(subject));
  }
  return subjects;
}

void Subjects::AddClients(Subject &group) {
  GroupLeaderIDRecord leader;
  if (GetRecord(readings_, "sched_groups_groupLeaderID", {group.instances["group"]}, leader) != HVC_OK) return;
  const Argument client = IntArgument(leader.leaderID);
  group.instances["client"] = client;
  VmmLeaderIDRecord monitor;
  if (GetRecord(readings_, "worldGroups_vmmLeaderID", {client}, monitor) != HVC_OK) return;
  group.instances["monitor"] = IntArgument(monitor.vmmLeaderID);
}

std::vector<Subject> Subjects::Pools() {
  std::vector<Subject> subjects;
  for (const Argument &numaNode : InstancesFor(kSharingPoolNode)) {
    const std::string number = std::to_string(numaNode.integer);
    Subject &sharing = subjects.emplace_back();
    sharing.labels.Add("numa_node", number).Add("pool", "pshare");
    sharing.instances = {{"numaNode", numaNode}};
    for (const Argument &pool : InstancesFor(kPoolNode, {numaNode})) {
      Subject &subject = subjects.emplace_back();
      subject.labels.Add("numa_node", number).Add("pool", pool.text);
      subject.instances = {{"numaNode", numaNode}, {"pool", pool}};
    }
  }
  return subjects;
}

std::vector<Subject> Subjects::Buddies() {
  std::vector<Subject> subjects;
  for (const Argument &buddy : InstancesFor("system_buddy_comprehensive")) {
    Subject &subject = subjects.emplace_back();
    subject.labels.Add("buddy", buddy.text).Add("numa_node", NumaNodeOf(buddy));
    subject.instances = {{"buddy", buddy}};
  }
  return subjects;
}

// Nothing for those that serve no memory node.
std::string Subjects::NumaNodeOf(const Argument &buddy) {
  const std::optional<int64_t> memNode = MemNodeOf(buddy.text);
  MemNodeRecord record;
  if (!memNode || GetRecord(readings_, "memory_memNodes", {IntArgument(*memNode)}, record) != HVC_OK) return "";
  return std::to_string(record.numaNode);
}

std::vector<Subject> Subjects::Heaps() {
  std::vector<Subject> subjects;
  for (const Argument &heap : InstancesFor("system_heaps_stats")) {
    Subject &subject = subjects.emplace_back();
    subject.labels.Add("heap", heap.text);
    subject.instances = {{"heap", heap}};
  }
  return subjects;
}

std::vector<Subject> Subjects::Volumes() {
  std::vector<Subject> subjects;
  for (const Argument &volume : InstancesFor("memory_pmem_volumes_regionStore_info")) {
    Subject &subject = subjects.emplace_back();
    subject.labels.Add("volume", volume.text);
    subject.instances = {{"volume", volume}};
  }
  return subjects;
}

std::vector<Subject> Subjects::Regions() {
  std::vector<Subject> subjects;
  for (const Argument &volume : InstancesFor("memory_pmem_volumes_regionStore_regions_info")) {
    for (const Argument &region : InstancesFor("memory_pmem_volumes_regionStore_regions_info", {volume})) {
      Subject &subject = subjects.emplace_back();
      subject.labels.Add("volume", volume.text).Add("region", region.text);
      subject.instances = {{"volume", volume}, {"region", region}};
    }
  }
  return subjects;
}

}  // namespace nodal
