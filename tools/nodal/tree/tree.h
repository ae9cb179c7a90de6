// The system-information tree, as nodal reads it.
#ifndef NODAL_TREE_TREE_H
#define NODAL_TREE_TREE_H

#include <cstddef>
#include <span>

#include "platkit/node_ref.h"
#include "platkit/source.h"
#include "tools/nodal/tree/arguments.h"

namespace nodal {

namespace nodes = platkit::nodes;

class Tree {
 public:
  virtual ~Tree() = default;

  // REQUIRES: `record` has the size of the node's record. Get and List throw std::bad_alloc if this process runs out of
  // memory. The status HVC_NO_MEMORY is the host's own, as platkit::Source says.
  [[nodiscard]] virtual HVC_ReturnStatus Get(const Node &node, const Arguments &arguments,
                                             std::span<std::byte> record) = 0;
  [[nodiscard]] virtual HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) = 0;

  // Makes later calls read the host again, if this tree keeps what it has read.
  virtual void BeginSample() {}
};

// The library's current source: the running host, or the source given to NODAL_UseCache. The C interface has one status
// for a host without memory and for a process without memory, so this class does not use it.
class HostTree : public Tree {
 public:
  HVC_ReturnStatus Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override;
};

// A tree of one source, independent of the current source of the C interface.
class SourceTree : public Tree {
 public:
  explicit SourceTree(platkit::Source &source) : source_(source) {}

  HVC_ReturnStatus Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override;

 private:
  platkit::Source &source_;
};

template <typename Record>
[[nodiscard]] HVC_ReturnStatus GetRecord(Tree &tree, platkit::NodeRef<Record> node, const Arguments &arguments,
                                         Record &record) {
  return tree.Get(node, arguments, std::as_writable_bytes(std::span(&record, 1)));
}

}  // namespace nodal

#endif  // NODAL_TREE_TREE_H
