#include "tools/nodal/metrics/subjects.h"

#include <algorithm>
#include <set>

namespace nodal {
namespace {

// Whether a virtual machine's record of this node belongs to its monitor's client.
bool IsOfMonitor(const Node &node) {
  return node.id == nodes::sched_memClients_swapInfo.id() || node.id == nodes::memory_lpage_vmLPage.id();
}

MetricFamily FamilyOfGroup(uint32_t flags) {
  const bool isWorld = (flags & HVC_GROUP_USER_WORLD) != 0 && (flags & HVC_GROUP_VM) == 0;
  return isWorld ? MetricFamily::kWorld : MetricFamily::kGroup;
}

}  // namespace

std::optional<RecordPath> RecordOf(const Node &node, const Subject &subject) {
  // The pool of page sharing has its own node, with the same record as the other pools.
  const bool isSharingPool =
      node.id == nodes::memory_lpage_nodeList_vmPools.id() && !subject.instances.contains("pool");
  const Node &own = isSharingPool ? nodes::memory_lpage_nodeList_psharePool : node;
  RecordPath record = {.node = &own, .arguments = {}};
  for (size_t i = 0; i < own.recordArguments(); ++i) {
    const std::string_view what = own.arguments[i].what;
    const auto instance = subject.instances.find(what == "client" && IsOfMonitor(own) ? "monitor" : what);
    if (instance == subject.instances.end()) return std::nullopt;
    record.arguments.push_back(instance->second);
  }
  return record;
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
    case MetricFamily::kGroup:
    case MetricFamily::kVm:
    case MetricFamily::kWorld: return Groups(family);
    case MetricFamily::kPool: return Pools();
    case MetricFamily::kBuddy: return Buddies();
    case MetricFamily::kHeap: return Heaps();
    case MetricFamily::kVolume: return Volumes();
    case MetricFamily::kRegion: return Regions();
    case MetricFamily::kHost:
    case MetricFamily::kReading: break;
  }
  return {Subject()};
}

std::vector<Subject> Subjects::Groups(MetricFamily family) {
  std::vector<Subject> subjects;
  for (const Argument &group : InstancesFor(nodes::sched_groups_groupName)) {
    GroupFlagsRecord flags = {};
    if (GetRecord(tree_, nodes::sched_groups_groupFlags, {group}, flags) == HVC_NOT_FOUND) continue;
    const bool isVm = (flags.flags & HVC_GROUP_VM) != 0;
    if (family == MetricFamily::kVm ? !isVm : FamilyOfGroup(flags.flags) != family) continue;
    GroupNameRecord name = {};
    static_cast<void>(GetRecord(tree_, nodes::sched_groups_groupName, {group}, name));
    Subject subject = {.labels = {}, .instances = {{"group", group}}};
    subject.labels.Add("group", std::to_string(group.integer));
    subject.labels.Add(family == MetricFamily::kVm ? "vm" : "name", TextOf(name.name));
    if (family != MetricFamily::kGroup) AddClients(subject);
    subjects.push_back(std::move(subject));
  }
  return subjects;
}

void Subjects::AddClients(Subject &group) {
  const std::optional<Argument> client = LeaderOf(tree_, group.instances["group"]);
  if (!client) return;
  group.instances["client"] = *client;
  if (const std::optional<Argument> monitor = MonitorOf(tree_, *client)) group.instances["monitor"] = *monitor;
}

std::vector<Subject> Subjects::Pools() {
  std::vector<Subject> subjects;
  for (const Argument &numaNode : InstancesFor(nodes::memory_lpage_nodeList_psharePool)) {
    const std::string number = std::to_string(numaNode.integer);
    Subject &sharing = subjects.emplace_back();
    sharing.labels.Add("numa_node", number).Add("pool", "pshare");
    sharing.instances = {{"numaNode", numaNode}};
    for (const Argument &pool : InstancesFor(nodes::memory_lpage_nodeList_vmPools, {numaNode})) {
      Subject &subject = subjects.emplace_back();
      subject.labels.Add("numa_node", number).Add("pool", pool.text);
      subject.instances = {{"numaNode", numaNode}, {"pool", pool}};
    }
  }
  return subjects;
}

std::vector<Subject> Subjects::Buddies() {
  std::vector<Subject> subjects;
  for (const Argument &buddy : InstancesFor(nodes::system_buddy_comprehensive)) {
    Subject &subject = subjects.emplace_back();
    subject.labels.Add("buddy", buddy.text).Add("numa_node", NumaNodeOf(buddy));
    subject.instances = {{"buddy", buddy}};
  }
  return subjects;
}

// Returns "" for an allocator that serves no memory node, or whose memory node cannot be read.
std::string Subjects::NumaNodeOf(const Argument &buddy) {
  const std::optional<int64_t> memNode = MemNodeOf(buddy.text);
  MemNodeRecord record;
  if (!memNode || GetRecord(tree_, nodes::memory_memNodes, {IntArgument(*memNode)}, record) != HVC_OK) return "";
  return std::to_string(record.numaNode);
}

std::vector<Subject> Subjects::Heaps() {
  std::vector<Subject> subjects;
  for (const Argument &heap : InstancesFor(nodes::system_heaps_stats)) {
    Subject &subject = subjects.emplace_back();
    subject.labels.Add("heap", heap.text);
    subject.instances = {{"heap", heap}};
  }
  return subjects;
}

std::vector<Subject> Subjects::Volumes() {
  std::vector<Subject> subjects;
  for (const Argument &volume : InstancesFor(nodes::memory_pmem_volumes_regionStore_info)) {
    Subject &subject = subjects.emplace_back();
    subject.labels.Add("volume", volume.text);
    subject.instances = {{"volume", volume}};
  }
  return subjects;
}

std::vector<Subject> Subjects::Regions() {
  std::vector<Subject> subjects;
  for (const Argument &volume : InstancesFor(nodes::memory_pmem_volumes_regionStore_regions_info)) {
    for (const Argument &region : InstancesFor(nodes::memory_pmem_volumes_regionStore_regions_info, {volume})) {
      Subject &subject = subjects.emplace_back();
      subject.labels.Add("volume", volume.text).Add("region", region.text);
      subject.instances = {{"volume", volume}, {"region", region}};
    }
  }
  return subjects;
}

}  // namespace nodal
