#include "tools/nodal/page/page_reader.h"

#include <initializer_list>
#include <set>
#include <utility>

#include "platkit/memory_states.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/instances.h"

namespace nodal {
namespace {

class PageReader {
 public:
  PageReader(CachingTree &tree, Pseudonyms *pseudonyms, bool withRecords)
      : tree_(tree), instances_(tree), pseudonyms_(pseudonyms), withRecords_(withRecords) {}

  PageData Read() {
    AddHost();
    AddGroups();
    AddBuddies();
    AddPools();
    AddHeaps();
    return std::move(data_);
  }

 private:
  void AddHost() {
    data_.hostFigures.rows.push_back({.name = "host"});
    AddRecords(data_.hostFigures, nodes::memory_comprehensive);
    AddRecords(data_.hostFigures, nodes::sched_globalStats_memory_kestrel);
    AddRecords(data_.hostFigures, nodes::memory_pshare_stats);
    AddRecords(data_.hostFigures, nodes::memory_memInfo);
    AddRecords(data_.hostFigures, nodes::sched_globalStats_numVMs);
    for (const std::string_view state : platkit::kMemoryStates)
      data_.states.rows.push_back({.name = std::string(state), .instances = {{"state", TextArgument(state)}}});
    AddRecords(data_.states, nodes::sched_globalStats_memory_stateTransitions);
  }

  void AddGroups() {
    AddGroupRows();
    AddRecords(data_.groups, nodes::sched_groups_groupFlags);
    AddRecords(data_.groups, nodes::sched_groups_memAllocationInKB);
    AddRecords(data_.groups, nodes::sched_groups_stats_capacity);
    AddRecords(data_.groups, nodes::sched_groups_stats_memoryStats);
    AddRecords(data_.groups, nodes::sched_memClients_kestrel_vmm);
    AddRecords(data_.groups, nodes::sched_memClients_swapInfo);
    AddRecords(data_.groups, nodes::sched_memClients_kestrel_guest);
    AddRecords(data_.groups, nodes::sched_memClients_memzipInfo);
    AddRecords(data_.groups, nodes::memory_lpage_vmLPage);
    AddRecords(data_.groups, nodes::sched_memClients_kestrel_uw);
  }

  // Adds the groups from the top down, each directly before its members. A group that occurs again, as in a cycle, is
  // added only once.
  void AddGroupRows() {
    std::vector<std::pair<Argument, int>> ahead = {{IntArgument(0), -1}};
    std::set<Argument> seen;
    while (!ahead.empty()) {
      const auto [group, parent] = ahead.back();
      ahead.pop_back();
      if (!seen.insert(group).second) continue;
      const int row = static_cast<int>(data_.groups.rows.size());
      data_.groups.rows.push_back(GroupRow(group, parent));
      const Arguments members = ListOf(nodes::sched_groups_members_groups, {group});
      for (auto member = members.rbegin(); member != members.rend(); ++member)
        ahead.emplace_back(*member, row);
    }
  }

  PageRow GroupRow(const Argument &group, int parent) {
    PageRow row = {.name = "?", .id = group.integer, .parent = parent, .instances = {{"group", group}}};
    if (const auto name = Get(nodes::sched_groups_groupName, {group})) row.name = Printable(TextOf(name->name));
    if (const auto tag = Get(nodes::sched_groups_groupTag, {group})) row.tag = Printable(TextOf(tag->tag));
    if (const std::optional<Argument> client = LeaderOf(tree_, group)) {
      row.instances["client"] = *client;
      if (const std::optional<Argument> monitor = MonitorOf(tree_, *client)) row.instances["monitor"] = *monitor;
    }
    return row;
  }

  void AddBuddies() {
    for (const Argument &buddy : ListOf(nodes::system_buddy, {})) {
      PageRow row = {.name = NameOf("buddy", buddy), .instances = {{"buddy", buddy}}};
      if (const std::optional<int64_t> memNode = MemNodeOf(buddy.text))
        row.instances["memNode"] = IntArgument(*memNode);
      data_.buddies.rows.push_back(std::move(row));
    }
    AddRecords(data_.buddies, nodes::memory_memNodes);
    AddRecords(data_.buddies, nodes::system_buddy_comprehensive);
  }

  void AddPools() {
    for (const Argument &numaNode : instances_.Of(nodes::memory_lpage_nodeList_psharePool, {})) {
      data_.pools.rows.push_back(
          {.name = "page sharing", .id = numaNode.integer, .instances = {{"numaNode", numaNode}}});
      for (const Argument &pool : ListOf(nodes::memory_lpage_nodeList_vmPools, {numaNode})) {
        data_.pools.rows.push_back({.name = NameOf("pool", pool),
                                    .id = numaNode.integer,
                                    .instances = {{"numaNode", numaNode}, {"pool", pool}}});
      }
    }
    AddRecords(data_.pools, nodes::memory_lpage_nodeList_vmPools);
  }

  void AddHeaps() {
    for (const Argument &heap : ListOf(nodes::system_heaps, {}))
      data_.heaps.rows.push_back({.name = NameOf("heap", heap), .instances = {{"heap", heap}}});
    AddRecords(data_.heaps, nodes::system_heaps_stats);
  }

  // Adds the records of all rows that have one.
  void AddRecords(PageFamily &family, const Node &node) {
    PageRecords records = {.node = &node};
    for (size_t row = 0; withRecords_ && row < family.rows.size(); ++row) {
      const auto path = RecordOf(node, family.rows[row]);
      if (!path) continue;
      std::string bytes(path->node->record->size, '\0');
      const HVC_ReturnStatus status = Read(*path->node, path->arguments, std::as_writable_bytes(std::span(bytes)));
      if (status == HVC_OK) {
        records.bytes.emplace_hint(records.bytes.end(), row, std::move(bytes));
      } else if (status != HVC_NOT_FOUND) {
        records.unreadable[row] = status;
      }
    }
    family.records.push_back(std::move(records));
  }

  HVC_ReturnStatus Read(const Node &node, const Arguments &arguments, std::span<std::byte> record) {
    const HVC_ReturnStatus status = tree_.Get(node, arguments, record);
    if (status == HVC_OK && pseudonyms_ != nullptr) pseudonyms_->Replace(*node.record, record);
    return status;
  }

  template <typename Record>
  std::optional<Record> Get(platkit::NodeRef<Record> node, const Arguments &arguments) {
    Record record;
    if (Read(node, arguments, std::as_writable_bytes(std::span(&record, 1))) != HVC_OK) return std::nullopt;
    return record;
  }

  // Returns the entries of a list, each once, or no entries if it cannot be read.
  Arguments ListOf(const Node &list, const Arguments &arguments) {
    const std::string path = PathOf(list, arguments);
    tree_.Read(list, false, arguments);
    const auto answer = tree_.answers().find(path);
    if (answer == tree_.answers().end()) return {};
    const HVC_ReturnStatus status = answer->second.status;
    if (status != HVC_OK && status != HVC_NOT_FOUND)
      data_.unreadableLists.push_back({ShownPath(list, arguments), status});
    Arguments entries;
    std::set<Argument> seen;
    for (const Argument &entry : answer->second.entries) {
      if (seen.insert(entry).second) entries.push_back(entry);
    }
    return entries;
  }

  std::string ShownPath(const Node &node, Arguments arguments) {
    for (size_t i = 0; i < arguments.size(); ++i)
      arguments[i] = Shown(node.arguments[i].what, arguments[i]);
    return Printable(PathOf(node, arguments));
  }

  Argument Shown(std::string_view what, const Argument &instance) {
    return pseudonyms_ != nullptr ? pseudonyms_->Of(what, instance) : instance;
  }

  std::string NameOf(std::string_view what, const Argument &instance) { return Printable(Shown(what, instance).text); }

  CachingTree &tree_;
  Instances instances_;
  Pseudonyms *pseudonyms_;
  const bool withRecords_;
  PageData data_;
};

}  // namespace

std::optional<RecordPath> RecordOf(const Node &node, const PageRow &row) {
  return RecordOf(node, Subject{.labels = {}, .instances = row.instances});
}

PageData ReadPageData(CachingTree &tree, Pseudonyms *pseudonyms) { return PageReader(tree, pseudonyms, true).Read(); }

PageData ReadPageRows(CachingTree &tree, Pseudonyms *pseudonyms) { return PageReader(tree, pseudonyms, false).Read(); }

}  // namespace nodal
