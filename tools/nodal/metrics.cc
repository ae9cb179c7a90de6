// nodal metrics: the host's figures, for the systems that watch many hosts.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <span>

#include "platkit/atomic_file.h"
#include "platkit/errno_status.h"
#include "platkit/version.h"
#include "tools/nodal/commands.h"
#include "tools/nodal/exposition.h"
#include "tools/nodal/figures.h"
#include "tools/nodal/output.h"
#include "tools/nodal/record_json.h"
#include "tools/nodal/subjects.h"
#include "tools/nodal/text.h"

namespace nodal {
namespace {

constexpr uint64_t kSmallestBuffer = 4096;
constexpr uint32_t kNotAvailable = UINT32_MAX;

// Which metrics are wanted: those of a family, or single ones. Without a word, those of the standard families.
class Choice {
 public:
  explicit Choice(const std::vector<std::string> &only) : only_(only.begin(), only.end()) {
    for (const std::string &word : only_) {
      const bool isKnown =
          std::ranges::find(MetricFamilies(), word, &FamilyDescription::name) != MetricFamilies().end() ||
          std::ranges::find(Metrics(), word, &Metric::name) != Metrics().end();
      if (!isKnown) throw Failure(word, "no such metric, nor family of metrics");
    }
  }

  bool Contains(const Metric &metric) const {
    const FamilyDescription &family = DescriptionOf(metric.family);
    if (only_.empty()) return family.isStandard;
    return only_.contains(std::string(family.name)) || only_.contains(std::string(metric.name));
  }

 private:
  std::set<std::string> only_;
};

bool IsPrefix(std::string_view text) {
  const auto fits = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':'; };
  return std::ranges::all_of(text, [&](char c) { return fits(c) || (c >= '0' && c <= '9'); }) &&
         (text.empty() || fits(text[0]));
}

class Sampler {
 public:
  Sampler(const MetricsOptions &options, Readings &readings)
      : choice_(options.only), readings_(readings), exposition_(options.prefix) {}

  std::string Run() {
    for (const FamilyDescription &family : MetricFamilies())
      ReadFamily(family.family);
    for (const Metric &metric : Metrics()) {
      if (!choice_.Contains(metric)) continue;
      exposition_.Begin(metric);
      for (const Subject &subject : subjects_.Of(metric.family))
        AddSamples(metric, subject);
    }
    return exposition_.text() + "# EOF\n";
  }

 private:
  // One after the other, so that what is read of one is of one time.
  void ReadFamily(MetricFamily family) {
    std::set<const Node *> nodes;
    for (const Metric &metric : Metrics()) {
      if (metric.family == family && metric.node != nullptr && choice_.Contains(metric)) nodes.insert(metric.node);
    }
    if (nodes.empty()) return;
    for (const Subject &subject : subjects_.Of(family)) {
      for (const Node *node : nodes) {
        if (const std::optional<Place> place = PlaceOf(*node, subject))
          readings_.Read(*place->node, true, place->arguments);
      }
    }
  }

  void AddSamples(const Metric &metric, const Subject &subject) {
    if (metric.node == nullptr) return AddMade(metric, subject);
    const std::optional<Place> place = PlaceOf(*metric.node, subject);
    if (!place) return;
    std::vector<std::byte> record(metric.node->record->size);
    if (readings_.Get(*place->node, place->arguments, record) != HVC_OK) return;
    const auto bytes = BytesOfField(*metric.field, record);
    if (metric.entry == nullptr) return AddFigure(subject.labels, *metric.field, bytes);
    for (uint32_t i = 0; i < metric.field->count; ++i) {
      Labels labels = subject.labels;
      labels.Add("buffer_bytes", std::to_string(kSmallestBuffer << i));
      const auto entry = bytes.subspan(size_t{i} * metric.field->size, metric.field->size);
      AddFigure(labels, *metric.entry, BytesOfField(*metric.entry, entry));
    }
  }

  void AddFigure(const Labels &labels, const platkit::Field &field, std::span<const std::byte> bytes) {
    if (const std::optional<double> figure = FigureOf(field, bytes)) exposition_.AddSample(labels, *figure);
  }

  void AddMade(const Metric &metric, const Subject &subject) {
    static constexpr struct {
      std::string_view name;
      void (Sampler::*add)(const Subject &subject);
    } kMade[] = {
        {"host_memory_state", &Sampler::AddMemoryState},
        {"host_memory_state_entries_total", &Sampler::AddMemoryStateEntries},
        {"group_info", &Sampler::AddGroupInfo},
        {"reading_failures", &Sampler::AddReadingFailures},
        {"reading_info", &Sampler::AddReadingInfo},
    };
    const auto *made = std::ranges::find_if(kMade, [&](const auto &row) { return row.name == metric.name; });
    (this->*made->add)(subject);
  }

  const Arguments &MemoryStates() { return subjects_.InstancesFor("sched_globalStats_memory_stateTransitions"); }

  void AddMemoryState(const Subject &) {
    GlobalMemoryRecord memory;
    if (GetRecord(readings_, "sched_globalStats_memory_kestrel", {}, memory) != HVC_OK) return;
    if (memory.memState == kNotAvailable) return;
    for (uint32_t number = 0; const Argument &state : MemoryStates())
      exposition_.AddSample(Labels().Add("state", state.text), memory.memState == number++ ? 1 : 0);
  }

  // A state is entered from its two neighbours. The host starts in the first one, which counts as entering it.
  void AddMemoryStateEntries(const Subject &) {
    const Arguments &states = MemoryStates();
    for (size_t i = 0; i < states.size(); ++i) {
      const uint32_t fromAbove = i == 0 ? 1 : TransitionsOf(states[i - 1]).toLowerCount;
      const uint32_t fromBelow = i + 1 == states.size() ? 0 : TransitionsOf(states[i + 1]).toHigherCount;
      if (fromAbove == kNotAvailable || fromBelow == kNotAvailable) continue;
      exposition_.AddSample(Labels().Add("state", states[i].text),
                            static_cast<double>(uint64_t{fromAbove} + fromBelow));
    }
  }

  StateTransitionsRecord TransitionsOf(const Argument &state) {
    StateTransitionsRecord record = {};
    if (GetRecord(readings_, "sched_globalStats_memory_stateTransitions", {state}, record) != HVC_OK) {
      record.toLowerCount = record.toHigherCount = kNotAvailable;
    }
    return record;
  }

  void AddGroupInfo(const Subject &subject) {
    const Arguments group = {subject.instances.at("group")};
    ParentGroupIDRecord parent = {.parentGroupID = -1};
    GroupTagRecord tag = {};
    GroupFlagsRecord flags = {};
    static_cast<void>(GetRecord(readings_, "sched_groups_parentGroupID", group, parent));
    static_cast<void>(GetRecord(readings_, "sched_groups_groupTag", group, tag));
    static_cast<void>(GetRecord(readings_, "sched_groups_groupFlags", group, flags));
    Labels labels = subject.labels;
    if (parent.parentGroupID >= 0) labels.Add("parent", std::to_string(parent.parentGroupID));
    labels.Add("tag", TextOf(tag.tag)).Add("kind", KindOf(flags.flags));
    exposition_.AddSample(labels, 1);
  }

  static std::string_view KindOf(uint32_t flags) {
    if ((flags & HVC_GROUP_VM) != 0) return "vm";
    if ((flags & HVC_GROUP_VMM_SUB_CONTAINER) != 0) return "vmm";
    if ((flags & HVC_GROUP_KERNEL) != 0) return "kernel";
    return (flags & HVC_GROUP_CONTAINER) != 0 ? "container" : "other";
  }

  void AddReadingFailures(const Subject &) {
    const auto failed = [](const auto &entry) {
      return entry.second.status != HVC_OK && entry.second.status != HVC_NOT_FOUND;
    };
    exposition_.AddSample({}, static_cast<double>(std::ranges::count_if(readings_.byPath(), failed)));
  }

  void AddReadingInfo(const Subject &) {
    const std::string &definitions = platkit::OwnDefinitions().build;
    exposition_.AddSample(Labels().Add("version", PLATKIT_VERSION).Add("definitions", definitions), 1);
  }

  Choice choice_;
  Readings &readings_;
  Subjects subjects_{readings_};
  Exposition exposition_;
};

bool WriteAll(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(fd, text.data(), text.size());
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) text.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

void WriteFile(const std::string &path, std::string_view text) {
  platkit::AtomicFile file;
  HVC_ReturnStatus status = file.Create(path);
  if (status == HVC_OK) {
    status = WriteAll(file.fd(), text) ? file.Commit() : platkit::StatusOfErrno(errno, HVC_WRITE_ERROR);
  }
  if (status != HVC_OK) throw Failure(path, status);
}

}  // namespace

void ShowMetrics(const MetricsOptions &options) {
  if (!IsPrefix(options.prefix)) throw Failure(options.prefix, "not the start of a metric's name");
  HostTree host;
  Readings readings(host, [] {});
  const std::string text = Sampler(options, readings).Run();
  if (options.output.empty()) {
    Print(text);
  } else {
    WriteFile(options.output, text);
  }
}

}  // namespace nodal
