// The interface of a data source for the tree: the running host, a saved host, or a test.
#ifndef PLATKIT_SOURCE_H
#define PLATKIT_SOURCE_H

#include <cstddef>
#include <memory>
#include <span>

#include "platkit/catalogue.h"
#include "platkit/param_list.h"

namespace platkit {

// REQUIRES, for all operations: the node is a record (Get, Set) or a list (List), and the arguments have the number and
// kinds that the node takes. nodal.h lists the statuses.
//
// If this process runs out of memory, Get, List and Set throw std::bad_alloc, which counts as a failure. HVC_NO_MEMORY
// is a status of the host: its kernel ran out of memory, now or when the host was saved. After a failure, the source
// works as before.
class Source {
 public:
  virtual ~Source() = default;

  // Reads a record. `record` has the size of the record in bytes. On failure, it is unchanged.
  [[nodiscard]] virtual HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) = 0;

  // Appends the instances to `list`, which is empty. After a failure, the list may contain some of them.
  [[nodiscard]] virtual HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) = 0;

  // Writes `input` to a record.
  [[nodiscard]] virtual HVC_ReturnStatus Set(const Node &node, Arguments arguments, Arguments input) {
    static_cast<void>(node), static_cast<void>(arguments), static_cast<void>(input);
    return HVC_READ_ONLY;
  }

  // The definitions of the source's tree, which may come from another version of the library.
  virtual const Definitions &definitions() const { return OwnDefinitions(); }
};

// Selects the source of all later reads of the process; null selects the running host.
void UseSource(std::unique_ptr<Source> source);

// The source that the process reads from. Throws std::bad_alloc if the running host cannot be opened for lack of
// memory.
Source &CurrentSource();

}  // namespace platkit

#endif  // PLATKIT_SOURCE_H
