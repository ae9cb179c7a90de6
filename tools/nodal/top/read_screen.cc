#include <algorithm>
#include <charconv>
#include <memory>
#include <new>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platkit/memory_states.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/top/reading.h"
#include "tools/nodal/tree/field_value.h"
#include "tools/nodal/tree/instances.h"

namespace nodal::top {
namespace {

using platkit::IntParam;
using platkit::NodeRef;
using platkit::TextParam;

bool IsOfMonitor(const Node &node) {
  return node.id == nodes::sched_memClients_swapInfo.id() || node.id == nodes::memory_lpage_vmLPage.id();
}

// This limit is needed because even a small snapshot can list more instances than fit into memory.
constexpr size_t kMaxRows = 1'500'000;

bool TakesClient(const Node &node) { return node.arguments[0].what == "client"; }

class ScreenReader {
 public:
  ScreenReader(platkit::Source &source, const NodeSet &nodes, const Reading *before)
      : source_(source), nodes_(nodes), list_(platkit::ParamList::Make()) {
    if (list_ == nullptr) throw std::bad_alloc();
    if (before != nullptr) FindKnown(*before);
    for (const Node &node : platkit::Nodes()) {
      if (!nodes_.test(node.id) || !node.isRecord()) continue;
      needsClients_ = needsClients_ || TakesClient(node);
      needsMonitors_ = needsMonitors_ || IsOfMonitor(node);
    }
  }

  Reading Read(ScreenId screen) {
    reading_.hasClients = needsClients_;
    ReadHost();
    switch (screen) {
      case ScreenId::kGroups: AddGroups(false); break;
      case ScreenId::kMachines: AddGroups(true); break;
      case ScreenId::kHost: AddFigures(); break;
      case ScreenId::kNodes: AddNodes(); break;
      case ScreenId::kHeaps: AddHeaps(); break;
    }
    for (const Node &node : platkit::Nodes()) {
      if (nodes_.test(node.id) && node.isRecord()) AddRecords(node);
    }
    return std::move(reading_);
  }

 private:
  static constexpr int kNoGroup = -2;

  template <typename Record>
  HVC_ReturnStatus Get(NodeRef<Record> node, platkit::Arguments arguments, Record &record) {
    return source_.Get(node, arguments, std::as_writable_bytes(std::span(&record, 1)));
  }

  template <typename Record>
  HVC_ReturnStatus GetOf(NodeRef<Record> node, int64_t instance, Record &record) {
    const NODAL_Param argument = IntParam(instance);
    return Get(node, std::span(&argument, 1), record);
  }

  std::span<const NODAL_Param> List(const Node &node, platkit::Arguments arguments) {
    list_->Clear();
    const HVC_ReturnStatus status = source_.List(node, arguments, *list_);
    if (status == HVC_OK) return list_->params();
    if (status != HVC_NOT_FOUND && reading_.problem.empty()) {
      platkit::PathWriter path;
      platkit::WritePath(node, arguments, path);
      reading_.problem = Printable(path.view()) + ": " + StatusText(status);
    }
    return {};
  }

  std::vector<std::string> Texts(const Node &node, platkit::Arguments arguments = {}) {
    std::vector<std::string> texts;
    std::unordered_set<std::string> seen;
    for (const NODAL_Param &entry : List(node, arguments)) {
      if (texts.size() + reading_.rows.size() == kMaxRows) break;
      if (seen.insert(std::string(entry.text())).second) texts.emplace_back(entry.text());
    }
    return texts;
  }

  void ReadHost() {
    reading_.host = {.total = HostCell(TOP_FIELD(memory_comprehensive, total)),
                     .free = HostCell(TOP_FIELD(memory_comprehensive, free)),
                     .state = HostCell(TOP_FIELD(sched_globalStats_memory_kestrel, memState))};
  }

  Cell HostCell(const Term &term) {
    const Node &node = *platkit::FindNode(static_cast<uint32_t>(term.node));
    std::vector<std::byte> record(node.record->size);
    const bool isOfState = term.node == platkit::NodeId::sched_globalStats_memory_stateTransitions;
    const NODAL_Param state = TextParam(platkit::kMemoryStates[term.state]);
    const HVC_ReturnStatus status = source_.Get(node, std::span(&state, isOfState ? 1 : 0), record);
    if (status == HVC_NOT_FOUND) return {};
    return status == HVC_OK ? TermValue(term, record) : UnavailableCell();
  }

  // Adds the groups from the top down, each directly before its members. A group that occurs again, as in a cycle, is
  // added only once.
  void AddGroups(bool onlyMachines) {
    std::vector<std::pair<int64_t, int>> ahead = {{0, -1}};
    std::unordered_set<int64_t> seen;
    while (!ahead.empty()) {
      const auto [group, parent] = ahead.back();
      ahead.pop_back();
      if (IsFull() || !seen.insert(group).second) continue;
      const int row = onlyMachines ? AddMachine(group) : AddGroup(group, parent);
      if (row == kNoGroup) continue;
      ++reading_.groups;
      const NODAL_Param argument = IntParam(group);
      const auto members = List(nodes::sched_groups_members_groups, std::span(&argument, 1));
      for (auto member = members.rbegin(); member != members.rend(); ++member)
        ahead.emplace_back(member->integer, row);
    }
  }

  // Finds control groups whose names need not be read, because names seldom change. Each name is read again in every
  // eighth sample.
  void FindKnown(const Reading &before) {
    constexpr unsigned kTurns = 8;
    reading_.turn = before.turn + 1;
    if (!before.hasClients) return;
    for (const Row &row : before.rows) {
      const bool isDue = (static_cast<uint64_t>(row.group) + reading_.turn) % kTurns == 0;
      if (row.group != Row::kUnset && row.client == Row::kUnset && !isDue) known_.emplace(row.group, &row);
    }
  }

  bool IsFull() {
    if (reading_.rows.size() < kMaxRows) return false;
    reading_.problem = "more than " + std::to_string(kMaxRows) + " rows; the others are left out";
    return true;
  }

  // Returns the index of the row, or kNoGroup if there is no such group.
  int AddGroup(int64_t group, int parent) {
    Row row = {.key = std::to_string(group), .name = "?", .parent = parent, .group = group};
    if (const auto known = known_.find(group); known != known_.end()) {
      row.name = known->second->name;
      return AddRow(std::move(row));
    }
    GroupNameRecord name = {};
    const HVC_ReturnStatus status = GetOf(nodes::sched_groups_groupName, group, name);
    if (status == HVC_OK) row.name = Printable(nodal::TextOf(name.name));
    GroupMemoryStatsRecord stats = {};
    if (status == HVC_NOT_FOUND && GetOf(nodes::sched_groups_stats_memoryStats, group, stats) == HVC_NOT_FOUND)
      return kNoGroup;
    GroupFlagsRecord flags = {};
    if (needsClients_ && GetOf(nodes::sched_groups_groupFlags, group, flags) == HVC_OK) AddClients(row, flags.flags);
    return AddRow(std::move(row));
  }

  int AddMachine(int64_t group) {
    GroupFlagsRecord flags = {};
    if (GetOf(nodes::sched_groups_groupFlags, group, flags) != HVC_OK || (flags.flags & HVC_GROUP_VM) == 0) return -1;
    Row row = {.key = std::to_string(group), .name = "?", .group = group, .isMachine = true};
    GroupNameRecord name = {};
    if (GetOf(nodes::sched_groups_groupName, group, name) == HVC_OK) row.name = Printable(nodal::TextOf(name.name));
    AddClients(row, flags.flags);
    return AddRow(std::move(row));
  }

  void AddClients(Row &row, uint32_t flags) {
    if ((flags & (HVC_GROUP_VM | HVC_GROUP_USER_WORLD)) == 0) return;
    GroupLeaderIDRecord leader = {};
    if (GetOf(nodes::sched_groups_groupLeaderID, row.group, leader) != HVC_OK) return;
    row.client = leader.leaderID;
    VmmLeaderIDRecord monitor = {};
    if (!needsMonitors_ || (flags & HVC_GROUP_VM) == 0) return;
    if (GetOf(nodes::worldGroups_vmmLeaderID, row.client, monitor) == HVC_OK) row.monitor = monitor.vmmLeaderID;
  }

  void AddFigures() {
    for (const HostFigure &figure : HostFigures()) {
      Cell sum;
      for (const Term &term : figure.figure.terms) {
        if (!term) continue;
        const Cell part = HostCell(term);
        const bool isKnown = part.state == CellState::kValue;
        sum = isKnown && sum.state != CellState::kUnavailable ? ValueCell(sum.number + part.number) : part;
        if (!isKnown) break;
      }
      if (sum.state == CellState::kValue) sum.number += figure.constant;
      const std::string name(figure.figure.name);
      AddRow({.key = std::string(figure.report) + "." + name, .name = name, .figure = &figure});
      reading_.own.push_back(sum);
    }
  }

  // Adds each NUMA node and, below it, its allocators and pools.
  void AddNodes() {
    constexpr uint32_t kMaxNodes = 4096;
    MemInfoRecord info = {};
    const bool hasNodes = Get(nodes::memory_memInfo, {}, info) == HVC_OK;
    const uint32_t count = hasNodes ? std::min(info.numNodes, kMaxNodes) : 0;
    std::unordered_map<int64_t, std::vector<Row>> buddies;
    std::vector<Row> others;  // allocators of no known NUMA node
    for (Row &buddy : Buddies()) {
      const bool isOfNode = buddy.numaNode >= 0 && buddy.numaNode < int64_t{count};
      (isOfNode ? buddies[buddy.numaNode] : others).push_back(std::move(buddy));
    }
    for (int64_t node = 0; node < count; ++node) {
      const std::string number = std::to_string(node);
      const int parent = AddRow({.key = "node " + number, .name = "node " + number, .numaNode = node});
      for (Row &buddy : buddies[node])
        AddBelow(parent, std::move(buddy));
      AddPools(parent, node);
    }
    for (Row &buddy : others)
      AddRow(std::move(buddy));
  }

  std::vector<Row> Buddies() {
    std::vector<Row> rows;
    for (const std::string &name : Texts(nodes::system_buddy)) {
      Row row = {.key = "buddy " + name, .name = Printable(name), .kind = "buddy", .instance = name};
      MemNodeRecord memNode = {};
      if (const auto number = MemNodeOf(name)) {
        row.memNode = *number;
        if (GetOf(nodes::memory_memNodes, *number, memNode) == HVC_OK) row.numaNode = memNode.numaNode;
      }
      rows.push_back(std::move(row));
    }
    return rows;
  }

  void AddPools(int parent, int64_t node) {
    const std::string number = std::to_string(node);
    AddBelow(parent, {.key = "pshare-" + number, .name = "pshare-" + number, .numaNode = node, .isSharingPool = true});
    const NODAL_Param argument = IntParam(node);
    for (const std::string &name : Texts(nodes::memory_lpage_nodeList_vmPools, std::span(&argument, 1))) {
      Row pool = {.key = "pool " + number, .name = Printable(name), .numaNode = node, .kind = "pool", .instance = name};
      pool.key.append(" ").append(name);
      AddBelow(parent, std::move(pool));
    }
  }

  void AddHeaps() {
    for (const std::string &name : Texts(nodes::system_heaps))
      AddRow({.key = name, .name = Printable(name), .kind = "heap", .instance = name});
  }

  void AddBelow(int parent, Row row) {
    row.parent = parent;
    AddRow(std::move(row));
  }

  int AddRow(Row row) {
    if (row.parent >= 0) {
      Row &parent = reading_.rows[static_cast<size_t>(row.parent)];
      row.depth = parent.depth + 1;
      ++parent.members;
    }
    reading_.rows.push_back(std::move(row));
    return static_cast<int>(reading_.rows.size()) - 1;
  }

  void AddRecords(const Node &node) {
    NodeRecords &records = reading_.records.emplace_back(NodeRecords{.node = &node});
    const size_t size = node.record->size;
    records.bytes.resize(reading_.rows.size() * size);
    records.statuses.reserve(reading_.rows.size());
    for (size_t i = 0; i < reading_.rows.size(); ++i) {
      const std::span<std::byte> record = std::span(records.bytes).subspan(i * size, size);
      records.statuses.push_back(GetRecordOf(node, reading_.rows[i], record));
    }
  }

  // Returns HVC_NOT_FOUND if rows of this kind have no such record.
  HVC_ReturnStatus GetRecordOf(const Node &node, const Row &row, std::span<std::byte> record) {
    if (row.isMachine && node.id == nodes::sched_groups_memAllocationInKB.id())
      return GetMachineAllocation(row.group, record);
    // The pool of page sharing has its own node, with the same record as the other pools.
    const bool isOfSharingPool = row.isSharingPool && node.id == nodes::memory_lpage_nodeList_vmPools.id();
    const Node &own = isOfSharingPool ? nodes::memory_lpage_nodeList_psharePool : node;
    NODAL_Param arguments[Node::kMaxArguments];
    for (size_t i = 0; i < own.recordArguments(); ++i) {
      if (!SetArgument(own, i, row, arguments[i])) return HVC_NOT_FOUND;
    }
    return source_.Get(own, std::span(arguments, own.recordArguments()), record);
  }

  // Reads the allocation of a machine. The reservation and the limit are those of its monitor's group; the other fields
  // are the machine's own.
  HVC_ReturnStatus GetMachineAllocation(int64_t group, std::span<std::byte> record) {
    GroupAllocRecord machine = {}, monitor = {};
    const std::optional<int64_t> child = MonitorGroupOf(group);
    if (!child || GetOf(nodes::sched_groups_memAllocationInKB, group, machine) != HVC_OK ||
        GetOf(nodes::sched_groups_memAllocationInKB, *child, monitor) != HVC_OK)
      return HVC_NOT_INITIALIZED;
    machine.min = monitor.min;
    machine.max = monitor.max;
    std::ranges::copy(std::as_bytes(std::span(&machine, 1)), record.begin());
    return HVC_OK;
  }

  std::optional<int64_t> MonitorGroupOf(int64_t group) {
    const NODAL_Param argument = IntParam(group);
    for (const NODAL_Param &member : List(nodes::sched_groups_members_groups, std::span(&argument, 1))) {
      GroupFlagsRecord flags = {};
      if (GetOf(nodes::sched_groups_groupFlags, member.integer, flags) != HVC_OK) continue;
      if ((flags.flags & HVC_GROUP_VMM_SUB_CONTAINER) != 0) return member.integer;
    }
    return std::nullopt;
  }

  static bool SetArgument(const Node &node, size_t index, const Row &row, NODAL_Param &argument) {
    const auto [what, kind] = node.arguments[index];
    if (kind == ParamKind::kText) {
      argument = TextParam(row.instance);
      return row.kind == what;
    }
    argument = IntParam(what == "group"     ? row.group
                        : what == "client"  ? (IsOfMonitor(node) ? row.monitor : row.client)
                        : what == "memNode" ? row.memNode
                                            : row.numaNode);
    return argument.integer != Row::kUnset;
  }

  platkit::Source &source_;
  const NodeSet &nodes_;
  std::unordered_map<int64_t, const Row *> known_;
  bool needsClients_ = false;
  bool needsMonitors_ = false;
  Reading reading_;
  platkit::OwnedParamList list_;
};

}  // namespace

Reading ReadScreen(const Screen &screen, platkit::Source &source, const NodeSet &nodes, const Reading *before) {
  return ScreenReader(source, nodes, before).Read(screen.id);
}

}  // namespace nodal::top
