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

// The pseudonyms of one capture. A name is any text in a path, a list or a record that IsOwnWord does not keep. It has
// the same pseudonym everywhere; a short field has its first digits only. A UUID becomes another UUID.
//
// The functions throw a Failure if two names would have the same pseudonym.
class Pseudonyms {
 public:
  explicit Pseudonyms(const PseudonymKey &key) : key_(key) {}

  // The pseudonym of a name, in at most `room` bytes. The empty name stays empty.
  std::string Of(std::string_view name, size_t room = SIZE_MAX);

  // The replacement of an instance of the kind `what`. The pseudonym of a buddy allocator shows which memory node the
  // allocator serves, as its name does.
  Argument Of(std::string_view what, const Argument &instance);

  // Replaces the names in a record. Clears the bytes after the end of a text and those without a known meaning, because
  // they may contain names too.
  void Replace(const platkit::RecordLayout &layout, std::span<std::byte> record);

 private:
  using Digest = std::array<unsigned char, 16>;

  Digest Hash(std::string_view name) const;
  std::string Claim(std::string pseudonym, std::string_view name);
  void ReplaceText(std::string_view record, std::span<std::byte> text);

  PseudonymKey key_;
  std::unordered_map<std::string, std::string> names_;  // by pseudonym
};

// The pseudonyms of a command with the options --anonymize and --key-file; none without --anonymize. The key is derived
// from the key file (see KeyFile), or random without one. Throws a Failure.
std::optional<Pseudonyms> PseudonymsFor(bool anonymize, const std::string &keyFile);

}  // namespace nodal

#endif  // NODAL_CAPTURE_PSEUDONYMS_H
