// The instances of each kind, such as groups or heaps, that a tree has.
//
// Most kinds are the entries of a list. Groups and clients have no list of all of them: they are found by a walk from
// group 0. A few kinds are fixed or follow from a record.
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

  // The instances that `node` can take as its next argument after `outer`, in the kernel's order and each once.
  // Throws a Failure if a list cannot be read; one that does not exist is empty. If the members of a group cannot be
  // listed, prints a message and continues without them.
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

// The list whose entries are the instances of the node's argument with that index, or null. The list takes the node's
// first arguments.
const Node *ListOfInstances(const Node &node, size_t argument);

// The kinds of the arguments before an argument in a path.
using Outer = std::span<const platkit::Instance>;

// The paths that have all nodes of an instance of the kind `what` at or below them; none if no node takes such an
// instance. `outer` has the kinds of `outerArguments`, the instances to which it belongs.
std::vector<std::string> PathsOfInstance(std::string_view what, const Argument &instance, Outer outer,
                                         const Arguments &outerArguments);

// The client of the world that leads a group. Only VMs and user worlds have a leader; other groups' records may hold
// any number.
std::optional<Argument> LeaderOf(Tree &tree, const Argument &group);

// The client of the monitor of a VM's client.
std::optional<Argument> MonitorOf(Tree &tree, const Argument &client);

// The memory node that a buddy allocator serves: the decimal number after the first seven characters of its name, or 0
// without one. Only allocators whose names begin with "memmap" serve one.
std::optional<int64_t> MemNodeOf(std::string_view buddy);

}  // namespace nodal

#endif  // NODAL_TREE_INSTANCES_H
