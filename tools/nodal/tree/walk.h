// The walk over a whole tree.
#ifndef NODAL_TREE_WALK_H
#define NODAL_TREE_WALK_H

#include <functional>
#include <vector>

#include "tools/nodal/tree/instances.h"
#include "tools/nodal/tree/path_filter.h"

namespace nodal {

// Visits all nodes of one group, then all nodes of the next, so that the figures of each are from the same time.
// Instances that are found through records of others, such as clients through groups, are visited after them.
// Configuration registers of PCI devices are never visited: reading one can change the device.
class Walk {
 public:
  Walk(Tree &tree, const PathFilter &filter);

  // Called before all nodes with the same argument kinds, such as "volume/region", with these kinds and the number of
  // visits.
  using Announcer = std::function<void(const std::string &what, size_t visits)>;
  // Called with a node and its arguments as a record or as a list.
  using Visitor = std::function<void(const Node &node, bool asRecord, const Arguments &arguments)>;
  void Visit(const Announcer &announcer, const Visitor &visitor);

 private:
  // Nodes that take the same arguments.
  using Family = std::vector<PathTemplate>;

  void Descend(const Family &family, Arguments &arguments, const Visitor &visitor);

  const PathFilter &filter_;
  Instances instances_;
  std::vector<Family> families_;
};

}  // namespace nodal

#endif  // NODAL_TREE_WALK_H
