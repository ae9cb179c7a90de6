// What the samples of a metric are about: a group, a heap, a pool on a NUMA node.
#ifndef NODAL_SUBJECTS_H
#define NODAL_SUBJECTS_H

#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/nodal/exposition.h"
#include "tools/nodal/instances.h"
#include "tools/nodal/metric_table.h"
#include "tools/nodal/readings.h"

namespace nodal {

struct Subject {
  Labels labels;
  // By what they are in the paths of nodes: "group", "heap". A virtual machine has two clients, its own and its
  // "monitor".
  std::map<std::string_view, Argument> instances;
};

// A node with its arguments.
struct Place {
  const Node *node;
  Arguments arguments;
};

// Where a node's record of that subject stands. Nothing if it has none.
std::optional<Place> PlaceOf(const Node &node, const Subject &subject);

class Subjects {
 public:
  explicit Subjects(Readings &readings) : readings_(readings), instances_(readings) {}

  // No two have the same labels.
  const std::vector<Subject> &Of(MetricFamily family);

  const Arguments &InstancesFor(std::string_view node, const Arguments &outer = {}) {
    return instances_.Of(*platkit::FindNode(node), outer);
  }

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

  Readings &readings_;
  Instances instances_;
  std::map<MetricFamily, std::vector<Subject>> found_;
};

// The text of a field that may lack a terminator.
template <size_t kSize>
std::string_view TextOf(const char (&field)[kSize]) {
  const std::string_view all(field, kSize);
  return all.substr(0, all.find('\0'));
}

}  // namespace nodal

#endif  // NODAL_SUBJECTS_H
