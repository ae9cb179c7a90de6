#include "platkit/definitions.h"

#include <xxhash.h>

#include "platkit/catalogue.h"
#include "platkit/version.h"

namespace platkit {
namespace {

std::string Hex(uint64_t value) {
  std::string text(16, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, value >>= 4)
    *digit = "0123456789abcdef"[value & 15];
  return text;
}

// One line per node, with everything that the signature covers.
std::string Rows() {
  std::string rows;
  for (const Node &node : Nodes()) {
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
  return rows;
}

Definitions DefinitionsOfCatalogue() {
  const std::string rows = Rows();
  const XXH128_hash_t digest = XXH3_128bits(rows.data(), rows.size());
  const std::string signature = Hex(digest.high64) + Hex(digest.low64);
  const std::string build = std::string(PLATKIT_VERSION "-") + signature;
  return {.signature = signature, .build = build.substr(0, 20)};
}

}  // namespace

const Definitions &OwnDefinitions() {
  static const Definitions own = DefinitionsOfCatalogue();
  return own;
}

}  // namespace platkit
