// Names of nodes in C++ code: one constant per node in platkit::nodes, named as in NODAL_NODE_<name>. Its type includes
// the node's record, so code that reads a node into the wrong record does not compile.
#ifndef PLATKIT_NODE_REF_H
#define PLATKIT_NODE_REF_H

#include <cstddef>
#include <cstdint>

#include "platkit/catalogue.h"
#include "platkit/records.h"

namespace platkit {

// Stands for the record of a node that is only a list.
struct NoRecord {};

// Identifiers of nodes count from 1 in the order of the catalogue; 0 is not a node.
enum class NodeId : uint16_t {
  kNone,
#define PLATKIT_NODE(name, path, entry, record) name,
#include "platkit/catalogue/nodes.def"
};

// A node of the catalogue that yields a Record; NodeRef<NoRecord> is a node that is only a list.
template <typename RecordType>
struct NodeRef {
  using Record = RecordType;

  NodeId nodeId;

  // The identifier that the C interface takes.
  constexpr uint32_t id() const { return static_cast<uint32_t>(nodeId); }

  // The node's index in Nodes().
  constexpr size_t index() const { return id() - 1; }

  // The conversion is implicit, so that functions that take a Node also accept a NodeRef.
  operator const Node &() const { return Nodes()[index()]; }
  const Node *operator->() const { return &Nodes()[index()]; }
};

namespace nodes {

#define PLATKIT_NODE(name, path, entry, record) inline constexpr NodeRef<record> name = {NodeId::name};
#include "platkit/catalogue/nodes.def"

}  // namespace nodes
}  // namespace platkit

#endif  // PLATKIT_NODE_REF_H
