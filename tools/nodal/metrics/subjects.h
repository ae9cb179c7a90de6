// The groups, heaps, pools and other things that metrics describe.
#ifndef NODAL_METRICS_SUBJECTS_H
#define NODAL_METRICS_SUBJECTS_H

#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/nodal/metrics/metric_table.h"
#include "tools/nodal/metrics/prometheus_text.h"
#include "tools/nodal/tree/caching_tree.h"
#include "tools/nodal/tree/field_value.h"
#include "tools/nodal/tree/instances.h"

namespace nodal {

struct Subject {
  Labels labels;
  // The instances by their kind in the paths of nodes, such as "group" or "heap". For a virtual machine, "monitor" is
  // the client of its monitor.
  std::map<std::string_view, Argument> instances;
};

struct RecordPath {
  const Node *node;
  Arguments arguments;
};

// Returns the record that the subject has for a metric of `node`, or std::nullopt if it has none.
std::optional<RecordPath> RecordOf(const Node &node, const Subject &subject);

class Subjects {
 public:
  explicit Subjects(CachingTree &tree) : tree_(tree), instances_(tree) {}

  // Returns the subjects of a family. No two of them have the same labels.
  const std::vector<Subject> &Of(MetricFamily family);

  // The instances that the node can take as its next argument after `outer`.
  const Arguments &InstancesFor(const Node &node, const Arguments &outer = {}) { return instances_.Of(node, outer); }

 private:
  std::vector<Subject> Find(MetricFamily family);
  std::vector<Subject> Groups(MetricFamily family);
  std::vector<Subject> Pools();
  std::vector<Subject> Buddies();
  std::vector<Subject> Heaps();
  std::vector<Subject> Volumes();
  std::vector<Subject> Regions();
  void AddClients(Subject &group);
  std::string NumaNodeOf(const Argument &buddy);

  CachingTree &tree_;
  Instances instances_;
  std::map<MetricFamily, std::vector<Subject>> found_;
};

}  // namespace nodal

#endif  // NODAL_METRICS_SUBJECTS_H
