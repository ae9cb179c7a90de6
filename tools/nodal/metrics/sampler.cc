#include "tools/nodal/metrics/sampler.h"

#include <algorithm>

#include "platkit/version.h"
#include "tools/nodal/metrics/metric_value.h"
#include "tools/nodal/metrics/prometheus_text.h"
#include "tools/nodal/metrics/subjects.h"
#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

constexpr uint64_t kSmallestBuffer = 4096;
constexpr uint32_t kNotAvailable = UINT32_MAX;

bool IsKnown(const std::string &name) {
  return std::ranges::find(MetricFamilies(), name, &FamilyDescription::name) != MetricFamilies().end() ||
         std::ranges::find(Metrics(), name, &Metric::name) != Metrics().end();
}

class Sampler {
 public:
  Sampler(Tree &host, const MetricChoice &choice, MetricSink &sink)
      : choice_(choice), tree_(host, [] {}), sink_(sink) {}

  void Run() {
    for (const FamilyDescription &family : MetricFamilies())
      ReadFamily(family.family);
    for (const Metric &metric : Metrics()) {
      if (!choice_.Contains(metric)) continue;
      sink_.Begin(metric);
      for (const Subject &subject : subjects_.Of(metric.family))
        AddSamples(metric, subject);
    }
  }

 private:
  // Reads one subject at a time, so that the figures of a subject are from the same time.
  void ReadFamily(MetricFamily family) {
    std::set<const Node *> wanted;
    for (const Metric &metric : Metrics()) {
      if (metric.family == family && metric.node() != nullptr && choice_.Contains(metric)) wanted.insert(metric.node());
    }
    if (wanted.empty()) return;
    for (const Subject &subject : subjects_.Of(family)) {
      for (const Node *node : wanted) {
        if (const std::optional<RecordPath> record = RecordOf(*node, subject))
          tree_.Read(*record->node, true, record->arguments);
      }
    }
  }

  void AddSamples(const Metric &metric, const Subject &subject) {
    if (const auto *computation = std::get_if<Computation>(&metric.value)) return AddComputed(*computation, subject);
    const std::optional<RecordPath> path = RecordOf(*metric.node(), subject);
    if (!path) return;
    std::vector<std::byte> record(path->node->record->size);
    if (tree_.Get(*path->node, path->arguments, record) != HVC_OK) return;
    const platkit::Field &field = *metric.field();
    const auto bytes = BytesOfField(field, record);
    if (const platkit::Field *entryField = metric.entryField()) {
      AddEntries(field, *entryField, bytes, subject);
    } else {
      AddValue(subject.labels, field, bytes);
    }
  }

  // Adds one sample for each buffer size of a buddy allocator.
  void AddEntries(const platkit::Field &array, const platkit::Field &entryField, std::span<const std::byte> bytes,
                  const Subject &subject) {
    for (uint32_t i = 0; i < array.count; ++i) {
      Labels labels = subject.labels;
      labels.Add("buffer_bytes", std::to_string(kSmallestBuffer << i));
      const auto entry = bytes.subspan(size_t{i} * array.size, array.size);
      AddValue(labels, entryField, BytesOfField(entryField, entry));
    }
  }

  void AddValue(const Labels &labels, const platkit::Field &field, std::span<const std::byte> bytes) {
    if (const std::optional<double> value = ValueOf(field, bytes)) sink_.AddSample(labels, *value);
  }

  void AddComputed(Computation computation, const Subject &subject) {
    switch (computation) {
      case Computation::kMemoryState: return AddMemoryState();
      case Computation::kMemoryStateEntries: return AddMemoryStateEntries();
      case Computation::kGroupInfo: return AddGroupInfo(subject);
      case Computation::kReadingFailures: return AddReadingFailures();
      case Computation::kReadingInfo: return AddReadingInfo();
    }
  }

  const Arguments &MemoryStates() { return subjects_.InstancesFor(nodes::sched_globalStats_memory_stateTransitions); }

  void AddMemoryState() {
    GlobalMemoryRecord memory;
    if (GetRecord(tree_, nodes::sched_globalStats_memory_kestrel, {}, memory) != HVC_OK) return;
    if (memory.memState == kNotAvailable) return;
    for (uint32_t number = 0; const Argument &state : MemoryStates())
      sink_.AddSample(Labels().Add("state", state.text), memory.memState == number++ ? 1 : 0);
  }

  // A state is entered from its two neighbours. The host starts in the first state, which counts as an entry.
  void AddMemoryStateEntries() {
    const Arguments &states = MemoryStates();
    for (size_t i = 0; i < states.size(); ++i) {
      const uint32_t fromAbove = i == 0 ? 1 : TransitionsOf(states[i - 1]).toLowerCount;
      const uint32_t fromBelow = i + 1 == states.size() ? 0 : TransitionsOf(states[i + 1]).toHigherCount;
      if (fromAbove == kNotAvailable || fromBelow == kNotAvailable) continue;
      sink_.AddSample(Labels().Add("state", states[i].text), static_cast<double>(uint64_t{fromAbove} + fromBelow));
    }
  }

  StateTransitionsRecord TransitionsOf(const Argument &state) {
    StateTransitionsRecord record = {};
    if (GetRecord(tree_, nodes::sched_globalStats_memory_stateTransitions, {state}, record) != HVC_OK) {
      record.toLowerCount = record.toHigherCount = kNotAvailable;
    }
    return record;
  }

  void AddGroupInfo(const Subject &subject) {
    const Arguments group = {subject.instances.at("group")};
    ParentGroupIDRecord parent = {.parentGroupID = -1};
    GroupTagRecord tag = {};
    GroupFlagsRecord flags = {};
    static_cast<void>(GetRecord(tree_, nodes::sched_groups_parentGroupID, group, parent));
    static_cast<void>(GetRecord(tree_, nodes::sched_groups_groupTag, group, tag));
    static_cast<void>(GetRecord(tree_, nodes::sched_groups_groupFlags, group, flags));
    Labels labels = subject.labels;
    if (parent.parentGroupID >= 0) labels.Add("parent", std::to_string(parent.parentGroupID));
    labels.Add("tag", TextOf(tag.tag)).Add("kind", KindOf(flags.flags));
    sink_.AddSample(labels, 1);
  }

  static std::string_view KindOf(uint32_t flags) {
    if ((flags & HVC_GROUP_VM) != 0) return "vm";
    if ((flags & HVC_GROUP_VMM_SUB_CONTAINER) != 0) return "vmm";
    if ((flags & HVC_GROUP_KERNEL) != 0) return "kernel";
    return (flags & HVC_GROUP_CONTAINER) != 0 ? "container" : "other";
  }

  void AddReadingFailures() {
    const auto failed = [](const auto &entry) {
      return entry.second.status != HVC_OK && entry.second.status != HVC_NOT_FOUND;
    };
    sink_.AddSample({}, static_cast<double>(std::ranges::count_if(tree_.answers(), failed)));
  }

  void AddReadingInfo() {
    const std::string &definitions = platkit::OwnDefinitions().build;
    sink_.AddSample(Labels().Add("version", PLATKIT_VERSION).Add("definitions", definitions), 1);
  }

  const MetricChoice &choice_;
  CachingTree tree_;
  Subjects subjects_{tree_};
  MetricSink &sink_;
};

}  // namespace

MetricChoice::MetricChoice(const std::vector<std::string> &only) : only_(only.begin(), only.end()) {
  for (const std::string &name : only_) {
    if (!IsKnown(name)) throw UsageError("--only " + name, "unknown metric or family (see nodal metrics --help)");
  }
}

bool MetricChoice::Contains(const Metric &metric) const {
  const FamilyDescription &family = DescriptionOf(metric.family);
  if (only_.empty()) return family.isStandard;
  return only_.contains(std::string(family.name)) || only_.contains(std::string(metric.name));
}

std::string SampleMetrics(Tree &host, const MetricChoice &choice, const std::string &prefix) {
  PrometheusText text(prefix);
  SampleMetrics(host, choice, text);
  return text.text() + "# EOF\n";
}

void SampleMetrics(Tree &host, const MetricChoice &choice, MetricSink &sink) { Sampler(host, choice, sink).Run(); }

}  // namespace nodal
