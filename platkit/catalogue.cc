#include "platkit/catalogue.h"

#include "platkit/catalogue/records.h"
#include "platkit/node_ref.h"

namespace platkit {
namespace {

template <typename Record>
consteval const RecordLayout *LayoutOf() {
  return &kRecordLayout<Record>;
}
template <>
consteval const RecordLayout *LayoutOf<NoRecord>() {
  return nullptr;
}

// These functions are not constexpr. A call to one of them is therefore a compiler error, which points to the wrong row
// of nodes.def.
inline void RowHasTooManyArguments() {}
inline void ArgumentIsNeitherIntNorText() {}

consteval Instance ParseInstance(std::string_view text) {
  const size_t colon = text.find(':');
  const std::string_view kind = text.substr(colon + 1);
  if (kind != "int" && kind != "text") ArgumentIsNeitherIntNorText();
  return {text.substr(0, colon), kind == "int" ? ParamKind::kInt : ParamKind::kText};
}

// Splits a path without its bracketed end, which only repeats the entry of the list.
consteval void SplitPath(Node &node) {
  std::string_view rest = node.path.substr(0, node.path.find('['));
  size_t argument = 0;
  for (size_t open = rest.find('{'); open != std::string_view::npos; open = rest.find('{')) {
    if (argument == Node::kMaxArguments) RowHasTooManyArguments();
    const size_t close = rest.find('}');
    node.pieces[argument] = rest.substr(0, open);
    node.arguments[argument] = ParseInstance(rest.substr(open + 1, close - open - 1));
    rest = rest.substr(close + 1);
    ++argument;
  }
  node.pieces[argument] = rest;
  node.pathArguments = static_cast<uint8_t>(argument);
}

consteval Node ParseRow(uint32_t id, std::string_view name, std::string_view path, std::string_view entry,
                        const RecordLayout *record) {
  Node node = {};
  node.id = id;
  node.name = name;
  node.path = path;
  node.record = record;
  node.isList = !entry.empty();
  if (node.isList) node.entry = ParseInstance(entry);
  SplitPath(node);
  if (node.isList && record != nullptr) {
    if (node.pathArguments == Node::kMaxArguments) RowHasTooManyArguments();
    node.arguments[node.pathArguments] = node.entry;
  }
  return node;
}

constexpr Node kNodes[] = {
#define PLATKIT_NODE(name, path, entry, record) ParseRow(nodes::name.id(), #name, path, entry, LayoutOf<record>()),
#include "platkit/catalogue/nodes.def"
};
static_assert(std::size(kNodes) <= kMaxNodes);

}  // namespace

std::span<const Node> Nodes() { return kNodes; }

const Node *FindNode(uint32_t id) { return id == 0 || id > std::size(kNodes) ? nullptr : &kNodes[id - 1]; }

}  // namespace platkit

// nodes.h must declare each of these objects: an undeclared object would not be exported.
#define PLATKIT_NODE(name, path, entry, record)                  \
  static_assert(sizeof ::NODAL_NODE_##name == sizeof(uint16_t)); \
  const uint16_t NODAL_NODE_##name = platkit::nodes::name.id();
#include "platkit/catalogue/nodes.def"
