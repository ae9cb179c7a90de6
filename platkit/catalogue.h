// The catalogue of nodes in memory. platkit/catalogue/nodes.def lists the nodes.
#ifndef PLATKIT_CATALOGUE_H
#define PLATKIT_CATALOGUE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platkit/definitions.h"
#include "platkit/param_list.h"
#include "platkit/record_layout.h"
#include "platkit/records.h"

namespace platkit {

// An argument of a path, or an entry of a list: the kind of object that it names, such as "group", and its type.
struct Instance {
  std::string_view what;
  ParamKind kind;
};

struct Node {
  static constexpr size_t kMaxArguments = 6;

  uint32_t id;            // the value of NODAL_NODE_<name>
  std::string_view name;  // as in NODAL_NODE_<name>
  std::string_view path;  // as in nodes.def

  // The fixed pieces of the path. pieces[i] precedes arguments[i]; the last piece follows the last argument and may be
  // empty. A node that is both list and record takes one more argument as a record, at the end of the path.
  std::array<std::string_view, kMaxArguments + 1> pieces;
  std::array<Instance, kMaxArguments> arguments;
  uint8_t pathArguments;  // without the additional argument of a record

  bool isList;
  Instance entry;              // of the list
  const RecordLayout *record;  // null if the node is only a list

  bool isRecord() const { return record != nullptr; }
  uint32_t listArguments() const { return pathArguments; }
  uint32_t recordArguments() const { return pathArguments + (isList && isRecord() ? 1u : 0u); }
};

// All nodes, in the order of nodes.def, which is also the order of their identifiers.
std::span<const Node> Nodes();
inline constexpr size_t kMaxNodes = 64;

// The node with this identifier, or null.
const Node *FindNode(uint32_t id);

}  // namespace platkit

#endif  // PLATKIT_CATALOGUE_H
