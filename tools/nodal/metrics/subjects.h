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
  // By their kind in the paths of nodes, such as "group" or "heap". A virtual machine also has the client of its
  // "monitor".
  std::map<std::string_view, Argument> instances;
};

struct RecordPath {
  const Node *node;
  Arguments arguments;
};

// The record of a subject in the node of a metric, if the subject has one.
std::optional<RecordPath> RecordOf(const Node &node, const Subject &subject);

class Subjects {
 public:
  explicit Subjects(CachingTree &tree) : tree_(tree), instances_(tree) {}

  // No two have the same labels.
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
