#include "tools/nodal/history/host_sampler.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <unordered_set>

namespace nodal {
namespace {

using platkit::history::ValueType;

constexpr std::string_view kPciRegister = "pciConfigReg";

// Whether all keys that start with `a` and a slash come before all that start with `b` and a slash.
bool ComesBefore(std::string_view a, std::string_view b) {
  const size_t common = std::min(a.size(), b.size());
  const int order = a.substr(0, common).compare(b.substr(0, common));
  if (order != 0 || a.size() == b.size()) return order < 0;
  return a.size() < b.size() ? b[common] > '/' : a[common] < '/';
}

void Append(std::string_view text, std::vector<std::byte> &to) {
  const auto bytes = std::as_bytes(std::span(text));
  to.insert(to.end(), bytes.begin(), bytes.end());
}

// Encodes a list as SnapshotWriter::AddIntegers and AddTexts do.
void EncodeList(bool hasIntegers, std::span<const NODAL_Param> entries, std::vector<std::byte> &payload) {
  payload.clear();
  for (const NODAL_Param &entry : entries) {
    if (hasIntegers) {
      const auto bytes = std::as_bytes(std::span(&entry.integer, 1));
      payload.insert(payload.end(), bytes.begin(), bytes.end());
    } else {
      Append(entry.text(), payload);
      payload.push_back(std::byte{0});
    }
  }
}

std::string_view KindOf(std::string_view placeholder) { return placeholder.substr(1, placeholder.find(':') - 1); }

}  // namespace

HostSampler::HostSampler(platkit::Source &source, const PathFilter &filter)
    : source_(source),
      filter_(filter),
      isFiltered_(filter.hasPaths()),
      tree_(source),
      list_(platkit::ParamList::Make()) {
  if (list_ == nullptr) throw std::bad_alloc();
  size_t largest = 0;
  for (const PathTemplate &form : forms_) {
    if (form.path.find(kPciRegister) != std::string::npos || !filter.MayContain(form)) continue;
    AddForm(form);
    if (form.asRecord) largest = std::max<size_t>(largest, form.node->record->size);
  }
  Sort(root_);
  record_.resize(largest);
}

HostSampler::~HostSampler() = default;

void HostSampler::AddForm(const PathTemplate &form) {
  Branch *branch = &root_;
  for (const std::string_view part : SplitPath(form.path)) {
    const bool isInstance = IsPlaceholder(part);
    const std::string_view name = isInstance ? KindOf(part) : part;
    auto next = std::ranges::find_if(
        branch->branches, [&](const Branch &known) { return known.part == name && known.isInstance == isInstance; });
    if (next == branch->branches.end()) {
      branch->branches.push_back({.part = name, .isInstance = isInstance, .below = form.node});
      next = std::prev(branch->branches.end());
    }
    branch = &*next;
  }
  (form.asRecord ? branch->record : branch->list) = form.node;
}

void HostSampler::Sort(Branch &branch) {
  std::ranges::sort(branch.branches, ComesBefore, &Branch::part);
  for (Branch &below : branch.branches)
    Sort(below);
}

void HostSampler::AddTo(platkit::history::Sample &sample) {
  sample_ = &sample;
  instances_.emplace(tree_);
  groups_.clear();
  clients_.clear();
  path_.clear();
  arguments_.clear();
  params_.clear();
  failures_.clear();
  Visit(root_);
  for (const auto &[path, status] : failures_)
    sample.Add(std::string(platkit::snapshot::kFailurePrefix) + path, ValueType::kRecord,
               std::as_bytes(std::span(&status, 1)));
}

void HostSampler::Visit(const Branch &branch) {
  if (branch.list != nullptr && IsWanted()) AddList(*branch.list);
  if (branch.record != nullptr && IsWanted()) AddRecord(*branch.record);
  const size_t length = path_.size();
  path_ += '/';
  for (const Branch &below : branch.branches) {
    if (below.isInstance) {
      VisitInstances(below);
    } else {
      path_ += below.part;
      Visit(below);
    }
    path_.resize(length + 1);
  }
  path_.resize(length);
}

void HostSampler::VisitInstances(const Branch &branch) {
  if (branch.part == "group") {
    FindGroups();
    return VisitNumbers(branch, groups_);
  }
  if (branch.part == "client") {
    FindClients();
    return VisitNumbers(branch, clients_);
  }
  std::vector<std::pair<std::string, const Argument *>> sorted;
  for (const Argument &instance : instances_->Of(*branch.below, arguments_))
    sorted.emplace_back(PathForm(instance), &instance);
  std::ranges::sort(sorted, ComesBefore, [](const auto &entry) { return std::string_view(entry.first); });
  for (const auto &[text, instance] : sorted)
    VisitInstance(branch, text, *instance);
}

void HostSampler::VisitNumbers(const Branch &branch, const std::vector<Number> &numbers) {
  for (const auto &[text, number] : numbers)
    VisitInstance(branch, text, IntArgument(number));
}

void HostSampler::VisitInstance(const Branch &branch, std::string_view text, const Argument &instance) {
  const size_t length = path_.size();
  path_ += text;
  arguments_.push_back(instance);
  // Computes the parameters again, because they refer to texts of the arguments, which may move when an argument is
  // added.
  params_ = ParamsOf(arguments_);
  Visit(branch);
  arguments_.pop_back();
  params_.pop_back();
  path_.resize(length);
}

void HostSampler::AddRecord(const Node &node) {
  const std::span<std::byte> record(record_.data(), node.record->size);
  const HVC_ReturnStatus status = source_.Get(node, params_, record);
  if (status != HVC_OK) return AddFailure(status);
  sample_->Add(path_, ValueType::kRecord, record);
}

void HostSampler::AddList(const Node &node) {
  list_->Clear();
  const HVC_ReturnStatus status = source_.List(node, params_, *list_);
  if (status != HVC_OK) return AddFailure(status);
  const bool hasIntegers = node.entry.kind == ParamKind::kInt;
  EncodeList(hasIntegers, list_->params(), payload_);
  sample_->Add(path_, hasIntegers ? ValueType::kIntegers : ValueType::kTexts, payload_);
}

// Adds no entry for a node that is not found.
void HostSampler::AddFailure(HVC_ReturnStatus status) {
  if (status != HVC_NOT_FOUND) failures_.emplace_back(path_, status);
}

bool HostSampler::ListOf(const Node &node, int64_t argument) {
  const NODAL_Param param = platkit::IntParam(argument);
  list_->Clear();
  return source_.List(node, std::span(&param, 1), *list_) == HVC_OK;
}

template <typename Record>
bool HostSampler::Get(platkit::NodeRef<Record> node, int64_t argument, Record &record) {
  const NODAL_Param param = platkit::IntParam(argument);
  return source_.Get(node, std::span(&param, 1), std::as_writable_bytes(std::span(&record, 1))) == HVC_OK;
}

// Finds group 0 and the groups below it, each once. Omits the members of a group that cannot be listed.
void HostSampler::FindGroups() {
  constexpr int64_t kTopGroup = 0;
  if (!groups_.empty()) return;
  std::unordered_set<int64_t> seen;
  std::vector<int64_t> ahead;
  if (ListOf(nodes::sched_groups_members_groups, kTopGroup)) ahead.push_back(kTopGroup);
  while (!ahead.empty()) {
    const int64_t group = ahead.back();
    ahead.pop_back();
    if (!seen.insert(group).second) continue;
    groups_.emplace_back(std::to_string(group), group);
    if (!ListOf(nodes::sched_groups_members_groups, group)) continue;
    for (const NODAL_Param &member : list_->params())
      ahead.push_back(member.integer);
  }
  std::ranges::sort(groups_);
}

// Finds the members and leaders of all groups, and the monitors of these clients, each once.
void HostSampler::FindClients() {
  if (!clients_.empty()) return;
  FindGroups();
  std::unordered_set<int64_t> seen;
  const auto add = [&](int64_t client) {
    if (seen.insert(client).second) clients_.emplace_back(std::to_string(client), client);
  };
  for (const auto &[text, group] : groups_) {
    GroupFlagsRecord flags = {};
    GroupLeaderIDRecord leader = {};
    const bool mayHaveLeader =
        Get(nodes::sched_groups_groupFlags, group, flags) && (flags.flags & (HVC_GROUP_VM | HVC_GROUP_USER_WORLD)) != 0;
    if (mayHaveLeader && Get(nodes::sched_groups_groupLeaderID, group, leader)) add(leader.leaderID);
    if (!ListOf(nodes::sched_groups_members_memClients, group)) continue;
    for (const NODAL_Param &member : list_->params())
      add(member.integer);
  }
  for (size_t i = 0; i < clients_.size(); ++i) {
    VmmLeaderIDRecord monitor = {};
    if (Get(nodes::worldGroups_vmmLeaderID, clients_[i].second, monitor)) add(monitor.vmmLeaderID);
  }
  std::ranges::sort(clients_);
}

}  // namespace nodal
