// The catalogue of nodes in the form that the library works with: nodes.def, taken apart at compile time.
#ifndef PLATKIT_CATALOGUE_H
#define PLATKIT_CATALOGUE_H

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// How a record's fields are read and printed by name.
enum class FieldType : uint8_t { kU8, kU16, kU32, kU64, kI32, kI64, kText, kEntries, kGap };

enum class FieldUnit : uint8_t {
  NONE,
  KB,
  BYTES,
  PAGES,
  BLOCKS,
  PERCENT,
  USEC,
  COUNT,
  ID,
  FLAGS,
  BOOL,
  NUMBER,
};

struct RecordLayout;

struct Field {
  uint32_t offset;
  uint32_t size;  // of one entry, where the field is an array
  FieldType type;
  FieldUnit unit;
  std::string_view name;         // for a gap, unread_<offset>
  std::string_view description;  // empty for a gap
  uint32_t count = 1;            // of entries
  const RecordLayout *entry = nullptr;
};

struct RecordLayout {
  std::string_view name;
  uint32_t size;
  std::span<const Field> fields;  // in the order of their offsets, gaps included: together they cover the record
};

// An instance argument of a path, or the entry of a list: what it is ("group") and of which kind.
struct Instance {
  std::string_view what;
  ParamKind kind;
};

struct Node {
  static constexpr size_t kMostArguments = 6;

  uint32_t id;
  std::string_view name;  // as in NODAL_NODE_<name>
  std::string_view path;  // the template of nodes.def

  // The path's fixed pieces, each standing before the argument of the same index; the last stands behind them all and
  // may be empty. A node that is both list and record has one argument more as a record, behind the list's whole path.
  std::array<std::string_view, kMostArguments + 1> pieces;
  std::array<Instance, kMostArguments> arguments;
  uint8_t pathArguments;  // those of the list; also of the record, unless it is both

  bool isList;
  Instance entry;              // of the list
  const RecordLayout *record;  // null if the node is only a list

  bool isRecord() const { return record != nullptr; }
  uint32_t listArguments() const { return pathArguments; }
  uint32_t recordArguments() const { return pathArguments + (isList && isRecord() ? 1u : 0u); }
};

// All nodes, in the order of nodes.def.
std::span<const Node> Nodes();
inline constexpr size_t kMostNodes = 64;

// The node with that identifier, or null.
const Node *FindNode(uint32_t id);

// The node of that name, or null.
const Node *FindNode(std::string_view name);

// The library's own definitions: a digest over paths, argument kinds and record sizes (32 hexadecimal digits), and
// their build text: the library's version and the start of the digest, at most 20 characters.
struct Definitions {
  std::string signature;
  std::string build;
};
const Definitions &OwnDefinitions();

std::string_view UnitName(FieldUnit unit);

}  // namespace platkit

#endif  // PLATKIT_CATALOGUE_H
