// The walk over all that the catalogue has.
#ifndef NODAL_WALK_H
#define NODAL_WALK_H

#include <functional>
#include <vector>

#include "tools/nodal/instances.h"
#include "tools/nodal/part.h"

namespace nodal {

// Goes instance by instance: all nodes of one group, then all nodes of the next, so that what is read of one is of one
// time. Where instances are told by records of others, as clients are by groups, those have been visited before.
class Walk {
 public:
  Walk(Tree &tree, const Part &part);

  // Before nodes with the same arguments: what these are, such as "volume/region", and how many visits there will be.
  using Announcer = std::function<void(const std::string &what, size_t visits)>;
  // With a node and its arguments; they are those of a record or of a list.
  using Visitor = std::function<void(const Node &node, bool asRecord, const Arguments &arguments)>;
  void Visit(const Announcer &announcer, const Visitor &visitor);

 private:
  // Nodes with the same arguments.
  using Family = std::vector<Shape>;

  void Descend(const Family &family, Arguments &arguments, const Visitor &visitor);

  const Part &part_;
  Instances instances_;
  std::vector<Family> families_;
};

}  // namespace nodal

#endif  // NODAL_WALK_H
