// Names in the place of names, for snapshots that are handed on.
#ifndef NODAL_CAPTURE_PSEUDONYMS_H
#define NODAL_CAPTURE_PSEUDONYMS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "tools/nodal/capture/sip_hash.h"
#include "tools/nodal/tree/arguments.h"

namespace nodal {

// A name has the same pseudonym wherever it stands, and nobody can tell the name from it without the key. What is a
// name, the catalogue says: the texts in paths, lists and records. A UUID stays one in form. These stay as they are:
// the words that the tree itself is made of (memory states, types of remapping, the kinds of groups), and the names of
// the memory map's allocators, which say which memory they serve.
class Pseudonyms {
 public:
  // The same key gives the same pseudonyms. Without one, they are good for this object only.
  explicit Pseudonyms(const std::string &key);

  // The pseudonym of a name, of at most `room` bytes.
  std::string Of(std::string_view name, size_t room = SIZE_MAX) const;

  // Replaces an instance of that kind.
  Argument Of(std::string_view what, const Argument &instance) const;

  // Replaces the names in a record. Bytes of no known meaning may hold some as well, and are wiped out.
  void Replace(const platkit::RecordLayout &layout, std::span<std::byte> record) const;

 private:
  uint64_t Hash(std::string_view name, uint64_t use) const;

  SipKey key_;
};

}  // namespace nodal

#endif  // NODAL_CAPTURE_PSEUDONYMS_H
