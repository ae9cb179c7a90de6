#include "platkit/catalogue.h"

#include <xxhash.h>

#include <type_traits>

#include "platkit/node_ref.h"
#include "platkit/version.h"

namespace platkit {
namespace {

template <typename T>
consteval FieldType TypeOf() {
  if constexpr (std::is_same_v<T, uint8_t>) return FieldType::kU8;
  if constexpr (std::is_same_v<T, uint16_t>) return FieldType::kU16;
  if constexpr (std::is_same_v<T, uint32_t>) return FieldType::kU32;
  if constexpr (std::is_same_v<T, uint64_t>) return FieldType::kU64;
  if constexpr (std::is_same_v<T, int32_t>) return FieldType::kI32;
  if constexpr (std::is_same_v<T, int64_t>) return FieldType::kI64;
}

// For each record: an array of its fields, k<name>Fields, and its layout, k<name>.
#define RECORD_BEGIN(name) constexpr Field k##name##Fields[] = {
#define FIELD(offset, type, name, unit, text) {offset, sizeof(type), TypeOf<type>(), FieldUnit::unit, #name, text},
#define TEXT(offset, size, name, text) {offset, size, FieldType::kText, FieldUnit::NONE, #name, text},
#define ENTRIES(offset, record, name, count, text) \
  {offset, sizeof(::record), FieldType::kEntries, FieldUnit::NONE, #name, text, count, &k##record},
#define GAP(offset, size) {offset, size, FieldType::kGap, FieldUnit::NONE, "unread_" #offset, {}},
#define RECORD_END(name, size) \
  }                            \
  ;                            \
  constexpr RecordLayout k##name = {#name, size, k##name##Fields};
#include "platkit/records.def"

constexpr NoRecord kNoRecord;

consteval const RecordLayout *LayoutOf(const RecordLayout &layout) { return &layout; }
consteval const RecordLayout *LayoutOf(const NoRecord &) { return nullptr; }

// Not being constant, these stop the compiler at a row of nodes.def that they do not understand.
inline void RowHasTooManyArguments() {}
inline void ArgumentIsNeitherIntNorText() {}

consteval Instance ParseInstance(std::string_view text) {
  const size_t colon = text.find(':');
  const std::string_view kind = text.substr(colon + 1);
  if (kind != "int" && kind != "text") ArgumentIsNeitherIntNorText();
  return {text.substr(0, colon), kind == "int" ? ParamKind::kInt : ParamKind::kText};
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

  // A bracketed part only repeats the list's entry.
  std::string_view rest = path.substr(0, path.find('['));
  size_t argument = 0;
  for (size_t open = rest.find('{'); open != std::string_view::npos; open = rest.find('{')) {
    if (argument == Node::kMostArguments) RowHasTooManyArguments();
    const size_t close = rest.find('}');
    node.pieces[argument] = rest.substr(0, open);
    node.arguments[argument] = ParseInstance(rest.substr(open + 1, close - open - 1));
    rest = rest.substr(close + 1);
    ++argument;
  }
  node.pieces[argument] = rest;
  node.pathArguments = static_cast<uint8_t>(argument);
  if (node.isList && record != nullptr) {
    if (argument == Node::kMostArguments) RowHasTooManyArguments();
    node.arguments[argument] = node.entry;
  }
  return node;
}

constexpr Node kNodes[] = {
#define NODE(name, path, entries, record) ParseRow(nodes::name.id(), #name, path, entries, LayoutOf(k##record)),
#include "platkit/nodes.def"
};

std::string Hex(uint64_t value) {
  std::string text(16, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, value >>= 4)
    *digit = "0123456789abcdef"[value & 15];
  return text;
}

Definitions DigestOfCatalogue() {
  std::string rows;
  for (const Node &node : kNodes) {
    rows += node.path;
    rows += ' ';
    if (node.isList) {
      rows += node.entry.what;
      rows += node.entry.kind == ParamKind::kInt ? ":int" : ":text";
    }
    rows += ' ';
    rows += std::to_string(node.isRecord() ? node.record->size : 0);
    rows += '\n';
  }
  const XXH128_hash_t digest = XXH3_128bits(rows.data(), rows.size());
  const std::string signature = Hex(digest.high64) + Hex(digest.low64);
  const std::string build = std::string(PLATKIT_VERSION "-") + signature;
  return {.signature = signature, .build = build.substr(0, 20)};
}

}  // namespace

static_assert(std::size(kNodes) <= kMostNodes);
std::span<const Node> Nodes() { return kNodes; }

const Node *FindNode(uint32_t id) { return id == 0 || id > std::size(kNodes) ? nullptr : &kNodes[id - 1]; }

const Node *FindNode(std::string_view name) {
  for (const Node &node : kNodes) {
    if (node.name == name) return &node;
  }
  return nullptr;
}

const Definitions &OwnDefinitions() {
  static const Definitions own = DigestOfCatalogue();
  return own;
}

std::string_view UnitName(FieldUnit unit) {
  switch (unit) {
    case FieldUnit::KB: return "KB";
    case FieldUnit::BYTES: return "bytes";
    case FieldUnit::PAGES: return "4 KB pages";
    case FieldUnit::BLOCKS: return "2 MB blocks";
    case FieldUnit::PERCENT: return "%";
    case FieldUnit::USEC: return "us";
    case FieldUnit::NONE:
    case FieldUnit::COUNT:
    case FieldUnit::ID:
    case FieldUnit::FLAGS:
    case FieldUnit::BOOL:
    case FieldUnit::NUMBER: break;
  }
  return "";
}

}  // namespace platkit

#define NODE(name, path, entries, record) const uint16_t NODAL_NODE_##name = platkit::nodes::name.id();
#include "platkit/nodes.def"
