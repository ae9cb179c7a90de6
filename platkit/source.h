// The source seam: where the records and lists of the tree come from.
#ifndef PLATKIT_SOURCE_H
#define PLATKIT_SOURCE_H

#include <cstddef>
#include <memory>
#include <span>

#include "platkit/catalogue.h"
#include "platkit/param_list.h"

namespace platkit {

// A source is asked only for what the catalogue has: the node is of the right shape, and the arguments are as many and
// of the kinds that it takes.
class Source {
 public:
  virtual ~Source() = default;

  // Fills `record`, which has the record's size. What stands in it after a failure is of no account.
  [[nodiscard]] virtual HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) = 0;

  // Appends the instances to `list`, which is empty. What stands in it after a failure is of no account.
  [[nodiscard]] virtual HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) = 0;

  // Writes `input` to a node.
  [[nodiscard]] virtual HVC_ReturnStatus Set(const Node &node, Arguments arguments, Arguments input) {
    static_cast<void>(node), static_cast<void>(arguments), static_cast<void>(input);
    return HVC_READ_ONLY;
  }

  // The definitions that the tree was built with.
  virtual const Definitions &definitions() const { return OwnDefinitions(); }
};

// Answers every read of the process from `source` from now on.
void UseSource(std::unique_ptr<Source> source);

}  // namespace platkit

#endif  // PLATKIT_SOURCE_H
