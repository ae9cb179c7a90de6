// The tree as nodal reads it.
#ifndef NODAL_TREE_H
#define NODAL_TREE_H

#include <cstddef>
#include <span>

#include "platkit/source.h"
#include "tools/nodal/arguments.h"

namespace nodal {

class Tree {
 public:
  virtual ~Tree() = default;

  // `record` has the record's size. Both throw std::bad_alloc if memory is short.
  [[nodiscard]] virtual HVC_ReturnStatus Get(const Node &node, const Arguments &arguments,
                                             std::span<std::byte> record) = 0;
  [[nodiscard]] virtual HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) = 0;
};

// What the process reads through the platform's interface: the running host, or what NODAL_UseCache put in its place.
class HostTree : public Tree {
 public:
  HVC_ReturnStatus Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override;
};

// One source, whatever the process reads otherwise.
class SourceTree : public Tree {
 public:
  explicit SourceTree(platkit::Source &source) : source_(source) {}

  HVC_ReturnStatus Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override;

 private:
  platkit::Source &source_;
};

// Reads the record of the node of that type.
template <typename Record>
[[nodiscard]] HVC_ReturnStatus GetRecord(Tree &tree, std::string_view node, const Arguments &arguments,
                                         Record &record) {
  return tree.Get(*platkit::FindNode(node), arguments, std::as_writable_bytes(std::span(&record, 1)));
}

}  // namespace nodal

#endif  // NODAL_TREE_H
