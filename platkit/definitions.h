// The definitions of a tree: its nodes, with their arguments and records.
#ifndef PLATKIT_DEFINITIONS_H
#define PLATKIT_DEFINITIONS_H

#include <compare>
#include <string>

namespace platkit {

struct Definitions {
  // A digest over the paths, kinds of arguments and sizes of records: 32 hexadecimal digits.
  std::string signature;

  // The library's version and the start of the signature, at most 20 characters.
  std::string build;

  auto operator<=>(const Definitions &) const = default;
};

// The definitions of this library's catalogue.
const Definitions &OwnDefinitions();

// Whether the definitions have the signature of this library's catalogue. If so, their nodes and records have the same
// meaning.
inline bool HaveOwnSignature(const Definitions &definitions) {
  return definitions.signature == OwnDefinitions().signature;
}

}  // namespace platkit

#endif  // PLATKIT_DEFINITIONS_H
