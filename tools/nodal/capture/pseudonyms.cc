#include "tools/nodal/capture/pseudonyms.h"

#include <sodium.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <utility>

#include "tools/nodal/capture/key_file.h"
#include "tools/nodal/capture/vocabulary.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/tree/instances.h"

namespace nodal {
namespace {

using platkit::FieldType;

constexpr std::string_view kUuidForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

bool IsUuid(std::string_view name) {
  return std::ranges::equal(name, kUuidForm, [](char c, char form) {
    return form == '-' ? c == '-' : std::isxdigit(static_cast<unsigned char>(c)) != 0;
  });
}

std::string UuidOf(std::span<const unsigned char> digest) {
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  std::string uuid(kUuidForm);
  size_t digit = 0;
  for (char &c : uuid) {
    if (c == '-') continue;
    const unsigned char byte = digest[digit / 2];
    c = kHexDigits[digit % 2 == 0 ? byte >> 4 : byte & 15];
    ++digit;
  }
  return uuid;
}

// 32 letters and digits that are hard to confuse; each encodes five bits.
constexpr std::string_view kDigits = "abcdefghijkmnpqrstuvwxyz23456789";
static_assert(kDigits.size() == 32);
// The probability that any two of a million names have the same digits is about 1 in 2,000,000.
constexpr size_t kDigitCount = 12;
constexpr std::string_view kPrefix = "name-";

std::string DigitsOf(std::span<const unsigned char> digest, size_t count) {
  std::string digits;
  for (const unsigned char byte : digest.first(count))
    digits += kDigits[byte % kDigits.size()];
  return digits;
}

// Returns a name from which MemNodeOf reads the same memory node.
std::string BuddyName(int64_t memNode, const std::string &digits) {
  const bool isOneDigit = memNode >= 0 && memNode < 10;
  return "memmap-" + std::string(isOneDigit ? "0" : "") + std::to_string(memNode) + "-" + digits;
}

}  // namespace

Pseudonyms::Digest Pseudonyms::Hash(std::string_view name) const {
  Digest digest;
  const auto *text = reinterpret_cast<const unsigned char *>(name.data());
  const auto key = key_.bytes();
  crypto_generichash(digest.data(), digest.size(), text, name.size(), key.data(), key.size());
  return digest;
}

std::string Pseudonyms::Of(std::string_view name, size_t room) {
  if (name.empty()) return {};
  const Digest digest = Hash(name);
  std::string pseudonym;
  if (IsUuid(name) && room >= kUuidForm.size()) {
    pseudonym = UuidOf(digest);
  } else if (room < kPrefix.size() + kDigitCount) {
    pseudonym = DigitsOf(digest, std::min(room, kDigitCount));
  } else {
    pseudonym = std::string(kPrefix) + DigitsOf(digest, kDigitCount);
  }
  return Claim(std::move(pseudonym), name);
}

std::string Pseudonyms::Claim(std::string pseudonym, std::string_view name) {
  const auto [known, isNew] = names_.try_emplace(pseudonym, name);
  if (!isNew && known->second != name) throw Failure(pseudonym, "two names have this pseudonym; use another key");
  return pseudonym;
}

Argument Pseudonyms::Of(std::string_view what, const Argument &instance) {
  if (instance.kind != ParamKind::kText || IsOwnWord(what, instance.text)) return instance;
  const std::optional<int64_t> memNode = what == "buddy" ? MemNodeOf(instance.text) : std::nullopt;
  if (!memNode) return TextArgument(Of(instance.text));
  return TextArgument(Claim(BuddyName(*memNode, DigitsOf(Hash(instance.text), kDigitCount)), instance.text));
}

void Pseudonyms::ReplaceText(std::string_view record, std::span<std::byte> text) {
  const std::string_view all(reinterpret_cast<const char *>(text.data()), text.size());
  const std::string name(all.substr(0, all.find('\0')));
  const std::string replacement = IsOwnWord(record, name) ? name : Of(name, text.size() - 1);
  std::ranges::fill(text, std::byte{0});
  std::memcpy(text.data(), replacement.data(), replacement.size());
}

void Pseudonyms::Replace(const platkit::RecordLayout &layout, std::span<std::byte> record) {
  for (const platkit::Field &field : layout.fields) {
    const auto bytes = record.subspan(field.offset, size_t{field.size} * field.count);
    switch (field.type) {
      case FieldType::kText: ReplaceText(layout.name, bytes); break;
      case FieldType::kGap: std::ranges::fill(bytes, std::byte{0}); break;
      case FieldType::kEntries:
        for (uint32_t i = 0; i < field.count; ++i)
          Replace(*field.entry, bytes.subspan(i * size_t{field.size}, field.size));
        break;
      case FieldType::kU8:
      case FieldType::kU16:
      case FieldType::kU32:
      case FieldType::kU64:
      case FieldType::kI32:
      case FieldType::kI64: break;
    }
  }
}

std::optional<Pseudonyms> PseudonymsFor(bool anonymize, const std::string &keyFile) {
  if (!anonymize) return std::nullopt;
  if (keyFile.empty()) return Pseudonyms(PseudonymKey::Random());
  return Pseudonyms(PseudonymKey::FromSecret(KeyFile(keyFile).secret()));
}

}  // namespace nodal
