// Pseudonyms for the names in snapshots that users share.
#ifndef NODAL_CAPTURE_PSEUDONYMS_H
#define NODAL_CAPTURE_PSEUDONYMS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tools/nodal/capture/pseudonym_key.h"
#include "tools/nodal/tree/arguments.h"

namespace nodal {

// The pseudonyms of one capture. A name is any text in a path, a list or a record that IsOwnWord does not keep. A name
// has the same pseudonym everywhere, but a short field holds only the start of the pseudonym, without its prefix. A
// UUID becomes another UUID.
//
// The functions throw a Failure if two names would have the same pseudonym.
class Pseudonyms {
 public:
  explicit Pseudonyms(const PseudonymKey &key) : key_(key) {}

  // Returns the pseudonym of a name, in at most `room` bytes. The empty name stays empty.
  std::string Of(std::string_view name, size_t room = SIZE_MAX);

  // Returns the replacement of an instance of the kind `what`. The pseudonym of a buddy allocator shows which memory
  // node the allocator serves, as its name does.
  Argument Of(std::string_view what, const Argument &instance);

  // Replaces the names in a record. Also clears the bytes after the end of each text and the bytes without a known
  // meaning, because they may contain names too.
  void Replace(const platkit::RecordLayout &layout, std::span<std::byte> record);

 private:
  using Digest = std::array<unsigned char, 16>;

  Digest Hash(std::string_view name) const;
  std::string Claim(std::string pseudonym, std::string_view name);
  void ReplaceText(std::string_view record, std::span<std::byte> text);

  PseudonymKey key_;
  std::unordered_map<std::string, std::string> names_;  // by pseudonym
};

// Returns the pseudonyms for a command with the options --anonymize and --key-file, or std::nullopt without
// --anonymize. The key is derived from the key file (see KeyFile), or is random if `keyFile` is empty. Throws a
// Failure.
std::optional<Pseudonyms> PseudonymsFor(bool anonymize, const std::string &keyFile);

}  // namespace nodal

#endif  // NODAL_CAPTURE_PSEUDONYMS_H
