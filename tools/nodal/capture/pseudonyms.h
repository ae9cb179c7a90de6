// Pseudonyms for the names in snapshots that users share.
#ifndef NODAL_CAPTURE_PSEUDONYMS_H
#define NODAL_CAPTURE_PSEUDONYMS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "tools/nodal/tree/arguments.h"

namespace nodal {

// A name has the same pseudonym everywhere. Without the key, nobody can find the name of a pseudonym. Names are the
// texts in paths, lists and records. A UUID becomes another UUID. These texts are kept: the memory states, the types of
// remapping, the kinds of groups, and the allocators of the memory map, whose names say which memory node they serve.
class Pseudonyms {
 public:
  // The same key gives the same pseudonyms. An empty key means a random one.
  explicit Pseudonyms(const std::string &key);

  // The pseudonym of a name, in at most `room` bytes.
  std::string Of(std::string_view name, size_t room = SIZE_MAX) const;

  // The replacement of an instance of the kind `what`.
  Argument Of(std::string_view what, const Argument &instance) const;

  // Replaces the names in a record. Clears the unnamed bytes, because they may contain names too.
  void Replace(const platkit::RecordLayout &layout, std::span<std::byte> record) const;

 private:
  using Digest = std::array<unsigned char, 16>;

  Digest Hash(std::string_view name) const;
  static std::string Uuid(const Digest &digest);

  std::array<unsigned char, 32> key_;
};

}  // namespace nodal

#endif  // NODAL_CAPTURE_PSEUDONYMS_H
