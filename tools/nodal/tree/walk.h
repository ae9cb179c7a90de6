// The walk over a whole tree.
#ifndef NODAL_TREE_WALK_H
#define NODAL_TREE_WALK_H

#include <functional>
#include <vector>

#include "tools/nodal/tree/instances.h"
#include "tools/nodal/tree/path_filter.h"

namespace nodal {

// Visits all nodes of one group, then all nodes of the next group, so that the figures of each group are from the same
// time. The same holds for instances of other kinds. Clients and other instances that are found through records of
// groups are visited after the groups. Never visits the configuration registers of PCI devices, because reading a
// register can change the device.
class Walk {
 public:
  Walk(Tree &tree, const PathFilter &filter);

  // Called before the visits to all nodes that take the same kinds of arguments. `what` names these kinds, such as
  // "volume/region". `visits` is the number of visits that follow.
  using Announcer = std::function<void(const std::string &what, size_t visits)>;
  // Called once for each record and each list, with the arguments of its node.
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
