// Where the instances of each kind come from: the one place that knows.
//
// Most are the entries of a list of the tree. Groups and clients have no list of their own, and must be walked for; a
// few others are fixed, or told by another record.
#ifndef NODAL_INSTANCES_H
#define NODAL_INSTANCES_H

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/nodal/tree.h"

namespace nodal {

class Instances {
 public:
  explicit Instances(Tree &tree) : tree_(tree) {}

  // What the argument of `node` behind `outer`, the arguments before it, may be, in the kernel's order and each once.
  // Throws a Failure if a list cannot be read; one that is absent is empty.
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
  Arguments Clients();
  Arguments MemNodes();
  Arguments NumaNodes();

  Tree &tree_;
  std::map<std::pair<std::string_view, Arguments>, Found> found_;
};

// The list, if there is one, that has the instances of an argument as its entries. It takes the first of the arguments
// that stand before it.
const Node *ListOfInstances(const Node &node, size_t argument);

// What stands before an argument in a path.
using Outer = std::span<const platkit::Instance>;

// The paths at and below which stands all that the tree has of an instance. `outer` says what the arguments before it
// are, where it is named. None, if no node takes it.
std::vector<std::string> PlacesOf(std::string_view what, const Argument &instance, Outer outer,
                                  const Arguments &outerArguments);

// The number of the memory node that a buddy allocator serves: the decimal number behind the first seven characters of
// its name, 0 if there is none. Only the allocators whose names begin with "memmap" serve one.
std::optional<int64_t> MemNodeOf(std::string_view buddy);

}  // namespace nodal

#endif  // NODAL_INSTANCES_H
