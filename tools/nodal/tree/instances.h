// The instances of each kind, such as groups or heaps, that a tree has.
//
// The instances of most kinds are the entries of a list. No list contains all groups or all clients; a walk from group
// 0 finds them. The instances of a few kinds are fixed or follow from other nodes.
#ifndef NODAL_TREE_INSTANCES_H
#define NODAL_TREE_INSTANCES_H

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/nodal/tree/tree.h"

namespace nodal {

class Instances {
 public:
  explicit Instances(Tree &tree) : tree_(tree) {}

  // Returns the instances that `node` can take as its next argument after `outer`, in the kernel's order and each once.
  // A list that does not exist counts as empty. Throws a Failure if another list cannot be read. If the members of a
  // group cannot be listed, prints a message and continues without them.
  const Arguments &Of(const Node &node, const Arguments &outer) { return Lookup(node, outer).inOrder; }
  bool Contains(const Node &node, const Arguments &outer, const Argument &instance) {
    return Lookup(node, outer).all.contains(instance);
  }

 private:
  struct Found {
    Arguments inOrder;
    std::set<Argument> all;
  };

  const Found &Lookup(const Node &node, const Arguments &outer);
  Arguments Find(const Node &node, const Arguments &outer);
  Arguments ListEntries(const Node &list, const Arguments &arguments);
  Arguments Groups();
  Arguments MembersOf(const Argument &group);
  Arguments Clients();
  Arguments MemNodes();
  Arguments NumaNodes();

  Tree &tree_;
  std::map<std::pair<std::string_view, Arguments>, Found> found_;
};

// Returns the list whose entries are the instances that `node` can take as the argument with index `argument`, or null.
// The list's own arguments are the first arguments of `node`.
const Node *ListOfInstances(const Node &node, size_t argument);

// The kinds of the arguments before an argument in a path.
using Outer = std::span<const platkit::Instance>;

// Returns the paths at or below which an instance of the kind `what` has all its nodes. Returns no path if no node
// takes such an instance. `outerArguments` are the instances to which the instance belongs, and `outer` are their
// kinds.
std::vector<std::string> PathsOfInstance(std::string_view what, const Argument &instance, Outer outer,
                                         const Arguments &outerArguments);

// Returns the client of the world that leads a group, or std::nullopt. Only the groups of VMs and user worlds have a
// leader; in other groups, the leader's ID may be any number.
std::optional<Argument> LeaderOf(Tree &tree, const Argument &group);

// Given a VM's client, returns the client of its monitor, or std::nullopt if the record cannot be read.
std::optional<Argument> MonitorOf(Tree &tree, const Argument &client);

// Returns the memory node that a buddy allocator serves: the decimal number after the first seven characters of its
// name, or 0 if there is no number. Returns std::nullopt unless the name begins with "memmap".
std::optional<int64_t> MemNodeOf(std::string_view buddy);

}  // namespace nodal

#endif  // NODAL_TREE_INSTANCES_H
